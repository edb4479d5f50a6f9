#include "platform/channel/StandardMethodCodec.h"
#include "platform/engine/web/WebBinaryMessenger.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <thread>

#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

using Kind = LinkFrame::Kind;

Message text(std::string_view content) {
  return Message(Bytes(std::vector<std::uint8_t>(content.begin(), content.end())));
}

std::string stringOf(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

// The far end of a link: blocking, as a page's process may be driven by hand.
class FakePage {
 public:
  explicit FakePage(
      WebBinaryMessenger& messenger, std::function<void()> onGone = [] {}) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    socket_ = FileDescriptor(ends[0]);
    messenger.attach(FileDescriptor(ends[1]), std::move(onGone));
  }

  void sendRaw(const void* data, std::size_t size) {
    ASSERT_EQ(::send(socket_.get(), data, size, MSG_NOSIGNAL), static_cast<ssize_t>(size));
  }
  void send(Kind kind, std::string_view channel, std::uint32_t number, std::string_view content) {
    const Bytes frame = LinkFrame::encode(kind, channel, number, text(content)).joined();
    sendRaw(frame.data(), frame.size());
  }
  // The next frame, or nothing where none has come.
  std::optional<LinkFrame> receive() {
    std::uint32_t size = 0;
    const auto ready = [&] {
      return ::recv(socket_.get(), &size, 4, MSG_PEEK | MSG_DONTWAIT) == 4;
    };
    if (!spinUntil(ready, std::chrono::milliseconds(500))) return std::nullopt;
    ::recv(socket_.get(), &size, 4, MSG_WAITALL);
    std::vector<std::uint8_t> frame(size);
    for (std::size_t filled = 0; filled < size;) {
      spinOnce();
      const ssize_t count =
          ::recv(socket_.get(), frame.data() + filled, size - filled, MSG_DONTWAIT);
      if (count > 0) filled += static_cast<std::size_t>(count);
    }
    return LinkFrame::parse(std::move(frame));
  }
  void leave() { socket_.reset(); }

 private:
  FileDescriptor socket_;
};

class WebBinaryMessengerTest : public testing::Test {
 protected:
  CapturedLog log_;
  WebBinaryMessenger messenger_;
};

TEST_F(WebBinaryMessengerTest, HandsOnCallsInOrderAndRepliesByNumber) {
  std::vector<BinaryReply> owed;
  std::string seen;
  messenger_.setMessageHandler("letters", [&](const Bytes& message, BinaryReply reply) {
    seen += stringOf(message);
    owed.push_back(std::move(reply));
  });
  FakePage page(messenger_);
  for (std::uint32_t number = 1; number <= 26; ++number) {
    page.send(Kind::kMessage, "letters", number, std::string(1, static_cast<char>('`' + number)));
  }
  ASSERT_TRUE(spinUntil([&] { return owed.size() == 26; }));
  EXPECT_EQ(seen, "abcdefghijklmnopqrstuvwxyz");

  owed[24](text("Y"));
  owed[2](text("C"));
  const auto first = page.receive();
  const auto second = page.receive();
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->number, 25U);
  EXPECT_EQ(stringOf(second->message), "C");
}

TEST_F(WebBinaryMessengerTest, KeepsEventsUntilThePageListens) {
  messenger_.send("events", text("before any page"));
  FakePage page(messenger_);
  messenger_.send("events", text("before it listens"));
  messenger_.send("other", text("nobody listens here"));
  EXPECT_FALSE(page.receive());

  page.send(Kind::kListen, "events", 0, "");
  EXPECT_EQ(stringOf(page.receive()->message), "before any page");
  EXPECT_EQ(stringOf(page.receive()->message), "before it listens");
  messenger_.send("events", text("after"));
  EXPECT_EQ(stringOf(page.receive()->message), "after");
  EXPECT_FALSE(page.receive());
}

TEST_F(WebBinaryMessengerTest, SendsAgainWhatThePageDidNotHandleBeforeItEnded) {
  std::string handled;
  FakePage first(messenger_);
  first.send(Kind::kListen, "events", 0, "");
  messenger_.send("events", text("passing"));
  EXPECT_EQ(first.receive()->number, 0U);
  for (const char* event : {"1", "2", "3"}) {
    messenger_.sendUntilHandled("events", text(event), [&handled, event] { handled += event; });
  }
  first.send(Kind::kReply, "", first.receive()->number, "");
  ASSERT_TRUE(spinUntil([&] { return handled == "1"; }));
  first.leave();

  FakePage second(messenger_);
  messenger_.send("events", text("4"));
  second.send(Kind::kListen, "events", 0, "");
  const auto again = second.receive();
  EXPECT_EQ(stringOf(again->message), "2");
  EXPECT_EQ(stringOf(second.receive()->message), "3");
  EXPECT_EQ(stringOf(second.receive()->message), "4");
  second.send(Kind::kReply, "", again->number, "");
  second.send(Kind::kReply, "", 77, "");
  EXPECT_TRUE(spinUntil([&] { return handled == "12"; }));
}

TEST_F(WebBinaryMessengerTest, NeitherBlocksNorLosesBytesWhenThePageReadsSlowly) {
  FakePage page(messenger_);
  page.send(Kind::kListen, "bulk", 0, "");
  spinOnce();
  const std::string payload(8 << 20, 'p');
  for (int count = 0; count < 4; ++count) messenger_.send("bulk", text(payload));
  for (int count = 0; count < 4; ++count) {
    const auto frame = page.receive();
    ASSERT_TRUE(frame);
    EXPECT_TRUE(stringOf(frame->message) == payload);
  }
}

TEST_F(WebBinaryMessengerTest, DropsRepliesToAPageThatHasGone) {
  std::optional<BinaryReply> owed;
  messenger_.setMessageHandler("slow",
                               [&](const Bytes&, BinaryReply reply) { owed = std::move(reply); });
  int gone = 0;
  FakePage first(messenger_, [&gone] { ++gone; });
  first.send(Kind::kMessage, "slow", 1, "x");
  ASSERT_TRUE(spinUntil([&] { return owed.has_value(); }));
  first.leave();
  ASSERT_TRUE(spinUntil([&] { return gone == 1; }));

  FakePage second(messenger_);
  (*owed)(text("too late"));
  EXPECT_FALSE(second.receive());
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
    page.send(Kind::kMessage, "nobody", 4, "");
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
