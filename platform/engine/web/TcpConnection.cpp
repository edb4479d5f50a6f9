#include "platform/engine/web/TcpConnection.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

using For = ReadinessWatch::For;

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

}  // namespace

TcpConnection::TcpConnection(FileDescriptor connected) : EngineSocket(std::move(connected)) {
  sendAtOnce(descriptor());
}

TcpConnection::TcpConnection(const SocketAddress& address) : EngineSocket(connecting(address)) {
  sendAtOnce(descriptor());
}

TcpConnection::~TcpConnection() {
  if (limitSource_ != 0) g_source_remove(limitSource_);
}

void TcpConnection::whenConnected(std::int64_t limitMilliseconds, MethodResult& result,
                                  std::function<Value()> connected, std::function<void()> failed) {
  connecting_.take(result);
  connected_ = std::move(connected);
  failed_ = std::move(failed);
  writable_.start(descriptor(), For::kWriting, [this] {
    connectionSettled(pendingError(descriptor()));
    return false;
  });
  limitSource_ = g_timeout_add(
      static_cast<guint>(std::clamp<std::int64_t>(limitMilliseconds, 1, G_MAXINT)),
      [](gpointer self) -> gboolean {
        static_cast<TcpConnection*>(self)->limitSource_ = 0;
        static_cast<TcpConnection*>(self)->connectionSettled(ETIMEDOUT);
        return G_SOURCE_REMOVE;
      },
      this);
}

void TcpConnection::connectionSettled(int error) {
  writable_.stop();
  if (limitSource_ != 0) g_source_remove(std::exchange(limitSource_, 0));
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
  readable_.start(descriptor(), For::kReading, [this] { return !readNow(); });
}

bool TcpConnection::readNow() {
  while (filled_ < minimum_) {
    const ssize_t count = ::recv(descriptor(), buffer_.get() + filled_, maximum_ - filled_, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return false;
    if (count < 0) {
      reading_.fail(SystemError("read from the connection", errno));
      return true;
    }
    if (count == 0) break;
    filled_ += static_cast<std::size_t>(count);
  }
  const auto buffer = std::move(buffer_);
  reading_.succeed(Bytes({buffer.get(), filled_}, buffer));
  return true;
}

void TcpConnection::write(const Bytes& bytes, MethodResult& result) {
  writing_.take(result);
  outgoing_ = bytes;
  written_ = 0;
  if (writeNow()) return;
  writable_.start(descriptor(), For::kWriting, [this] { return !writeNow(); });
}

bool TcpConnection::writeNow() {
  while (written_ < outgoing_.size()) {
    const ssize_t count = ::send(descriptor(), outgoing_.data() + written_,
                                 outgoing_.size() - written_, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return false;
    if (count < 0) {
      outgoing_ = {};
      writing_.fail(SystemError("write to the connection", errno));
      return true;
    }
    written_ += static_cast<std::size_t>(count);
  }
  outgoing_ = {};
  writing_.succeed({});
  return true;
}

void TcpConnection::finish() {
  if (::shutdown(descriptor(), SHUT_WR) != 0) throw SystemError("end the connection", errno);
}

}  // namespace brevanholt::platform
