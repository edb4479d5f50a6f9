#pragma once

#include "platform/engine/web/WebBinaryMessenger.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include <sys/socket.h>

namespace brevanholt::platform {

// The page's end of a link, with blocking calls.
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
  void send(LinkFrame::Kind kind, std::string_view channel, std::uint32_t number,
            const Message& message) {
    const Bytes frame = LinkFrame::encode(kind, channel, number, message).joined();
    sendRaw(frame.data(), frame.size());
  }
  // The next frame, or nothing if none comes in that time.
  std::optional<LinkFrame> receive(
      std::chrono::milliseconds limit = std::chrono::milliseconds(500)) {
    std::uint32_t size = 0;
    const auto ready = [&] {
      return ::recv(socket_.get(), &size, 4, MSG_PEEK | MSG_DONTWAIT) == 4;
    };
    if (!spinUntil(ready, limit)) return std::nullopt;
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

}  // namespace brevanholt::platform
