#include "platform/engine/web/sockets/TcpConnection.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace brevanholt::platform {
namespace {

constexpr std::int64_t kLongestLimit = 3'600'000;  // milliseconds

void sendAtOnce(int descriptor) {
  const int yes = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
}

FileDescriptor connecting(const SocketAddress& address) {
  FileDescriptor socket(::socket(address.family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket) throw SystemError("open a socket", errno);
  if (::connect(socket.get(), address.get(), address.size()) != 0 && errno != EINPROGRESS) {
    throw SystemError("connect to " + address.text(), errno);
  }
  return socket;
}

int pendingError(int descriptor) {
  int error = 0;
  socklen_t size = sizeof(error);
  ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
  return error;
}

// Sends both parts but for their first bytes. As send().
ssize_t sendFrom(int descriptor, const std::array<Bytes, 2>& parts, std::size_t written) {
  std::array<iovec, 2> vectors;
  for (std::size_t at = 0; at < parts.size(); ++at) {
    const std::size_t skipped = std::min(written, parts[at].size());
    written -= skipped;
    // The system takes a pointer to bytes that it does not change.
    vectors[at] = {const_cast<std::uint8_t*>(parts[at].data()) + skipped,
                   parts[at].size() - skipped};
  }
  msghdr message{};
  message.msg_iov = vectors.data();
  message.msg_iovlen = vectors.size();
  return ::sendmsg(descriptor, &message, MSG_NOSIGNAL);
}

}  // namespace

TcpConnection::TcpConnection(FileDescriptor connected) : EngineSocket(std::move(connected)) {
  sendAtOnce(descriptor());
}

TcpConnection::TcpConnection(const SocketAddress& address) : EngineSocket(connecting(address)) {
  sendAtOnce(descriptor());
}

void TcpConnection::whenConnected(std::int64_t limitMilliseconds, MethodResult& result,
                                  std::function<Value()> connected, std::function<void()> failed) {
  connecting_.take(result);
  connected_ = std::move(connected);
  failed_ = std::move(failed);
  onWritable_ = LoopSource::whenWritable(descriptor(),
                                         [this] { connectionSettled(pendingError(descriptor())); });
  onTimeLimit_ = LoopSource::after(
      std::chrono::milliseconds(std::clamp<std::int64_t>(limitMilliseconds, 1, kLongestLimit)),
      [this] { connectionSettled(ETIMEDOUT); });
}

void TcpConnection::connectionSettled(int error) {
  onWritable_.stop();
  onTimeLimit_.stop();
  if (error == 0) return connecting_.succeed(connected_());
  connecting_.fail(SystemError("connect", error));
  const auto failed = std::move(failed_);
  failed();  // ends this
}

Value TcpConnection::description() const {
  const SocketAddress peer = SocketAddress::ofPeer(descriptor());
  return Map{{"address", peer.text()}, {"port", peer.port()}};
}

void TcpConnection::read(std::int64_t minimum, std::int64_t maximum, MethodResult& result) {
  if (maximum < 1 || maximum > kLongestRead || minimum > maximum) {
    throw PlatformError("A read takes 1 byte to 16 MiB, and at least its minimum.");
  }
  reading_.take(result);
  minimum_ = static_cast<std::size_t>(std::max<std::int64_t>(minimum, 1));
  maximum_ = static_cast<std::size_t>(maximum);
  filled_ = 0;
  buffer_ = std::make_shared_for_overwrite<std::uint8_t[]>(maximum_);
  if (readNow()) return;
  onReadable_ = LoopSource::whenReadable(descriptor(), [this] { readNow(); });
}

bool TcpConnection::readNow() {
  while (filled_ < minimum_) {
    const ssize_t count = ::recv(descriptor(), buffer_.get() + filled_, maximum_ - filled_, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return false;
    if (count < 0) {
      onReadable_.stop();
      reading_.fail(SystemError("read from the connection", errno));
      return true;
    }
    if (count == 0) break;
    filled_ += static_cast<std::size_t>(count);
  }
  onReadable_.stop();
  const auto buffer = std::move(buffer_);
  reading_.succeed(Bytes({buffer.get(), filled_}, buffer));
  return true;
}

void TcpConnection::write(const Bytes& head, const Bytes& bytes, MethodResult& result) {
  writing_.take(result);
  outgoing_ = {head, bytes};
  written_ = 0;
  if (writeNow()) return;
  onWritable_ = LoopSource::whenWritable(descriptor(), [this] { writeNow(); });
}

bool TcpConnection::writeNow() {
  while (written_ < outgoing_[0].size() + outgoing_[1].size()) {
    const ssize_t count = sendFrom(descriptor(), outgoing_, written_);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return false;
    if (count < 0) {
      outgoing_ = {};
      onWritable_.stop();
      writing_.fail(SystemError("write to the connection", errno));
      return true;
    }
    written_ += static_cast<std::size_t>(count);
  }
  outgoing_ = {};
  onWritable_.stop();
  writing_.succeed({});
  return true;
}

void TcpConnection::finish() {
  if (::shutdown(descriptor(), SHUT_WR) != 0) throw SystemError("end the connection", errno);
}

}  // namespace brevanholt::platform
