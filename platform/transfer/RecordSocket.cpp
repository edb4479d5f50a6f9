#include "platform/transfer/RecordSocket.h"

#include "platform/foundation/PlatformError.h"

#include <array>
#include <cerrno>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

constexpr int kForever = -1;

}  // namespace

RecordSocket::RecordSocket(FileDescriptor connected, std::chrono::milliseconds silence)
    : socket_(std::move(connected)), silence_(static_cast<int>(silence.count())) {
  // Records are sent whole, so a small one never waits for the next.
  const int yes = 1;
  ::setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
}

void RecordSocket::awaitEvent(short event, int limitMilliseconds) const {
  pollfd awaited{socket_.get(), event, 0};
  const int count = ::poll(&awaited, 1, limitMilliseconds);
  if (count < 0 && errno != EINTR) throw SystemError("wait for the connection", errno);
  if (count == 0) throw SystemError("read from the connection", ETIMEDOUT);
}

std::size_t RecordSocket::receiveSome(std::span<std::uint8_t> bytes) {
  for (;;) {
    const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno == EAGAIN) {
      awaitEvent(POLLIN, silence_);
    } else if (errno != EINTR) {
      throw SystemError("read from the connection", errno);
    }
  }
}

bool RecordSocket::receive(std::span<std::uint8_t> bytes) {
  for (std::size_t filled = 0; filled < bytes.size();) {
    const std::size_t count = receiveSome(bytes.subspan(filled));
    if (count == 0 && filled == 0) return false;
    if (count == 0) throw SystemError("read from the connection", ECONNRESET);
    filled += count;
  }
  return true;
}

void RecordSocket::drain() {
  std::array<std::uint8_t, 16 << 10> dropped;
  while (receiveSome(dropped) > 0) continue;
}

void RecordSocket::send(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        ::send(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      awaitEvent(POLLOUT, kForever);
    } else if (errno != EINTR) {
      throw SystemError("write to the connection", errno);
    }
  }
}

void RecordSocket::finish() {
  if (::shutdown(socket_.get(), SHUT_WR) != 0) throw SystemError("end the connection", errno);
}

void RecordSocket::interrupt() {
  ::shutdown(socket_.get(), SHUT_RDWR);
}

}  // namespace brevanholt::platform
