#pragma once

#include "platform/linux/bus/Bus.h"
#include "tests/support/MainLoop.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace brevanholt::platform {

// A message bus of the test's own, that starts and ends with it.
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

// Owns a name on a bus while it lives.
class OwnedName {
 public:
  OwnedName(Bus& bus, const std::string& name) {
    bus.whenConnected([&](GDBusConnection* connection) {
      id_ = g_bus_own_name_on_connection(connection, name.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
                                         nullptr, nullptr, nullptr, nullptr);
    });
  }
  ~OwnedName() { g_bus_unown_name(id_); }
  OwnedName(const OwnedName&) = delete;
  OwnedName& operator=(const OwnedName&) = delete;

 private:
  unsigned id_ = 0;
};

// From now on calls that come over this connection are read and never answered.
inline void neverAnswer(Bus& bus) {
  const auto drop = [](GDBusConnection*, GDBusMessage* message, gboolean isIncoming,
                       gpointer) -> GDBusMessage* {
    const auto type = g_dbus_message_get_message_type(message);
    if (isIncoming == FALSE || type != G_DBUS_MESSAGE_TYPE_METHOD_CALL) return message;
    g_object_unref(message);
    return nullptr;
  };
  bus.whenConnected([&drop](GDBusConnection* connection) {
    g_dbus_connection_add_filter(connection, drop, nullptr, nullptr);
  });
}

}  // namespace brevanholt::platform
