#include "platform/engine/web/sockets/NetworkRules.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>

namespace brevanholt::platform {
namespace {

// RFC 1918, RFC 3927, RFC 4291, RFC 4193.
const std::vector<std::string> kLocalNetworks{"10.0.0.0/8",     "172.16.0.0/12", "192.168.0.0/16",
                                              "169.254.0.0/16", "fe80::/10",     "fc00::/7"};
constexpr int kMappedBits = 96;
constexpr std::size_t kMostLogged = 100;

using Address = std::array<std::uint8_t, 16>;

// As an IPv6 address. Zeros for anything but an internet address.
Address bytesOf(const sockaddr* address) {
  Address bytes{};
  if (address->sa_family == AF_INET) {
    bytes[10] = bytes[11] = 0xff;
    std::memcpy(bytes.data() + 12, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, 4);
  } else if (address->sa_family == AF_INET6) {
    std::memcpy(bytes.data(), &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, 16);
  }
  return bytes;
}

// Whether the address is one of a network that this machine has an interface in.
bool isOnLink(const Address& address) {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) return false;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owned(first, ::freeifaddrs);
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if ((entry->ifa_flags & (IFF_UP | IFF_LOOPBACK)) != IFF_UP) continue;
    if (entry->ifa_addr == nullptr || entry->ifa_netmask == nullptr) continue;
    const int family = entry->ifa_addr->sa_family;
    if (family != AF_INET && family != AF_INET6) continue;
    const Address own = bytesOf(entry->ifa_addr);
    Address mask = bytesOf(entry->ifa_netmask);
    const std::size_t begin = family == AF_INET ? 12 : 0;
    std::fill(mask.begin(), mask.begin() + static_cast<std::ptrdiff_t>(begin), 0xff);
    if (mask[begin] == 0) continue;  // everything is no local network
    bool isSame = true;
    for (std::size_t at = 0; at < own.size(); ++at) {
      isSame = isSame && ((own[at] ^ address[at]) & mask[at]) == 0;
    }
    if (isSame) return true;
  }
  return false;
}

}  // namespace

NetworkRules::NetworkRules(const BundleNeeds& needs) : peers_(networksOf(kLocalNetworks)) {
  for (const Network& network : networksOf(needs.networks)) peers_.push_back(network);
  for (const auto& [port, to] : needs.datagrams) datagrams_.push_back({port, networksOf(to)});
}

bool NetworkRules::isPeer(const SocketAddress& address) const {
  return std::ranges::any_of(peers_,
                             [&](const Network& network) { return contains(network, address); }) ||
         isOnLink(bytesOf(address.get()));
}

void NetworkRules::expectPeer(const SocketAddress& address) {
  if (!isPeer(address)) refuse("“" + address.text() + "” is not on a local network.");
}

void NetworkRules::expectDatagramPort(const SocketAddress& address) {
  for (const Datagrams& datagrams : datagrams_) {
    if (datagrams.port == 0 || datagrams.port == address.port()) return;
  }
  refuse("The user interface may not have datagrams of port " + std::to_string(address.port()) +
         ".");
}

void NetworkRules::expectDatagramsTo(const SocketAddress& address) {
  for (const auto& [port, to] : datagrams_) {
    const bool isPort = port == 0 || address.port() == 0 || port == address.port();
    if (isPort && std::ranges::any_of(
                      to, [&](const Network& network) { return contains(network, address); })) {
      return;
    }
  }
  refuse("The user interface may not send datagrams to “" + address.text() + "” port " +
         std::to_string(address.port()) + ".");
}

NetworkRules::Network NetworkRules::networkOf(const std::string& text) {
  const std::size_t slash = text.find('/');
  const SocketAddress address(text.substr(0, slash), 0);
  const int most = address.family() == AF_INET ? 32 : 128;
  int length = most;
  if (slash != std::string::npos) {
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data() + slash + 1, end, length);
    if (error != std::errc() || at != end || length < 0 || length > most) {
      throw PlatformError("“" + text + "” is no network.");
    }
  }
  return {bytesOf(address.get()), length + (most == 32 ? kMappedBits : 0)};
}

std::vector<NetworkRules::Network> NetworkRules::networksOf(const std::vector<std::string>& texts) {
  std::vector<Network> networks;
  for (const std::string& text : texts) {
    try {
      networks.push_back(networkOf(text));
    } catch (const PlatformError& error) {
      logWarning("the bundle's manifest: " + error.message());
    }
  }
  return networks;
}

bool NetworkRules::contains(const Network& network, const SocketAddress& address) {
  const Address bytes = bytesOf(address.get());
  for (int bit = 0; bit < network.length; ++bit) {
    const auto at = static_cast<std::size_t>(bit / 8);
    if (((network.address[at] ^ bytes[at]) & (0x80 >> (bit % 8))) != 0) return false;
  }
  return true;
}

void NetworkRules::refuse(const std::string& text) {
  if (logged_.size() < kMostLogged && logged_.insert(text).second) {
    logWarning("the user interface asked for a connection: " + text);
  }
  throw PlatformError(text);
}

}  // namespace brevanholt::platform
