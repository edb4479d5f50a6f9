#include "platform/linux/NotificationMessage.h"

#include "platform/foundation/Utf8.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kDefaultSound = "message-new-instant";  // of the Sound Naming Specification
constexpr int kServersOwnTime = -1;

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

}  // namespace

GVariant* notifyParameters(const Notification& notification, std::uint32_t replaced,
                           const std::set<std::string>& capabilities,
                           const NotificationSender& sender) {
  const std::string title = repairedUtf8(notification.title);
  const std::string plainBody = repairedUtf8(notification.body);
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
