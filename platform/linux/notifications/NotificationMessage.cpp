#include "platform/linux/notifications/NotificationMessage.h"

#include "platform/foundation/Utf8.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr const char* kDefaultSound = "message-new-instant";  // of the Sound Naming Specification
constexpr int kServersOwnTime = -1;
constexpr std::size_t kLongestText = 4096;  // bytes; desktops show a few lines

// Only what starts markup: some servers show other entities as they stand.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if (character == '&') {
      result += "&amp;";
    } else if (character == '<') {
      result += "&lt;";
    } else if (character == '>') {
      result += "&gt;";
    } else {
      result += character;
    }
  }
  return result;
}

// The text as a desktop can take it: valid, without NUL, and no longer than a bubble may need. The
// text is cut between characters.
std::string shown(const std::string& text) {
  std::string result = repairedUtf8(std::string_view(text).substr(0, kLongestText + 4));
  if (text.size() > kLongestText) {
    std::size_t end = std::min(kLongestText, result.size());
    while (end > 0 && (static_cast<unsigned char>(result[end]) & 0xC0U) == 0x80U) --end;
    result.resize(end);
    result += "…";
  }
  for (std::size_t at = 0; (at = result.find('\0', at)) != std::string::npos;) {
    result.replace(at, 1, "\xEF\xBF\xBD");
  }
  return result;
}

}  // namespace

GVariant* notifyParameters(const Notification& notification, std::uint32_t replaced,
                           const std::set<std::string>& capabilities,
                           const NotificationSender& sender) {
  const std::string title = shown(notification.title);
  const std::string plainBody = shown(notification.body);
  const std::string body = capabilities.contains("body-markup") ? escaped(plainBody) : plainBody;

  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
  if (capabilities.contains("actions")) {  // without it, some servers ask in a dialog
    g_variant_builder_add(&actions, "s", kDefaultAction);
    g_variant_builder_add(&actions, "s", "Open");
  }
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string(kDefaultSound));
  g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                        g_variant_new_string(sender.desktopEntry.c_str()));
  return g_variant_new("(susssasa{sv}i)", kNotificationSenderName, replaced, sender.icon.c_str(),
                       title.c_str(), body.c_str(), &actions, &hints, kServersOwnTime);
}

}  // namespace brevanholt::platform
