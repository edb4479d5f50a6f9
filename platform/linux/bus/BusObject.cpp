#include "platform/linux/bus/BusObject.h"

#include "platform/foundation/Log.h"

#include <utility>

namespace brevanholt::platform {
namespace {

void handleCall(GDBusConnection*, const char*, const char*, const char*, const char* method,
                GVariant* parameters, GDBusMethodInvocation* invocation, gpointer handlers) {
  try {
    GVariant* reply = static_cast<BusObject::Handlers*>(handlers)->call(method, parameters);
    if (reply != nullptr) return g_dbus_method_invocation_return_value(invocation, reply);
    g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD,
                                          "There is no method %s", method);
  } catch (const PlatformError& error) {
    g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR,
                                                  G_DBUS_ERROR_INVALID_ARGS, error.what());
  }
}

GVariant* getProperty(GDBusConnection*, const char*, const char*, const char*, const char* name,
                      GError** error, gpointer handlers) {
  GVariant* value = static_cast<BusObject::Handlers*>(handlers)->property(name);
  if (value == nullptr) {
    g_set_error(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "There is no %s", name);
  }
  return value;
}

constexpr GDBusInterfaceVTable kTable{handleCall, getProperty, nullptr, {}};

}  // namespace

BusObject::BusObject(Bus& bus, std::string path, const char* description, Handlers handlers)
    : path_(std::move(path)),
      handlers_(std::move(handlers)),
      description_(g_dbus_node_info_new_for_xml(description, nullptr)) {
  registering_ = bus.whenEverConnected([this](GDBusConnection* connection) {
    unregister();
    if (connection != nullptr) registerOn(connection);
  });
}

BusObject::~BusObject() {
  unregister();
}

void BusObject::unregister() {
  const auto connection = std::exchange(connection_, nullptr);
  if (connection) g_dbus_connection_unregister_object(connection.get(), registration_);
}

void BusObject::registerOn(GDBusConnection* connection) {
  GError* failure = nullptr;
  registration_ =
      g_dbus_connection_register_object(connection, path_.c_str(), description_->interfaces[0],
                                        &kTable, &handlers_, nullptr, &failure);
  const GErrorPointer error(failure);
  if (error) return logWarning("no object at " + path_ + ": " + error->message);
  connection_ = retained(connection);
}

void BusObject::emit(const char* signal, GVariant* parameters) {
  const GVariantPointer owned(g_variant_ref_sink(parameters));
  if (!connection_) return;
  g_dbus_connection_emit_signal(connection_.get(), nullptr, path_.c_str(),
                                description_->interfaces[0]->name, signal, owned.get(), nullptr);
}

}  // namespace brevanholt::platform
