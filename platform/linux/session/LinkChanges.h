#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <tuple>
#include <vector>

namespace brevanholt::platform {

// Finds out which messages of the kernel's rtnetlink groups for links and addresses (rtnetlink(7))
// report a change. The kernel repeats what is known: an access point's signal, an address whose
// lifetime was extended.
class LinkChanges {
 public:
  // Whether one datagram of the kernel changes a link's state or the set of usable addresses.
  [[nodiscard]] bool take(std::span<const std::byte> datagram);

 private:
  // Interface, family and address.
  using Address = std::tuple<std::uint32_t, std::uint8_t, std::vector<std::byte>>;

  [[nodiscard]] bool takeLink(const void* header, bool isRemoved);
  [[nodiscard]] bool takeAddress(const void* header, bool isRemoved);

  std::map<int, std::uint32_t> links_;  // the state flags by interface
  std::set<Address> addresses_;
};

}  // namespace brevanholt::platform
