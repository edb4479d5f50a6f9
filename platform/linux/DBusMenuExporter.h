#pragma once

#include "platform/linux/BusObject.h"
#include "platform/linux/DBusMenuModel.h"
#include "platform/linux/MenuOpenings.h"
#include "platform/linux/UpdateThrottle.h"

#include <set>

namespace brevanholt::platform {

// Serves a menu as `com.canonical.dbusmenu`. What changes in place is told at most ten times a
// second, and the last value always; a new layout only when the menu was built anew.
class DBusMenuExporter {
 public:
  static constexpr const char* kPath = "/StatusMenu";

  DBusMenuExporter(Bus& bus, const Menu& menu);
  ~DBusMenuExporter();
  DBusMenuExporter(const DBusMenuExporter&) = delete;
  DBusMenuExporter& operator=(const DBusMenuExporter&) = delete;

 private:
  [[nodiscard]] GVariant* call(std::string_view method, GVariant* parameters);
  [[nodiscard]] GVariant* property(std::string_view name) const;
  [[nodiscard]] GVariant* getLayout(GVariant* parameters);
  [[nodiscard]] GVariant* getGroupProperties(GVariant* parameters) const;
  [[nodiscard]] GVariant* getProperty(GVariant* parameters) const;
  [[nodiscard]] GVariant* eventGroup(GVariant* parameters);
  [[nodiscard]] GVariant* aboutToShowGroup(GVariant* parameters);
  // False where there is no such row.
  bool event(std::int32_t id, std::string_view kind);
  // Whether the host has to ask for the layout again.
  bool aboutToShow(std::int32_t id);

  void scheduleSignals();
  void sendSignals();

  const Menu& menu_;
  DBusMenuModel model_;
  MenuOpenings openings_;
  UpdateThrottle throttle_;
  std::set<std::int32_t> changedRows_;
  std::uint32_t servedRevision_ = 0;
  std::uint32_t announcedRevision_;
  unsigned timer_ = 0;
  BusObject object_;
};

}  // namespace brevanholt::platform
