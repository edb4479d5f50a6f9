#pragma once

#include "platform/engine/BundleNeeds.h"
#include "platform/engine/web/sockets/SocketAddress.h"

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace brevanholt::platform {

// Whom the page may talk to: by TCP to and from addresses of local networks (private, link-local,
// unique local, and those of this machine's own interfaces, but not the machine itself by its
// loopback), by datagrams where the bundle's manifest says so. The manifest may add networks.
//
// What expects throws PlatformError, and logs each address once.
class NetworkRules {
 public:
  // Networks that cannot be read are logged and left out.
  explicit NetworkRules(const BundleNeeds& needs);

  [[nodiscard]] bool isPeer(const SocketAddress& address) const;
  void expectPeer(const SocketAddress& address);
  // That datagrams may come to a port of this machine.
  void expectDatagramPort(const SocketAddress& address);
  // That they may go there; of a port of 0, to any port.
  void expectDatagramsTo(const SocketAddress& address);

 private:
  // An IPv6 network, or an IPv4 one as part of ::ffff:0:0/96.
  struct Network {
    std::array<std::uint8_t, 16> address{};
    int length = 0;
  };
  struct Datagrams {
    int port = 0;
    std::vector<Network> to;
  };

  static Network networkOf(const std::string& text);
  static std::vector<Network> networksOf(const std::vector<std::string>& texts);
  static bool contains(const Network& network, const SocketAddress& address);
  [[noreturn]] void refuse(const std::string& text);

  std::vector<Network> peers_;
  std::vector<Datagrams> datagrams_;
  std::set<std::string> logged_;
};

}  // namespace brevanholt::platform
