#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"

#include <gtest/gtest.h>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;

const Bytes kPicture(std::vector<std::uint8_t>{1, 2, 3});

class PreviewTest : public testing::Test {
 protected:
  void SetUp() override {
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), nullptr);
    window_->awakeFromNib();
    writeFile(file_, "content");
  }
  Reply preview() { return platform_.call("receivedFilePreview", Map{{"location", file_}}); }
  // What is asked of the previewer where the call says `maximumDimension`.
  int dimensionFor(Value maximumDimension) {
    platform_.call("receivedFilePreview",
                   Map{{"location", file_}, {"maximumDimension", std::move(maximumDimension)}});
    return platform_.imagePreviewer.asked.back().second;
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::string file_ = platform_.home / "file";
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(PreviewTest, ShowsAnImageItself) {
  platform_.imagePreviewer.answer = std::optional(kPicture);
  EXPECT_EQ(preview(), Reply(Value(kPicture)));
  EXPECT_EQ(platform_.imagePreviewer.asked, (std::vector{std::pair(fs::path(file_), 1200)}));
  EXPECT_TRUE(platform_.thumbnailer.asked.empty());
}

TEST_F(PreviewTest, AsksTheDesktopForADocumentInThePixelsOfItsScreen) {
  platform_.thumbnailer.answer = kPicture;
  for (const auto& [scale, pixels] :
       {std::pair(std::optional(1.0), 1200), std::pair(std::optional(1.5), 1800),
        std::pair(std::optional<double>(), 2400)}) {
    platform_.screen.scale = scale;
    EXPECT_EQ(preview(), Reply(Value(kPicture)));
    EXPECT_EQ(platform_.thumbnailer.asked.back(), std::pair(fs::path(file_), pixels));
  }
}

TEST_F(PreviewTest, KeepsTheSizeWithinBounds) {
  EXPECT_EQ(dimensionFor(300), 300);
  EXPECT_EQ(dimensionFor(std::int64_t{300}), 300);
  for (const std::int64_t tooSmall : {48L, 47L, 0L, -1L, INT64_MIN}) {
    EXPECT_EQ(dimensionFor(tooSmall), 48) << tooSmall;
  }
  for (const std::int64_t tooLarge : {1200L, 1201L, 5000L, INT64_MAX}) {
    EXPECT_EQ(dimensionFor(tooLarge), 1200) << tooLarge;
  }
  for (const Value& none : {Value(), Value(300.0), Value("300"), Value(true)}) {
    EXPECT_EQ(dimensionFor(none), 1200);
  }
}

TEST_F(PreviewTest, AnswersNullWhereThereIsNothingToShow) {
  platform_.thumbnailer.answer = PlatformError("no program for it");
  EXPECT_EQ(preview(), Reply(Value()));
  EXPECT_EQ(platform_.thumbnailer.asked.size(), 1U);

  platform_.imagePreviewer.answer = PlatformError("damaged");
  EXPECT_EQ(preview(), Reply(Value()));
  EXPECT_EQ(platform_.thumbnailer.asked.size(), 1U) << "no other decoder gets what one refused";

  fs::remove(file_);
  EXPECT_EQ(preview(), Reply(Value()));
  EXPECT_EQ(platform_.imagePreviewer.asked.size(), 2U) << "a missing file is nobody's to look at";
}

TEST_F(PreviewTest, AnswersEvenWhenTheWindowHasGone) {
  platform_.imagePreviewer.waits = true;
  const auto reply = platform_.engine.messenger.call("brevanholt/platform", "receivedFilePreview",
                                                     Map{{"location", file_}});
  EXPECT_FALSE(reply->has_value());
  window_.reset();
  platform_.imagePreviewer.answerWaiting();
  EXPECT_EQ(*reply, Reply(Value()));
}

}  // namespace
}  // namespace brevanholt
