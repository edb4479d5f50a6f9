#pragma once

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/menu/DBusMenuModel.h"
#include "platform/linux/menu/MenuOpenings.h"
#include "platform/linux/menu/UpdateThrottle.h"

#include <functional>

namespace brevanholt::platform {

// Serves a menu as `com.canonical.dbusmenu`. What changes is told at most ten times a second, and
// the last value always: changed rows by their properties, a new layout only when other rows are
// there.
class DBusMenuExporter {
 public:
  static constexpr const char* kPath = "/StatusMenu";

  // Is told the time of a click before what the click does, in milliseconds of the display server.
  // A tray may send another clock's time, or zero.
  using Clicked = std::function<void(std::uint32_t time)>;

  DBusMenuExporter(Bus& bus, const Menu& menu, Clicked clicked);
  DBusMenuExporter(const DBusMenuExporter&) = delete;
  DBusMenuExporter& operator=(const DBusMenuExporter&) = delete;

 private:
  [[nodiscard]] GVariant* call(std::string_view method, GVariant* parameters);
  [[nodiscard]] GVariant* property(std::string_view name) const;
  [[nodiscard]] GVariant* getLayout(GVariant* parameters);
  [[nodiscard]] GVariant* getGroupProperties(GVariant* parameters);
  [[nodiscard]] GVariant* getProperty(GVariant* parameters);
  [[nodiscard]] GVariant* eventGroup(GVariant* parameters);
  [[nodiscard]] GVariant* aboutToShowGroup(GVariant* parameters);
  // False where there is no such row.
  bool event(std::int32_t id, std::string_view kind, std::uint32_t time);
  // Whether the host has to ask for the layout again.
  bool aboutToShow(std::int32_t id);

  void sendSignals();

  const Menu& menu_;
  Clicked clicked_;
  DBusMenuModel model_;
  MenuOpenings openings_;
  std::uint32_t servedRevision_ = 0;
  std::uint32_t announcedRevision_;
  BusObject object_;
  UpdateThrottle throttle_;
};

}  // namespace brevanholt::platform
