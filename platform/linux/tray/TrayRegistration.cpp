#include "platform/linux/tray/TrayRegistration.h"

#include "platform/foundation/Log.h"

#include <utility>

namespace brevanholt::platform {
namespace {

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kWatcherPath = "/StatusNotifierWatcher";
constexpr BusMethod kRegister{kWatcher, kWatcherPath, kWatcher, "RegisterStatusNotifierItem"};
constexpr BusMethod kGetProperty{kWatcher, kWatcherPath, "org.freedesktop.DBus.Properties", "Get"};
constexpr BusSignal kHostCame{kWatcher, kWatcherPath, kWatcher, "StatusNotifierHostRegistered"};
constexpr BusSignal kHostWent{kWatcher, kWatcherPath, kWatcher, "StatusNotifierHostUnregistered"};

}  // namespace

TrayRegistration::TrayRegistration(Bus& bus, std::string itemPath, std::function<void(bool)> shown)
    : bus_(bus), itemPath_(std::move(itemPath)), shown_(std::move(shown)) {
  hostCame_ = bus.subscribe(kHostCame, [this](GVariant*) {
    if (isRegistered_ == false) registerItem();
    readHost();
  });
  hostWent_ = bus.subscribe(kHostWent, [this](GVariant*) { readHost(); });
  watcher_ = bus.watchName(kWatcher, [this](const std::string& owner) { watcherChanged(owner); });
}

void TrayRegistration::watcherChanged(const std::string& owner) {
  hasWatcher_ = !owner.empty();
  isRegistered_.reset();
  hasHost_.reset();
  if (!hasWatcher_) return tell();
  registerItem();
  readHost();
}

void TrayRegistration::registerItem() {
  bus_.call(kRegister, g_variant_new("(s)", itemPath_.c_str()), "()",
            lifetime_.bind([this](const Result<GVariantPointer>& reply) {
              isRegistered_ = reply.ok();
              if (!reply.ok()) {
                logWarning("the status tray refuses the icon: " + reply.error().message());
              }
              tell();
            }));
}

void TrayRegistration::readHost() {
  bus_.call(kGetProperty, g_variant_new("(ss)", kWatcher, "IsStatusNotifierHostRegistered"), "(v)",
            lifetime_.bind([this](const Result<GVariantPointer>& reply) {
              hasHost_ = true;  // a watcher that does not say draws the items itself
              if (reply.ok()) {
                GVariant* boxed = nullptr;
                g_variant_get(reply.value().get(), "(v)", &boxed);
                const GVariantPointer value(boxed);
                if (g_variant_is_of_type(boxed, G_VARIANT_TYPE_BOOLEAN) != FALSE) {
                  hasHost_ = g_variant_get_boolean(boxed) != FALSE;
                }
              }
              tell();
            }));
}

void TrayRegistration::tell() {
  if (hasWatcher_ && (!isRegistered_ || !hasHost_)) return;  // the answers are on their way
  const bool isShown = hasWatcher_ && *isRegistered_ && *hasHost_;
  if (std::exchange(told_, isShown) != isShown) shown_(isShown);
}

}  // namespace brevanholt::platform
