#pragma once

#include "platform/linux/bus/BusObject.h"
#include "tests/support/MainLoop.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <deque>
#include <string>

namespace brevanholt::platform {

// A message bus that ends with the object.
class PrivateBus {
 public:
  PrivateBus() : daemon_(g_test_dbus_new(G_TEST_DBUS_NONE)) { g_test_dbus_up(daemon_.get()); }
  ~PrivateBus() { g_test_dbus_stop(daemon_.get()); }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  [[nodiscard]] std::string address() const { return g_test_dbus_get_bus_address(daemon_.get()); }

 private:
  GObjectPointer<GTestDBus> daemon_;
};

// Calls a method and waits for its reply: the reply's text form, or the error's text.
inline std::string replyText(Bus& bus, const BusMethod& method, GVariant* parameters) {
  std::string text;
  bool isDone = false;
  bus.call(method, parameters, "*", [&](Result<GVariantPointer> reply) {
    isDone = true;
    text = reply.ok() ? GCharPointer(g_variant_print(reply.value().get(), FALSE)).get()
                      : "error: " + reply.error().message();
  });
  EXPECT_TRUE(spinUntil([&isDone] { return isDone; }));
  return text;
}

// A service made by hand: a connection with a name, and objects on it.
class BusService {
 public:
  using Call = std::function<GVariant*(std::string_view method, GVariant* parameters)>;
  using Property = std::function<GVariant*(std::string_view name)>;

  BusService(const std::string& address, const std::string& name) : bus_(address) {
    bus_.whenConnected([&](GDBusConnection* connection) {
      name_ = g_bus_own_name_on_connection(connection, name.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
                                           nullptr, nullptr, nullptr, nullptr);
    });
  }
  ~BusService() { vanish(); }
  BusService(const BusService&) = delete;
  BusService& operator=(const BusService&) = delete;

  // `description` is the interface in D-Bus introspection XML.
  BusObject& serve(const char* path, const char* description, Call call,
                   Property property = nullptr) {
    return objects_.emplace_back(
        bus_, path, description,
        BusObject::Handlers{.call = std::move(call), .property = std::move(property)});
  }
  [[nodiscard]] Bus& bus() { return bus_; }

  // Releases the name.
  void vanish() {
    if (name_ != 0) g_bus_unown_name(std::exchange(name_, 0));
  }
  // From now on calls are read and never answered.
  void hang() {
    const auto drop = [](GDBusConnection*, GDBusMessage* message, gboolean isIncoming,
                         gpointer) -> GDBusMessage* {
      const auto type = g_dbus_message_get_message_type(message);
      if (isIncoming == FALSE || type != G_DBUS_MESSAGE_TYPE_METHOD_CALL) return message;
      g_object_unref(message);
      return nullptr;
    };
    bus_.whenConnected([&drop](GDBusConnection* connection) {
      g_dbus_connection_add_filter(connection, drop, nullptr, nullptr);
    });
  }

 private:
  Bus bus_;
  std::deque<BusObject> objects_;
  unsigned name_ = 0;
};

// Waits until somebody owns the name.
inline void waitForName(Bus& bus, const char* name) {
  EXPECT_TRUE(spinUntil([&] {
    return replyText(bus, {"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner"},
                     g_variant_new("(s)", name)) == "(true,)";
  }));
}

// Waits for a reply on the bus's connection, by when all messages sent before have arrived.
inline void settle(Bus& bus) {
  replyText(bus, {"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"}, nullptr);
  spinOnce();
}

}  // namespace brevanholt::platform
