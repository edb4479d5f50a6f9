#include "platform/linux/previews/TumblerRequest.h"
#include "platform/linux/previews/TumblerThumbnailer.h"
#include "platform/linux/storage/InstallLayout.h"
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

// A thumbnailing service that replies; the test itself writes the thumbnails.
class FakeTumbler {
 public:
  explicit FakeTumbler(const std::string& address)
      : service_(address, kTumblerService),
        object_(service_.serve(kTumblerPath, kDescription,
                               [this](std::string_view method, GVariant* parameters) {
                                 return call(method, parameters);
                               })) {}

  void finish(unsigned handle) { object_.emit("Finished", g_variant_new("(u)", handle)); }
  void vanish() { service_.vanish(); }
  void hang() { service_.hang(); }

  const char* flavor = "large";
  std::vector<std::string> queued;
  std::vector<unsigned> dequeued;
  // Called before a request is answered. Its handle is the number of requests so far.
  std::function<void(unsigned handle)> onQueue = [](unsigned) {};

 private:
  GVariant* call(std::string_view method, GVariant* parameters) {
    if (method == "GetFlavors") return g_variant_new_parsed("([%s],)", flavor);
    if (method == "Dequeue") {
      g_variant_get(parameters, "(u)", &dequeued.emplace_back());
      return g_variant_new("()");
    }
    queued.emplace_back(GCharPointer(g_variant_print(parameters, FALSE)).get());
    const auto handle = static_cast<unsigned>(queued.size());
    onQueue(handle);
    return g_variant_new("(u)", handle);
  }

  BusService service_;
  BusObject& object_;
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
        TumblerThumbnailer::Options{
            .cacheHome = folder_.path(), .timeLimit = timeLimit, .answerLimit = 300ms});
  }
  void start() {
    tumbler_ = std::make_unique<FakeTumbler>(bus_.address());
    // On the bus once it answers.
    replyText(session_, tumblerMethod("GetFlavors"), nullptr);
  }
  // Asks, and waits for the one answer.
  std::string answer() {
    std::vector<std::string> answers;
    thumbnailer_->thumbnail(document_, 200, [&answers](const Result<Bytes>& thumbnail) {
      answers.push_back(thumbnail.ok() ? lookOf(thumbnail.value())
                                       : "error: " + thumbnail.error().message());
    });
    EXPECT_TRUE(spinUntil([&answers] { return !answers.empty(); }, 30s));
    spinOnce();
    EXPECT_EQ(answers.size(), 1U);
    return answers.front();
  }
  std::string uri() const { return "file://" + document_.string(); }
  std::int64_t modified() const {
    struct stat information {};
    ::stat(document_.c_str(), &information);
    return information.st_mtim.tv_sec;
  }
  // Where the document's thumbnail is.
  fs::path cached() const {
    fs::path path = thumbnailPath(folder_.path(), {"large", 256}, uri());
    fs::create_directories(path.parent_path());
    return path;
  }
  // Leaves a thumbnail of the document in the cache, as `originalUri` of `originalTime`.
  void leaveThumbnail(const std::string& originalUri, std::int64_t originalTime) {
    const GObjectPointer<GdkPixbuf> picture(
        gdk_pixbuf_new_from_file(redAndBlue(cached(), 256, 128).c_str(), nullptr));
    gdk_pixbuf_save(picture.get(), cached().c_str(), "png", nullptr, "tEXt::Thumb::URI",
                    originalUri.c_str(), "tEXt::Thumb::MTime", std::to_string(originalTime).c_str(),
                    nullptr);
  }

  CapturedLog log_;
  TemporaryFolder folder_;
  fs::path document_ = folder_ / "report.jpg";  // mislabelled: its content is a PDF's
  PrivateBus bus_;
  Bus session_{bus_.address()};
  ChildImagePreviewer previewer_{{.child = InstallLayout::ofThisProcess().previewChild}};
  std::unique_ptr<TumblerThumbnailer> thumbnailer_;
  std::unique_ptr<FakeTumbler> tumbler_;
};

TEST_F(TumblerThumbnailerTest, ShowsWhatTheServiceMadeAndNothingElse) {
  start();
  const std::string foreign = "error: the thumbnail is not of this file as it is";
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[this] { leaveThumbnail(uri(), modified()); }, "200x100 red blue / red blue"},
      {[this] { leaveThumbnail(uri() + "x", modified()); }, foreign},
      {[this] { leaveThumbnail(uri(), modified() - 1); }, foreign},
      {[this] { writeFile(cached(), "garbage"); }, "error: no thumbnail"},
      {[this] { fs::remove_all(cached()); }, "No such file"},
  };
  for (const auto& [make, shown] : cases) {
    tumbler_->onQueue = [&, leave = make](unsigned handle) {
      leave();
      tumbler_->finish(handle);  // which comes before the handle does
    };
    EXPECT_NE(answer().find(shown), std::string::npos) << shown;
    EXPECT_EQ(tumbler_->queued.back(),
              "(['" + uri() + "'], ['application/pdf'], 'large', 'foreground', 0)");
  }
  EXPECT_TRUE(tumbler_->dequeued.empty());
}

TEST_F(TumblerThumbnailerTest, AnswersWhateverBecomesOfTheService) {
  const std::string missing = answer();
  EXPECT_EQ(missing.substr(0, 6), "error:");
  EXPECT_EQ(answer(), missing);
  EXPECT_EQ(log_.count(LogLevel::kInfo, "documents have no previews"), 1);

  start();
  tumbler_->flavor = "sepia";
  EXPECT_EQ(answer(), "error: the thumbnailer has no size that is known");
  tumbler_->flavor = "large";

  make(300ms);
  EXPECT_EQ(answer(), "error: the thumbnailer took too long");
  EXPECT_TRUE(spinUntil([this] { return tumbler_->dequeued == std::vector<unsigned>{1}; }));
  make();
  tumbler_->onQueue = [this](unsigned) { tumbler_->vanish(); };
  EXPECT_EQ(answer(), "error: the thumbnailer vanished");
}

TEST_F(TumblerThumbnailerTest, LeavesASilentServiceAloneForAWhile) {
  start();
  tumbler_->hang();
  EXPECT_EQ(answer(), "error: Timeout was reached");
  EXPECT_EQ(answer(), "error: the thumbnailer is silent");
}

}  // namespace
}  // namespace brevanholt::platform
