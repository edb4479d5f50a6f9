#pragma once

#include "platform/linux/bus/Bus.h"

#include <functional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// One object on a bus with one interface, for others to call. It is there while the bus is.
class BusObject {
 public:
  struct Handlers {
    // The reply's tuple (it may be floating); null where the method is not known. Throws
    // PlatformError for what the caller did wrong.
    std::function<GVariant*(std::string_view method, GVariant* parameters)> call;
    std::function<GVariant*(std::string_view name)> property;
  };

  // `description` is the interface in D-Bus introspection XML.
  BusObject(Bus& bus, std::string path, const char* description, Handlers handlers);
  ~BusObject();
  BusObject(const BusObject&) = delete;
  BusObject& operator=(const BusObject&) = delete;

  // `parameters` may be floating. Lost while there is no bus.
  void emit(const char* signal, GVariant* parameters);

 private:
  void registerOn(GDBusConnection* connection);
  void unregister();

  std::string path_;
  Handlers handlers_;
  std::unique_ptr<GDBusNodeInfo, FreeWith<g_dbus_node_info_unref>> description_;
  GObjectPointer<GDBusConnection> connection_;
  unsigned registration_ = 0;
  BusSubscription registering_;
};

}  // namespace brevanholt::platform
