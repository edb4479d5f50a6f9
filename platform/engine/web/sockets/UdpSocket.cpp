#include "platform/engine/web/sockets/UdpSocket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <vector>

#include <net/if.h>
#include <sys/socket.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kLargestDatagram = 65535;

FileDescriptor bound(const SocketAddress& address, bool isShared) {
  FileDescriptor socket(::socket(address.family(), SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket) throw SystemError("open a socket", errno);
  const int yes = 1;
  const int no = 0;
  if (isShared) ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  if (address.family() == AF_INET6) {
    ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &yes, sizeof(yes));
    ::setsockopt(socket.get(), IPPROTO_IPV6, IPV6_MULTICAST_ALL, &no, sizeof(no));
  } else {
    // Only the groups that this socket itself has joined.
    ::setsockopt(socket.get(), IPPROTO_IP, IP_MULTICAST_ALL, &no, sizeof(no));
  }
  if (::bind(socket.get(), address.get(), address.size()) != 0) {
    throw SystemError("listen on port " + std::to_string(address.port()), errno);
  }
  return socket;
}

}  // namespace

UdpSocket::UdpSocket(const SocketAddress& address, bool isShared)
    : EngineSocket(bound(address, isShared)) {}

UdpSocket::~UdpSocket() {
  if (farewell_.size() == 0) return;
  // A failure is not reported: the socket is closing.
  static_cast<void>(::sendto(descriptor(), farewell_.data(), farewell_.size(), MSG_NOSIGNAL,
                             farewellTo_.get(), farewellTo_.size()));
}

void UdpSocket::setFarewell(const Bytes& bytes, const SocketAddress& to) {
  farewell_ = bytes;
  farewellTo_ = to;
}

Value UdpSocket::description() const {
  return Map{{"port", SocketAddress::ofSocket(descriptor()).port()}};
}

void UdpSocket::join(const std::string& group, const std::string& interface) {
  const auto index = static_cast<int>(::if_nametoindex(interface.c_str()));
  if (index == 0) throw SystemError("find the interface " + interface, errno);
  const SocketAddress address(group, 0);
  group_req request{};
  request.gr_interface = static_cast<unsigned>(index);
  std::memcpy(&request.gr_group, address.get(), address.size());
  const bool isIpv6 = address.family() == AF_INET6;
  const int level = isIpv6 ? IPPROTO_IPV6 : IPPROTO_IP;
  if (::setsockopt(descriptor(), level, MCAST_JOIN_GROUP, &request, sizeof(request)) != 0 &&
      errno != EADDRINUSE) {
    throw SystemError("join the group " + group + " on " + interface, errno);
  }
  ip_mreqn from{};
  from.imr_ifindex = index;
  const int failed =
      isIpv6 ? ::setsockopt(descriptor(), level, IPV6_MULTICAST_IF, &index, sizeof(index))
             : ::setsockopt(descriptor(), level, IP_MULTICAST_IF, &from, sizeof(from));
  if (failed != 0) throw SystemError("send from " + interface, errno);
}

void UdpSocket::send(const Bytes& bytes, const SocketAddress& to) {
  const ssize_t sent =
      ::sendto(descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL, to.get(), to.size());
  if (sent < 0) throw SystemError("send to " + to.text(), errno);
}

void UdpSocket::receive(MethodResult& result) {
  receiving_.take(result);
  if (receiveNow()) return;
  onReadable_ = LoopSource::whenReadable(descriptor(), [this] { receiveNow(); });
}

bool UdpSocket::receiveNow() {
  std::array<std::uint8_t, kLargestDatagram> buffer;
  SocketAddress from;
  const ssize_t count =
      ::recvfrom(descriptor(), buffer.data(), buffer.size(), 0, from.get(), from.sizePointer());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return false;
  const std::span bytes(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  if (!bytes.empty() && std::ranges::equal(bytes, ignored_)) return false;
  onReadable_.stop();
  if (count < 0) {
    receiving_.fail(SystemError("receive", errno));
    return true;
  }
  receiving_.succeed(Map{{"bytes", Bytes(std::vector<std::uint8_t>(bytes.begin(), bytes.end()))},
                         {"address", from.text()},
                         {"port", from.port()}});
  return true;
}

}  // namespace brevanholt::platform
