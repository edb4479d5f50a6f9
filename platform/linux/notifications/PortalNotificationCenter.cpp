#include "platform/linux/notifications/PortalNotificationCenter.h"

#include "platform/foundation/Log.h"
#include "platform/linux/portal/PortalRequest.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kInterface = "org.freedesktop.portal.Notification";
constexpr const char* kOpen = "open";
// From this version on the portal takes a sound.
constexpr std::uint32_t kVersionWithSound = 2;

GVariant* portalNotification(const Notification& notification, std::uint32_t version) {
  GVariantBuilder fields;
  g_variant_builder_init(&fields, G_VARIANT_TYPE_VARDICT);
  const auto add = [&fields](const char* name, const std::string& value) {
    g_variant_builder_add(&fields, "{sv}", name, g_variant_new_string(value.c_str()));
  };
  add("title", notification.title);
  add("body", notification.body);
  add("default-action", kOpen);
  if (version >= kVersionWithSound) add("sound", "default");
  return g_variant_new("(sa{sv})", notification.identifier.c_str(), &fields);
}

// The token that the platform data of an action holds, if it holds one.
std::string activationToken(GVariant* parameter) {
  const char* token = nullptr;
  GVariantIter values;
  g_variant_iter_init(&values, parameter);
  while (GVariantPointer value{g_variant_iter_next_value(&values)}) {
    const GVariantPointer inner(g_variant_get_variant(value.get()));
    const bool isData = g_variant_is_of_type(inner.get(), G_VARIANT_TYPE_VARDICT) != FALSE;
    if (isData && g_variant_lookup(inner.get(), "activation-token", "&s", &token) != FALSE) {
      return token;
    }
  }
  return {};
}

}  // namespace

PortalNotificationCenter::PortalNotificationCenter(
    Bus& sessionBus, std::function<void(const std::string&)> activationTokenGiven)
    : sessionBus_(sessionBus),
      activationTokenGiven_(std::move(activationTokenGiven)),
      action_(sessionBus.subscribe({kPortal, kPortalPath, kInterface, "ActionInvoked", "(ssav)"},
                                   [this](GVariant* parameters) { actionInvoked(parameters); })) {}

void PortalNotificationCenter::requestAuthorization(UniqueFunction<void(Result<bool>)> callback) {
  findVersion([callback = std::move(callback)](const Result<std::uint32_t>& version) mutable {
    if (version.ok()) return callback(true);
    callback(PlatformError("Could not ask for notifications: " + version.error().message()));
  });
}

void PortalNotificationCenter::add(const Notification& notification,
                                   UniqueFunction<void(Result<Done>)> callback) {
  findVersion(lifetime_.bind([this, notification, callback = std::move(callback)](
                                 const Result<std::uint32_t>& version) mutable {
    sessionBus_.call(
        portalMethod(kInterface, "AddNotification"),
        portalNotification(notification, version.ok() ? version.value() : 1), "()",
        [callback = std::move(callback)](const Result<GVariantPointer>& reply) mutable {
          if (reply.ok()) return callback(Done{});
          callback(PlatformError("Could not show the notification: " + reply.error().message()));
        });
  }));
}

void PortalNotificationCenter::remove(const std::string& identifier) {
  sessionBus_.call(portalMethod(kInterface, "RemoveNotification"),
                   g_variant_new("(s)", identifier.c_str()), "()",
                   [](const Result<GVariantPointer>& reply) {
                     if (!reply.ok()) logDebug("nothing was withdrawn: " + reply.error().message());
                   });
}

void PortalNotificationCenter::findVersion(UniqueFunction<void(Result<std::uint32_t>)> callback) {
  sessionBus_.call(portalMethod("org.freedesktop.DBus.Properties", "Get"),
                   g_variant_new("(ss)", kInterface, "version"), "(v)",
                   [callback = std::move(callback)](const Result<GVariantPointer>& reply) mutable {
                     if (!reply.ok()) return callback(reply.error());
                     GVariant* value = nullptr;
                     g_variant_get(reply.value().get(), "(v)", &value);
                     const GVariantPointer owned(value);
                     const bool isNumber =
                         g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) != FALSE;
                     callback(isNumber ? g_variant_get_uint32(value) : 1U);
                   });
}

void PortalNotificationCenter::actionInvoked(GVariant* parameters) {
  const char* identifier = nullptr;
  const char* action = nullptr;
  GVariant* parameter = nullptr;
  g_variant_get(parameters, "(&s&s@av)", &identifier, &action, &parameter);
  const GVariantPointer owned(parameter);
  if (std::string_view(action) != kOpen) return;
  if (const std::string token = activationToken(parameter); !token.empty()) {
    activationTokenGiven_(token);
  }
  opened_();
}

}  // namespace brevanholt::platform
