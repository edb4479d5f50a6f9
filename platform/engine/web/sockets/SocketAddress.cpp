#include "platform/engine/web/sockets/SocketAddress.h"

#include "platform/foundation/PlatformError.h"

#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>

namespace brevanholt::platform {
namespace {

std::int32_t prefixLength(const sockaddr* mask) {
  if (mask == nullptr) return 0;
  int bits = 0;
  if (mask->sa_family == AF_INET) {
    bits = std::popcount(reinterpret_cast<const sockaddr_in*>(mask)->sin_addr.s_addr);
  } else {
    for (const std::uint8_t byte : reinterpret_cast<const sockaddr_in6*>(mask)->sin6_addr.s6_addr) {
      bits += std::popcount(byte);
    }
  }
  return bits;
}

std::string textOf(const sockaddr* address, socklen_t size) {
  std::array<char, NI_MAXHOST> text{};
  const int error =
      ::getnameinfo(address, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST);
  return error == 0 ? text.data() : "";
}

}  // namespace

SocketAddress::SocketAddress(const std::string& text, std::int64_t port) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const bool isPort = port >= 0 && port <= UINT16_MAX;
  if (!isPort || ::getaddrinfo(text.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw PlatformError("“" + text + "” port " + std::to_string(port) + " is no network address.");
  }
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(found, ::freeaddrinfo);
  std::memcpy(&storage_, found->ai_addr, found->ai_addrlen);
  size_ = found->ai_addrlen;
}

SocketAddress SocketAddress::ofSocket(int descriptor) {
  SocketAddress address;
  ::getsockname(descriptor, address.get(), address.sizePointer());
  return address;
}

SocketAddress SocketAddress::ofPeer(int descriptor) {
  SocketAddress address;
  ::getpeername(descriptor, address.get(), address.sizePointer());
  return address;
}

std::string SocketAddress::text() const {
  return textOf(get(), size_);
}

std::int32_t SocketAddress::port() const {
  return family() == AF_INET6 ? ntohs(reinterpret_cast<const sockaddr_in6*>(&storage_)->sin6_port)
                              : ntohs(reinterpret_cast<const sockaddr_in*>(&storage_)->sin_port);
}

Value networkInterfaces() {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) throw SystemError("list the network interfaces", errno);
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owned(first, ::freeifaddrs);

  std::map<std::string, std::pair<unsigned, List>> byName;  // flags, addresses
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if ((entry->ifa_flags & IFF_UP) == 0) continue;
    auto& [flags, addresses] = byName[entry->ifa_name];
    flags = entry->ifa_flags;
    const int family = entry->ifa_addr != nullptr ? entry->ifa_addr->sa_family : AF_UNSPEC;
    if (family != AF_INET && family != AF_INET6) continue;
    const socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    addresses.push_back(Map{{"address", textOf(entry->ifa_addr, size)},
                            {"prefix", prefixLength(entry->ifa_netmask)}});
  }
  List interfaces;
  for (const auto& [name, found] : byName) {
    const auto& [flags, addresses] = found;
    interfaces.push_back(Map{{"name", name},
                             {"index", static_cast<std::int32_t>(::if_nametoindex(name.c_str()))},
                             {"isLoopback", (flags & IFF_LOOPBACK) != 0},
                             {"canMulticast", (flags & IFF_MULTICAST) != 0},
                             {"addresses", addresses}});
  }
  return interfaces;
}

}  // namespace brevanholt::platform
