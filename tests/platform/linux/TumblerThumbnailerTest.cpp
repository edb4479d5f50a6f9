#include "platform/linux/BusObject.h"
#include "platform/linux/InstallLayout.h"
#include "platform/linux/TumblerNames.h"
#include "platform/linux/TumblerThumbnailer.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Pictures.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kDescription =
    R"(<node><interface name="org.freedesktop.thumbnails.Thumbnailer1">
       <method name="GetFlavors"><arg type="as" direction="out"/></method>
       <method name="Queue">
         <arg type="as" direction="in"/><arg type="as" direction="in"/>
         <arg type="s" direction="in"/><arg type="s" direction="in"/>
         <arg type="u" direction="in"/><arg type="u" direction="out"/></method>
       <method name="Dequeue"><arg type="u" direction="in"/></method>
       <signal name="Finished"><arg type="u"/></signal></interface></node>)";

// A thumbnailer that makes what the test makes in its place.
class FakeTumbler {
 public:
  explicit FakeTumbler(const std::string& address)
      : bus_(address),
        object_(bus_, kTumblerPath, kDescription,
                {.call = [this](std::string_view method,
                                GVariant* parameters) { return call(method, parameters); },
                 .property = [](std::string_view) -> GVariant* { return nullptr; }}),
        name_(std::make_unique<OwnedName>(bus_, kTumblerService)) {}

  void finish(unsigned handle) { object_.emit("Finished", g_variant_new("(u)", handle)); }
  void vanish() { name_.reset(); }

  std::vector<const char*> flavors{"normal", "large", "x-large", "xx-large"};
  std::string refusal;
  std::vector<std::string> queued;  // "URI type flavour"
  std::vector<unsigned> dequeued;
  // What it does before it answers a request, whose handle is the number of requests until then.
  std::function<void(unsigned handle)> onQueue = [](unsigned) {};

 private:
  GVariant* call(std::string_view method, GVariant* parameters) {
    if (method == "GetFlavors") {
      return g_variant_new("(@as)",
                           g_variant_new_strv(flavors.data(), static_cast<gssize>(flavors.size())));
    }
    if (method == "Dequeue") {
      g_variant_get(parameters, "(u)", &dequeued.emplace_back());
      return g_variant_new("()");
    }
    if (!refusal.empty()) throw PlatformError(refusal);
    const char* uri = nullptr;
    const char* type = nullptr;
    const char* flavor = nullptr;
    g_variant_get_child(parameters, 2, "&s", &flavor);
    const GVariantPointer uris(g_variant_get_child_value(parameters, 0));
    const GVariantPointer types(g_variant_get_child_value(parameters, 1));
    g_variant_get_child(uris.get(), 0, "&s", &uri);
    g_variant_get_child(types.get(), 0, "&s", &type);
    queued.push_back(std::string(uri) + " " + type + " " + flavor);
    const auto handle = static_cast<unsigned>(queued.size());
    onQueue(handle);
    return g_variant_new("(u)", handle);
  }

  Bus bus_;
  BusObject object_;
  std::unique_ptr<OwnedName> name_;
};

class TumblerThumbnailerTest : public testing::Test {
 protected:
  void SetUp() override {
    writeFile(document_, "%PDF-1.4\n");
    make();
  }
  void make(std::chrono::milliseconds timeLimit = 10s) {
    thumbnailer_ = std::make_unique<TumblerThumbnailer>(
        session_, previewer_,
        TumblerThumbnailer::Options{.cacheHome = folder_.path(), .timeLimit = timeLimit});
  }
  void start() {
    tumbler_ = std::make_unique<FakeTumbler>(bus_.address());
    // On the bus once it answers.
    replyText(session_, tumblerMethod("GetFlavors"), nullptr);
  }
  // Asks; `answers_` gets the answer.
  void ask(const fs::path& file, int maximumDimension = 200) {
    thumbnailer_->thumbnail(file, maximumDimension, [this](const Result<Bytes>& thumbnail) {
      answers_.push_back(thumbnail.ok() ? lookOf(thumbnail.value())
                                        : "error: " + thumbnail.error().message());
    });
  }
  std::string answer() {
    EXPECT_TRUE(spinUntil([this] { return !answers_.empty(); }, 30s));
    spinOnce();
    EXPECT_EQ(answers_.size(), 1U);
    return std::exchange(answers_, {"none"}).front();
  }
  std::string answerFor(const fs::path& file, int maximumDimension = 200) {
    answers_.clear();
    ask(file, maximumDimension);
    return answer();
  }
  std::string uri() const { return "file://" + document_.string(); }
  std::int64_t modified() const {
    struct stat information {};
    ::stat(document_.c_str(), &information);
    return information.st_mtim.tv_sec;
  }
  fs::path cached(const ThumbnailFlavor& flavor) {
    fs::path path = thumbnailPath(folder_.path(), flavor, uri());
    fs::create_directories(path.parent_path());
    return path;
  }
  // Leaves a thumbnail of the document in the cache, as `originalUri` of `originalTime`.
  void leaveThumbnail(const ThumbnailFlavor& flavor, const std::string& originalUri,
                      std::int64_t originalTime) {
    redAndBlue(folder_ / "thumbnail.png", flavor.edge, flavor.edge / 2);
    const GObjectPointer<GdkPixbuf> picture(
        gdk_pixbuf_new_from_file((folder_ / "thumbnail.png").c_str(), nullptr));
    gdk_pixbuf_save(picture.get(), cached(flavor).c_str(), "png", nullptr, "tEXt::Thumb::URI",
                    originalUri.c_str(), "tEXt::Thumb::MTime", std::to_string(originalTime).c_str(),
                    nullptr);
  }

  static constexpr ThumbnailFlavor kLarge{"large", 256};
  CapturedLog log_;
  TemporaryFolder folder_;
  fs::path document_ = folder_ / "report.jpg";  // mislabelled: its content is a PDF's
  PrivateBus bus_;
  Bus session_{bus_.address()};
  ChildImagePreviewer previewer_{{.child = InstallLayout::ofThisProcess().previewChild}};
  std::unique_ptr<TumblerThumbnailer> thumbnailer_;
  std::unique_ptr<FakeTumbler> tumbler_;
  std::vector<std::string> answers_;
};

TEST_F(TumblerThumbnailerTest, ShowsWhatTheServiceMadeInTheSizeAskedFor) {
  start();
  const std::tuple<int, ThumbnailFlavor, const char*> cases[] = {
      {48, {"normal", 128}, "48x24 red blue / red blue"},
      {256, {"large", 256}, "256x128 red blue / red blue"},
      {257, {"x-large", 512}, "257x129 red blue / red blue"},
      {2400, {"xx-large", 1024}, "1024x512 red blue / red blue"}};
  for (const auto& [pixels, flavor, look] : cases) {
    tumbler_->onQueue = [&, made = flavor](unsigned handle) {
      leaveThumbnail(made, uri(), modified());
      tumbler_->finish(handle);  // which comes before the handle does
    };
    EXPECT_EQ(answerFor(document_, pixels), look);
    EXPECT_EQ(tumbler_->queued.back(), uri() + " application/pdf " + flavor.name);
  }
  tumbler_->flavors = {"normal", "large", "sepia"};
  tumbler_->onQueue = [](unsigned) {};
  ask(document_, 2400);
  answers_.clear();
  ASSERT_TRUE(spinUntil([this] { return tumbler_->queued.size() == 5; }));
  tumbler_->finish(4);  // somebody else's
  replyText(session_, tumblerMethod("GetFlavors"), nullptr);
  EXPECT_TRUE(answers_.empty());
  leaveThumbnail(kLarge, uri(), modified());
  tumbler_->finish(5);
  EXPECT_EQ(answer(), "256x128 red blue / red blue");
  EXPECT_TRUE(tumbler_->dequeued.empty());
}

TEST_F(TumblerThumbnailerTest, TakesNothingThatIsNoThumbnailOfTheFileAsItIs) {
  start();
  const std::string foreign = "error: the thumbnail is not of this file as it is";
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[] {}, "No such file"},  // it failed
      {[this] { leaveThumbnail(kLarge, uri() + "x", modified()); }, foreign},
      {[this] { leaveThumbnail(kLarge, uri(), modified() - 1); }, foreign},
      {[this] { writeFile(cached(kLarge), "garbage"); }, "error: no thumbnail"},
      {[this] { ::mkfifo(cached(kLarge).c_str(), 0600); }, "Invalid argument"},
      {[this] { fs::remove(document_); }, "No such file"},
  };
  for (const auto& [make, error] : cases) {
    fs::remove_all(folder_ / "thumbnails");
    tumbler_->onQueue = [&, leave = make](unsigned handle) {
      leave();
      tumbler_->finish(handle);
    };
    EXPECT_NE(answerFor(document_).find(error), std::string::npos) << error;
  }
}

TEST_F(TumblerThumbnailerTest, AnswersWhateverBecomesOfTheService) {
  const std::string missing = answerFor(document_);
  EXPECT_EQ(missing.substr(0, 6), "error:");
  EXPECT_EQ(answerFor(document_), missing);
  EXPECT_EQ(log_.count(LogLevel::kInfo, "documents have no previews"), 1);

  start();
  tumbler_->refusal = "not today";
  EXPECT_EQ(answerFor(document_), "error: not today");
  tumbler_->refusal.clear();

  tumbler_->flavors.clear();
  EXPECT_EQ(answerFor(document_), "error: the thumbnailer has no size that is known");
  tumbler_->flavors = {"large"};

  make(300ms);
  EXPECT_EQ(answerFor(document_), "error: the thumbnailer took too long");
  EXPECT_TRUE(spinUntil([this] { return tumbler_->dequeued == std::vector<unsigned>{1}; }));

  make();
  tumbler_->onQueue = [this](unsigned) { tumbler_->vanish(); };
  EXPECT_EQ(answerFor(document_), "error: the thumbnailer vanished");
  EXPECT_EQ(answerFor(document_), missing);
}

TEST_F(TumblerThumbnailerTest, AsksForAFewAtOnceAndGivesUpTheRestWhenItGoes) {
  start();
  for (const int pixels : {128, 256, 512, 1024, 128}) ask(document_, pixels);
  const auto isQueued = [this](std::size_t count) {
    const bool came = spinUntil([&] { return tumbler_->queued.size() >= count; });
    replyText(session_, tumblerMethod("GetFlavors"), nullptr);
    return came && tumbler_->queued.size() == count;
  };
  EXPECT_TRUE(isQueued(2));
  tumbler_->finish(2);
  EXPECT_TRUE(isQueued(3));
  EXPECT_TRUE(tumbler_->queued.back().ends_with(" x-large")) << "in the order of asking";
  EXPECT_TRUE(spinUntil([this] { return answers_.size() == 1; }));
  thumbnailer_.reset();
  EXPECT_EQ(answers_.size(), 5U);
  EXPECT_EQ(answers_.back(), "error: it was given up");
  EXPECT_TRUE(spinUntil([this] { return tumbler_->dequeued.size() == 2; }));
}

}  // namespace
}  // namespace brevanholt::platform
