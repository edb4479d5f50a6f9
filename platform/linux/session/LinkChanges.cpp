#include "platform/linux/session/LinkChanges.h"

#include <cstring>
#include <utility>

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

namespace brevanholt::platform {
namespace {

constexpr std::uint32_t kStateFlags = IFF_UP | IFF_RUNNING;
constexpr std::uint32_t kNotUsableYet = IFA_F_TENTATIVE | IFA_F_DADFAILED;

}  // namespace

bool LinkChanges::take(std::span<const std::byte> datagram) {
  bool hasChanged = false;
  auto left = static_cast<unsigned>(datagram.size());
  const auto* header = reinterpret_cast<const nlmsghdr*>(datagram.data());
  for (; NLMSG_OK(header, left); header = NLMSG_NEXT(header, left)) {
    switch (header->nlmsg_type) {
      case RTM_NEWLINK:
      case RTM_DELLINK:
        if (takeLink(header, header->nlmsg_type == RTM_DELLINK)) hasChanged = true;
        break;
      case RTM_NEWADDR:
      case RTM_DELADDR:
        if (takeAddress(header, header->nlmsg_type == RTM_DELADDR)) hasChanged = true;
        break;
      default:
        break;
    }
  }
  return hasChanged;
}

bool LinkChanges::takeLink(const void* header, bool isRemoved) {
  const auto* message = static_cast<const nlmsghdr*>(header);
  if (message->nlmsg_len < NLMSG_LENGTH(sizeof(ifinfomsg))) return false;
  const auto* link = static_cast<const ifinfomsg*>(NLMSG_DATA(message));
  if (isRemoved) {
    links_.erase(link->ifi_index);
    return true;
  }
  const std::uint32_t state = link->ifi_flags & kStateFlags;
  const auto [known, isNew] = links_.try_emplace(link->ifi_index, state);
  if (isNew) return true;
  return std::exchange(known->second, state) != state;
}

bool LinkChanges::takeAddress(const void* header, bool isRemoved) {
  const auto* message = static_cast<const nlmsghdr*>(header);
  if (message->nlmsg_len < NLMSG_LENGTH(sizeof(ifaddrmsg))) return false;
  const auto* about = static_cast<const ifaddrmsg*>(NLMSG_DATA(message));
  std::uint32_t flags = about->ifa_flags;
  std::vector<std::byte> bytes;
  auto left = static_cast<unsigned>(IFA_PAYLOAD(message));
  for (const rtattr* part = IFA_RTA(about); RTA_OK(part, left); part = RTA_NEXT(part, left)) {
    const auto* data = static_cast<const std::byte*>(RTA_DATA(part));
    // Of a point-to-point link IFA_ADDRESS is the other end; IFA_LOCAL, which follows, is this one.
    if (part->rta_type == IFA_ADDRESS || part->rta_type == IFA_LOCAL) {
      bytes.assign(data, data + RTA_PAYLOAD(part));
    } else if (part->rta_type == IFA_FLAGS && RTA_PAYLOAD(part) >= sizeof(flags)) {
      std::memcpy(&flags, data, sizeof(flags));
    }
  }
  Address address{about->ifa_index, about->ifa_family, std::move(bytes)};
  if (isRemoved) {
    addresses_.erase(address);
    return true;  // also one that was there before the first message
  }
  return (flags & kNotUsableYet) == 0 && addresses_.insert(std::move(address)).second;
}

}  // namespace brevanholt::platform
