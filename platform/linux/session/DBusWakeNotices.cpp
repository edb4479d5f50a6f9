#include "platform/linux/session/DBusWakeNotices.h"

#include "platform/foundation/Log.h"

#include <array>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kLogindPath = "/org/freedesktop/login1";
constexpr const char* kLogindManager = "org.freedesktop.login1.Manager";
constexpr const char* kLogindSession = "org.freedesktop.login1.Session";

// Each service's interface has the service's name. A null path stands for any.
struct ScreenSaver {
  const char* service;
  const char* path;
};
constexpr std::array kScreenSavers{
    // Some desktops announce the same at "/ScreenSaver" as well.
    ScreenSaver{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
    ScreenSaver{"org.gnome.ScreenSaver", nullptr}, ScreenSaver{"org.cinnamon.ScreenSaver", nullptr},
    ScreenSaver{"org.mate.ScreenSaver", nullptr}};

// For signals that report a beginning as true and an end as false.
Bus::SignalHandler whenOver(const Signal& notice) {
  return [&notice](GVariant* parameters) {
    gboolean begins = FALSE;
    g_variant_get(parameters, "(b)", &begins);
    if (begins == FALSE) notice.emit();
  };
}

}  // namespace

DBusWakeNotices::DBusWakeNotices(Bus& systemBus, Bus& sessionBus)
    : logind_(systemBus.watchName(
          kLogind,
          [this, &systemBus, hasWarned = false](const std::string& owner) mutable {
            if (!owner.empty()) return watchSessionLock(systemBus);
            if (!std::exchange(hasWarned, true)) {
              logWarning("there is no logind; waking up goes unnoticed");
            }
          })),
      sleep_(systemBus.subscribe({kLogind, kLogindPath, kLogindManager, "PrepareForSleep", "(b)"},
                                 whenOver(systemDidWake))) {
  for (const ScreenSaver& each : kScreenSavers) {
    watchScreenSaver(sessionBus, each.service, each.path);
  }
}

void DBusWakeNotices::watchScreenSaver(Bus& sessionBus, const char* service, const char* path) {
  screenSavers_.push_back(sessionBus.subscribe({service, path, service, "ActiveChanged", "(b)"},
                                               whenOver(screensDidWake)));
  screenSavers_.push_back(sessionBus.watchName(service, [this, service](const std::string& owner) {
    if (owner.empty()) {
      runningScreenSavers_.erase(service);
    } else {
      runningScreenSavers_.insert(service);
    }
  }));
}

void DBusWakeNotices::watchSessionLock(Bus& systemBus) {
  systemBus.call(
      {kLogind, kLogindPath, kLogindManager, "GetSessionByPID"},
      g_variant_new("(u)", static_cast<guint32>(::getpid())), "(o)",
      lifetime_.bind([this, &systemBus](Result<GVariantPointer> reply) {
        if (!reply.ok()) return logDebug("no session of logind's: " + reply.error().message());
        const char* path = nullptr;
        g_variant_get(reply.value().get(), "(&o)", &path);
        sessionLock_ = systemBus.subscribe(
            {kLogind, path, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)"},
            [this](GVariant* parameters) { sessionChanged(parameters); });
      }));
}

void DBusWakeNotices::sessionChanged(GVariant* parameters) {
  const char* interface = nullptr;
  GVariant* changed = nullptr;
  g_variant_get(parameters, "(&s@a{sv}@as)", &interface, &changed, nullptr);
  const GVariantPointer owned(changed);
  gboolean isLocked = TRUE;
  if (g_strcmp0(interface, kLogindSession) == 0 &&
      g_variant_lookup(changed, "LockedHint", "b", &isLocked) != FALSE && isLocked == FALSE &&
      runningScreenSavers_.empty()) {
    screensDidWake.emit();
  }
}

}  // namespace brevanholt::platform
