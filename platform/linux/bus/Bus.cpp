#include "platform/linux/bus/Bus.h"

#include "platform/foundation/Log.h"

#include <gio/gunixfdlist.h>

namespace brevanholt::platform {
namespace {

// The message without "GDBus.Error:org.freedesktop.Name: " in front.
PlatformError errorFrom(GError* error) {
  g_dbus_error_strip_remote_error(error);
  return PlatformError(error->message);
}

void finishCall(GObject* source, GAsyncResult* asyncResult, gpointer data) {
  const std::unique_ptr<Bus::ReplyCallback> callback(static_cast<Bus::ReplyCallback*>(data));
  GError* failure = nullptr;
  GVariantPointer reply(
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), asyncResult, &failure));
  const GErrorPointer error(failure);
  if (error) return (*callback)(errorFrom(error.get()));
  (*callback)(std::move(reply));
}

void finishCallWithDescriptor(GObject* source, GAsyncResult* asyncResult, gpointer data) {
  const std::unique_ptr<Bus::ReplyCallback> callback(static_cast<Bus::ReplyCallback*>(data));
  GError* failure = nullptr;
  GVariantPointer reply(g_dbus_connection_call_with_unix_fd_list_finish(
      G_DBUS_CONNECTION(source), nullptr, asyncResult, &failure));
  const GErrorPointer error(failure);
  if (error) return (*callback)(errorFrom(error.get()));
  (*callback)(std::move(reply));
}

void finishDescriptorCall(GObject* source, GAsyncResult* asyncResult, gpointer data) {
  const std::unique_ptr<Bus::DescriptorCallback> callback(
      static_cast<Bus::DescriptorCallback*>(data));
  GError* failure = nullptr;
  GUnixFDList* received = nullptr;
  const GVariantPointer reply(g_dbus_connection_call_with_unix_fd_list_finish(
      G_DBUS_CONNECTION(source), &received, asyncResult, &failure));
  const GErrorPointer error(failure);
  const GObjectPointer<GUnixFDList> descriptors(received);
  if (error) return (*callback)(errorFrom(error.get()));
  if (!descriptors || g_unix_fd_list_get_length(descriptors.get()) == 0) {
    return (*callback)(PlatformError("the reply has no file descriptor"));
  }
  const int descriptor = g_unix_fd_list_get(descriptors.get(), 0, nullptr);
  if (descriptor < 0) return (*callback)(PlatformError("the file descriptor cannot be kept"));
  (*callback)(FileDescriptor(descriptor));
}

// How to end a subscription that may not have begun yet: filled in once the bus is there.
using SharedEnd = std::shared_ptr<UniqueFunction<void()>>;

BusSubscription subscriptionOf(SharedEnd end) {
  return BusSubscription([end = std::move(end)] {
    if (*end) (*end)();
  });
}

template <class T>
void deleteBoxed(gpointer data) {
  delete static_cast<T*>(data);
}

}  // namespace

Bus::Bus(GBusType type)
    : kind_(type == G_BUS_TYPE_SYSTEM ? "system" : "session"), cancellable_(g_cancellable_new()) {
  auto* self =
      new UniqueFunction<void(GAsyncResult*)>(lifetime_.bind([this](GAsyncResult* asyncResult) {
        GError* error = nullptr;
        GObjectPointer<GDBusConnection> connection(g_bus_get_finish(asyncResult, &error));
        connected(std::move(connection), GErrorPointer(error));
      }));
  g_bus_get(
      type, cancellable_.get(),
      [](GObject*, GAsyncResult* asyncResult, gpointer data) {
        const std::unique_ptr<UniqueFunction<void(GAsyncResult*)>> finish(
            static_cast<UniqueFunction<void(GAsyncResult*)>*>(data));
        (*finish)(asyncResult);
      },
      self);
}

Bus::Bus(const std::string& address) : kind_("private"), cancellable_(g_cancellable_new()) {
  GError* error = nullptr;
  GObjectPointer<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error));
  connected(std::move(connection), GErrorPointer(error));
}

Bus::~Bus() {
  g_cancellable_cancel(cancellable_.get());
}

void Bus::connected(GObjectPointer<GDBusConnection> connection, GErrorPointer error) {
  connection_ = std::move(connection);
  isSettled_ = true;
  if (error) failure_ = errorFrom(error.get()).message();
  if (connection_) {
    g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
  } else {
    logWarning("there is no " + std::string(kind_) + " bus: " + failure_);
  }
  for (auto& use : std::exchange(waiting_, {})) use(connection_.get());
}

void Bus::whenConnected(UniqueFunction<void(GDBusConnection*)> use) {
  if (isSettled_) return use(connection_.get());
  waiting_.push_back(std::move(use));
}

void Bus::call(const BusMethod& method, GVariant* parameters, const char* replyType,
               ReplyCallback callback, std::chrono::milliseconds limit) {
  GVariantPointer owned(parameters != nullptr ? g_variant_ref_sink(parameters) : nullptr);
  whenConnected([this, method, owned = std::move(owned), replyType, limit,
                 callback = std::move(callback)](GDBusConnection* connection) mutable {
    if (connection == nullptr) return callback(PlatformError(failure_));
    g_dbus_connection_call(connection, method.service, method.path, method.interface, method.method,
                           owned.get(), G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
                           static_cast<int>(limit.count()), cancellable_.get(), finishCall,
                           new ReplyCallback(std::move(callback)));
  });
}

void Bus::callWithDescriptor(const BusMethod& method, GVariant* parameters,
                             const FileDescriptor& descriptor, const char* replyType,
                             ReplyCallback callback) {
  if (!descriptor) return call(method, parameters, replyType, std::move(callback));
  GVariantPointer owned(g_variant_ref_sink(parameters));
  GObjectPointer<GUnixFDList> list(g_unix_fd_list_new());
  if (g_unix_fd_list_append(list.get(), descriptor.get(), nullptr) < 0) {
    return callback(PlatformError("the file descriptor cannot be sent"));
  }
  whenConnected([this, method, owned = std::move(owned), list = std::move(list), replyType,
                 callback = std::move(callback)](GDBusConnection* connection) mutable {
    if (connection == nullptr) return callback(PlatformError(failure_));
    g_dbus_connection_call_with_unix_fd_list(
        connection, method.service, method.path, method.interface, method.method, owned.get(),
        G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, static_cast<int>(kBusTimeLimit.count()),
        list.get(), cancellable_.get(), finishCallWithDescriptor,
        new ReplyCallback(std::move(callback)));
  });
}

void Bus::callForDescriptor(const BusMethod& method, GVariant* parameters,
                            DescriptorCallback callback) {
  GVariantPointer owned(g_variant_ref_sink(parameters));
  whenConnected([this, method, owned = std::move(owned),
                 callback = std::move(callback)](GDBusConnection* connection) mutable {
    if (connection == nullptr) return callback(PlatformError(failure_));
    g_dbus_connection_call_with_unix_fd_list(
        connection, method.service, method.path, method.interface, method.method, owned.get(),
        G_VARIANT_TYPE("(h)"), G_DBUS_CALL_FLAGS_NONE, static_cast<int>(kBusTimeLimit.count()),
        nullptr, cancellable_.get(), finishDescriptorCall,
        new DescriptorCallback(std::move(callback)));
  });
}

BusSubscription Bus::subscribe(const BusSignal& signal, SignalHandler handler) {
  const auto end = std::make_shared<UniqueFunction<void()>>();
  if (signal.type != nullptr) {
    handler = [type = signal.type, inner = std::move(handler)](GVariant* parameters) {
      if (g_variant_is_of_type(parameters, G_VARIANT_TYPE(type)) != FALSE) inner(parameters);
    };
  }
  whenConnected([signal, handler = std::move(handler),
                 weak = std::weak_ptr(end)](GDBusConnection* connection) mutable {
    const auto target = weak.lock();
    if (connection == nullptr || !target) return;
    const guint id = g_dbus_connection_signal_subscribe(
        connection, signal.service, signal.interface, signal.signal, signal.path, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char*,
           GVariant* parameters,
           gpointer data) { (*static_cast<SignalHandler*>(data))(parameters); },
        new SignalHandler(std::move(handler)), deleteBoxed<SignalHandler>);
    *target = [kept = retained(connection), id] {
      g_dbus_connection_signal_unsubscribe(kept.get(), id);
    };
  });
  return subscriptionOf(end);
}

BusSubscription Bus::watchName(const std::string& name,
                               std::function<void(const std::string&)> handler) {
  using Handler = std::function<void(const std::string&)>;
  const auto end = std::make_shared<UniqueFunction<void()>>();
  whenConnected([name, handler = std::move(handler),
                 weak = std::weak_ptr(end)](GDBusConnection* connection) mutable {
    const auto target = weak.lock();
    if (!target) return;
    if (connection == nullptr) return handler({});
    const guint id = g_bus_watch_name_on_connection(
        connection, name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char* owner, gpointer data) {
          (*static_cast<Handler*>(data))(owner);
        },
        [](GDBusConnection*, const char*, gpointer data) { (*static_cast<Handler*>(data))({}); },
        new Handler(std::move(handler)), deleteBoxed<Handler>);
    *target = [id] { g_bus_unwatch_name(id); };
  });
  return subscriptionOf(end);
}

}  // namespace brevanholt::platform
