#pragma once

#include "platform/gtk/GLibPointers.h"
#include "platform/services/NotificationCenter.h"

#include <cstdint>
#include <set>
#include <string>

namespace brevanholt::platform {

inline constexpr const char* kNotificationSenderName = "Brevanholt";
inline constexpr const char* kDefaultAction = "default";

// Who sends a notification: the desktop's name for the application, and its icon's name or URI.
struct NotificationSender {
  std::string desktopEntry;
  std::string icon;
};

// The parameters of org.freedesktop.Notifications.Notify (Desktop Notifications Specification),
// floating. The body is escaped for a server that can "body-markup"; `replaced` is the number of
// the notification whose place it takes, zero for none.
[[nodiscard]] GVariant* notifyParameters(const Notification& notification, std::uint32_t replaced,
                                         const std::set<std::string>& capabilities,
                                         const NotificationSender& sender);

}  // namespace brevanholt::platform
