#include "platform/linux/notifications/NotificationSwitches.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr const char* kServer = "org.freedesktop.Notifications";
constexpr BusMethod kGetServerProperty{kServer, "/org/freedesktop/Notifications",
                                       "org.freedesktop.DBus.Properties", "Get"};
constexpr BusMethod kGetXfceSetting{"org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf",
                                    "GetProperty"};
constexpr const char* kXfceChannel = "xfce4-notifyd";
constexpr const char* kGnomeSettings = "org.gnome.desktop.notifications";

bool isTrue(GVariant* value) {
  return value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
         g_variant_get_boolean(value) != FALSE;
}

// Whether an array, of strings or of variants with strings, has the text.
bool listContains(GVariant* list, const std::string& text) {
  if (list == nullptr || g_variant_is_of_type(list, G_VARIANT_TYPE_ARRAY) == FALSE) return false;
  for (gsize index = 0; index < g_variant_n_children(list); ++index) {
    GVariantPointer element(g_variant_get_child_value(list, index));
    if (g_variant_is_of_type(element.get(), G_VARIANT_TYPE_VARIANT) != FALSE) {
      element.reset(g_variant_get_variant(element.get()));
    }
    if (g_variant_is_of_type(element.get(), G_VARIANT_TYPE_STRING) != FALSE &&
        g_variant_get_string(element.get(), nullptr) == text) {
      return true;
    }
  }
  return false;
}

// False where the desktop has no such setting.
bool gnomeSettingIsFalse(const char* schema, const char* path, const char* key) {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (source == nullptr) return false;
  const std::unique_ptr<GSettingsSchema, FreeWith<g_settings_schema_unref>> found(
      g_settings_schema_source_lookup(source, schema, TRUE));
  if (!found || g_settings_schema_has_key(found.get(), key) == FALSE) return false;
  const GObjectPointer<GSettings> settings(g_settings_new_full(found.get(), nullptr, path));
  return g_settings_get_boolean(settings.get(), key) == FALSE;
}

bool gnomeHasThemOff(const std::string& applicationId) {
  // The folder of an application's settings is its id in lower case with dashes.
  std::string folder = applicationId;
  std::transform(folder.begin(), folder.end(), folder.begin(), [](char character) {
    return g_ascii_isalnum(character) != FALSE ? g_ascii_tolower(character) : '-';
  });
  const std::string path = "/org/gnome/desktop/notifications/application/" + folder + "/";
  return gnomeSettingIsFalse(kGnomeSettings, nullptr, "show-banners") ||
         gnomeSettingIsFalse("org.gnome.desktop.notifications.application", path.c_str(), "enable");
}

}  // namespace

NotificationSwitches::NotificationSwitches(Bus& sessionBus, std::string applicationName,
                                           std::string applicationId)
    : sessionBus_(sessionBus),
      applicationName_(std::move(applicationName)),
      applicationId_(std::move(applicationId)) {}

void NotificationSwitches::areOff(const std::string& server, Callback callback) {
  if (server == "gnome-shell") return callback(gnomeHasThemOff(applicationId_));
  if (server == "Xfce Notify Daemon") return askXfce(std::move(callback));
  getProperty(
      kGetServerProperty, kServer, "Inhibited",
      [callback = std::move(callback)](GVariant* value) mutable { callback(isTrue(value)); });
}

void NotificationSwitches::getProperty(const BusMethod& method, const char* owner, const char* name,
                                       PropertyCallback callback) {
  sessionBus_.call(method, g_variant_new("(ss)", owner, name), "(v)",
                   [callback = std::move(callback)](Result<GVariantPointer> reply) mutable {
                     if (!reply.ok()) return callback(nullptr);
                     GVariant* value = nullptr;
                     g_variant_get(reply.value().get(), "(v)", &value);
                     callback(GVariantPointer(value).get());
                   });
}

void NotificationSwitches::askXfce(Callback callback) {
  getProperty(
      kGetXfceSetting, kXfceChannel, "/do-not-disturb",
      lifetime_.bind([this, callback = std::move(callback)](GVariant* doNotDisturb) mutable {
        if (isTrue(doNotDisturb)) return callback(true);
        getProperty(kGetXfceSetting, kXfceChannel, "/applications/muted_applications",
                    [name = applicationName_, callback = std::move(callback)](
                        GVariant* muted) mutable { callback(listContains(muted, name)); });
      }));
}

}  // namespace brevanholt::platform
