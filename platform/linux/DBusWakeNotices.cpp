#include "platform/linux/DBusWakeNotices.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr BusSignal kPrepareForSleep{kLogind, "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", "PrepareForSleep", "(b)"};
// Some desktops say it at "/ScreenSaver" as well.
constexpr BusSignal kScreenSaverChanged{"org.freedesktop.ScreenSaver",
                                        "/org/freedesktop/ScreenSaver",
                                        "org.freedesktop.ScreenSaver", "ActiveChanged", "(b)"};

// Both signals say what begins with true, and that it is over with false.
Bus::SignalHandler whenOver(const Signal& notice) {
  return [&notice](GVariant* parameters) {
    gboolean begins = FALSE;
    g_variant_get(parameters, "(b)", &begins);
    if (begins == FALSE) notice.emit();
  };
}

}  // namespace

DBusWakeNotices::DBusWakeNotices(Bus& systemBus, Bus& sessionBus)
    : logind_(systemBus.watchName(kLogind,
                                  [hasWarned = false](const std::string& owner) mutable {
                                    if (!owner.empty() || std::exchange(hasWarned, true)) return;
                                    logWarning("there is no logind; waking up goes unnoticed");
                                  })),
      sleep_(systemBus.subscribe(kPrepareForSleep, whenOver(systemDidWake))),
      screens_(sessionBus.subscribe(kScreenSaverChanged, whenOver(screensDidWake))) {}

}  // namespace brevanholt::platform
