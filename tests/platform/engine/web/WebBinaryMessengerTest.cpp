#include "platform/channel/StandardMethodCodec.h"
#include "platform/engine/web/WebBinaryMessenger.h"
#include "tests/platform/engine/web/FakePage.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace brevanholt::platform {
namespace {

using Kind = LinkFrame::Kind;

Message messageOf(std::string_view content) {
  return Message(Bytes(std::vector<std::uint8_t>(content.begin(), content.end())));
}

std::string stringOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

class WebBinaryMessengerTest : public testing::Test {
 protected:
  CapturedLog log_;
  WebBinaryMessenger messenger_;
};

TEST_F(WebBinaryMessengerTest, NeitherBlocksNorLosesBytesWhenThePageReadsSlowly) {
  FakePage page(messenger_);
  page.send(Kind::kListen, "bulk", 0, {});
  spinOnce();
  const std::string payload(8 << 20, 'p');
  for (int count = 0; count < 4; ++count) messenger_.send("bulk", messageOf(payload));
  for (int count = 0; count < 4; ++count) {
    const auto frame = page.receive();
    ASSERT_TRUE(frame);
    EXPECT_TRUE(stringOf(frame->message) == payload);
  }
}

TEST_F(WebBinaryMessengerTest, RefusesWhatIsTooLargeOrNoFrameAndGoesOn) {
  FakePage page(messenger_);
  const Bytes head = LinkFrame::encode(Kind::kMessage, "files", 7, {}).joined();
  const auto size = static_cast<std::uint32_t>(LinkFrame::kLargest + 1);
  std::thread sender([&] {
    page.sendRaw(&size, sizeof(size));
    page.sendRaw(head.data() + 4, head.size() - 4);
    const std::vector<std::uint8_t> mebibyte(1 << 20);
    for (std::size_t left = size - (head.size() - 4); left > 0;) {
      const std::size_t part = std::min(left, mebibyte.size());
      page.sendRaw(mebibyte.data(), part);
      left -= part;
    }
    const std::array<std::uint32_t, 2> empty{};
    page.sendRaw(empty.data(), sizeof(empty));
    const std::array<std::uint8_t, 7> shortFrame{3, 0, 0, 0, 0, 200, 0};
    page.sendRaw(shortFrame.data(), shortFrame.size());
    page.send(Kind::kMessage, "nobody", 4, {});
  });
  ASSERT_TRUE(spinUntil([&] { return log_.count(LogLevel::kWarning, "invalid frame from") == 3; }));
  sender.join();
  const auto refused = page.receive();
  EXPECT_EQ(refused->number, 7U);
  const Reply reply = StandardMethodCodec::decodeReply(refused->message);
  EXPECT_EQ(std::get<MethodError>(reply).code, "message_too_large");
  EXPECT_EQ(page.receive()->number, 4U);
}

}  // namespace
}  // namespace brevanholt::platform
