#include "tests/Runner/HostTest.h"

namespace brevanholt {
namespace {

using namespace platform;

class PreviewTest : public HostTest {
 protected:
  void SetUp() override { writeFile(file_, "content"); }

  std::string file_ = platform_.home / "file";
};

TEST_F(PreviewTest, KeepsTheSizeWithinBounds) {
  const std::pair<Value, int> cases[] = {
      {300, 300},   {std::int64_t{300}, 300}, {47, 48},   {-1, 48},      {INT64_MIN, 48},
      {1201, 1200}, {INT64_MAX, 1200},        {{}, 1200}, {300.0, 1200}, {"300", 1200}};
  for (const auto& [asked, expected] : cases) {
    call("receivedFilePreview", Map{{"location", file_}, {"maximumDimension", asked}});
    EXPECT_EQ(platform_.imagePreviewer.asked.back(), expected) << testing::PrintToString(asked);
  }
}

TEST_F(PreviewTest, HandsWhatIsNoImageAndNothingElseToTheDesktop) {
  const auto preview = [this] { return call("receivedFilePreview", Map{{"location", file_}}); };
  const Bytes picture(std::vector<std::uint8_t>{1, 2, 3});
  platform_.thumbnailer.answer = picture;
  EXPECT_EQ(preview(), Reply(Value(picture)));

  platform_.imagePreviewer.answer = PlatformError("damaged");
  EXPECT_EQ(preview(), Reply(Value()));
  EXPECT_EQ(platform_.thumbnailer.asked, 1) << "no other decoder gets what one refused";

  std::filesystem::remove(file_);
  EXPECT_EQ(preview(), Reply(Value()));
  EXPECT_EQ(platform_.imagePreviewer.asked.size(), 2U) << "a missing file is nobody's to look at";
}

TEST_F(PreviewTest, AnswersEvenWhenTheWindowHasGone) {
  platform_.imagePreviewer.waits = true;
  const auto reply = begin("receivedFilePreview", Map{{"location", file_}});
  window_.reset();
  platform_.imagePreviewer.answerWaiting();
  EXPECT_EQ(*reply, Reply(Value()));
}

}  // namespace
}  // namespace brevanholt
