#include "platform/engine/web/sockets/TcpListener.h"

#include <cerrno>

#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

FileDescriptor listening(const SocketAddress& address, int backlog) {
  FileDescriptor socket(::socket(address.family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket) throw SystemError("open a socket", errno);
  const int yes = 1;
  const int no = 0;
  ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  // "::" serves IPv4 as well.
  if (address.family() == AF_INET6) {
    ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &no, sizeof(no));
  }
  if (::bind(socket.get(), address.get(), address.size()) != 0 ||
      ::listen(socket.get(), backlog) != 0) {
    throw SystemError("listen on port " + std::to_string(address.port()), errno);
  }
  return socket;
}

}  // namespace

TcpListener::TcpListener(const SocketAddress& address, int backlog, const NetworkRules& rules,
                         Accepted accepted)
    : EngineSocket(listening(address, backlog)), rules_(rules), accepted_(std::move(accepted)) {}

Value TcpListener::description() const {
  return Map{{"port", SocketAddress::ofSocket(descriptor()).port()}};
}

void TcpListener::accept(MethodResult& result) {
  accepting_.take(result);
  if (acceptNow()) return;
  onReadable_ = LoopSource::whenReadable(descriptor(), [this] { acceptNow(); });
}

bool TcpListener::acceptNow() {
  FileDescriptor connection(
      ::accept4(descriptor(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  // Ignores connections that were aborted before accept.
  if (!connection && (errno == EAGAIN || errno == EINTR || errno == ECONNABORTED)) return false;
  // Closes connections from addresses that the rules refuse.
  if (connection && !rules_.isPeer(SocketAddress::ofPeer(connection.get()))) return false;
  onReadable_.stop();
  if (!connection) {
    accepting_.fail(SystemError("accept a connection", errno));
    return true;
  }
  try {
    accepting_.succeed(accepted_(std::make_unique<TcpConnection>(std::move(connection))));
  } catch (const PlatformError& error) {
    accepting_.fail(error);
  }
  return true;
}

}  // namespace brevanholt::platform
