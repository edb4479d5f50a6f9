#include "platform/linux/bus/Bus.h"

#include "platform/foundation/Log.h"

#include <gio/gunixfdlist.h>

#include <algorithm>
#include <utility>

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

constexpr std::chrono::milliseconds kFirstPause{1000};
constexpr std::chrono::milliseconds kLongestPause{60'000};
constexpr auto kConnectionFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

void callFinish(GObject*, GAsyncResult* asyncResult, gpointer data) {
  using Finish = UniqueFunction<void(GAsyncResult*)>;
  const std::unique_ptr<Finish> finish(static_cast<Finish*>(data));
  (*finish)(asyncResult);
}

// What was done with a connection, and is undone when it is done with the next one.
class Undo {
 public:
  ~Undo() { set(nullptr); }
  Undo() = default;
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;
  void set(UniqueFunction<void()> undo) {
    if (auto before = std::exchange(undo_, std::move(undo))) before();
  }

 private:
  UniqueFunction<void()> undo_;
};

// `begin` does it, and returns how to undo it.
template <class Begin>
BusSubscription onEachConnection(Bus& bus, Begin begin) {
  const auto undo = std::make_shared<Undo>();
  auto uses = bus.whenEverConnected([undo, begin](GDBusConnection* connection) {
    undo->set(nullptr);
    undo->set(begin(connection));
  });
  return BusSubscription(
      [undo, uses = std::make_shared<BusSubscription>(std::move(uses))]() mutable {
        uses.reset();
        undo->set(nullptr);
      });
}

template <class T>
void deleteBoxed(gpointer data) {
  delete static_cast<T*>(data);
}

}  // namespace

Bus::Bus(GBusType type)
    : type_(type),
      kind_(type == G_BUS_TYPE_SYSTEM ? "system" : "session"),
      cancellable_(g_cancellable_new()) {
  g_bus_get(type, cancellable_.get(), callFinish,
            new Finish(lifetime_.bind([this](GAsyncResult* asyncResult) {
              GError* error = nullptr;
              GObjectPointer<GDBusConnection> connection(g_bus_get_finish(asyncResult, &error));
              connected(std::move(connection), GErrorPointer(error));
            })));
}

Bus::Bus(const std::string& address)
    : type_(G_BUS_TYPE_NONE),
      kind_("private"),
      address_(address),
      cancellable_(g_cancellable_new()) {
  GError* error = nullptr;
  GObjectPointer<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
      address.c_str(), kConnectionFlags, nullptr, nullptr, &error));
  connected(std::move(connection), GErrorPointer(error));
}

Bus::~Bus() {
  if (connection_) g_signal_handlers_disconnect_by_data(connection_.get(), this);
  g_cancellable_cancel(cancellable_.get());
}

void Bus::connected(GObjectPointer<GDBusConnection> connection, GErrorPointer error) {
  connection_ = std::move(connection);
  isSettled_ = true;
  if (error) failure_ = errorFrom(error.get()).message();
  if (connection_) {
    g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
    g_signal_connect(connection_.get(), "closed",
                     G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer self) {
                       static_cast<Bus*>(self)->closed();
                     }),
                     this);
    if (wasOpen_) logInfo(std::string("the ") + kind_ + " bus is there again");
    wasOpen_ = true;
    opened_ = std::chrono::steady_clock::now();
  } else if (wasOpen_) {
    onReopen_ = LoopSource::after(pause_, [this] { reopen(); });
  } else {
    logWarning("there is no " + std::string(kind_) + " bus: " + failure_);
  }
  for (auto& use : std::exchange(waiting_, {})) use(connection_.get());
  for (const auto& [number, use] : std::map(uses_)) {
    if (uses_.contains(number)) use(connection_.get());
  }
}

void Bus::closed() {
  logWarning(std::string("the ") + kind_ + " bus has closed the connection");
  g_signal_handlers_disconnect_by_data(connection_.get(), this);
  connection_.reset();
  failure_ = "The connection to the bus was closed.";
  const bool lasted = std::chrono::steady_clock::now() - opened_ > kLongestPause;
  if (lasted || pause_.count() == 0) {
    pause_ = {};
    isSettled_ = false;  // calls wait for it
    return reopen();
  }
  onReopen_ = LoopSource::after(pause_, [this] { reopen(); });
}

void Bus::reopen() {
  pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
  if (address_.empty()) {  // GLib's shared connection is the one that was closed
    const GCharPointer address(g_dbus_address_get_for_bus_sync(type_, nullptr, nullptr));
    if (address) address_ = address.get();
  }
  g_dbus_connection_new_for_address(
      address_.c_str(), kConnectionFlags, nullptr, cancellable_.get(), callFinish,
      new Finish(lifetime_.bind([this](GAsyncResult* asyncResult) {
        GError* error = nullptr;
        GObjectPointer<GDBusConnection> connection(
            g_dbus_connection_new_for_address_finish(asyncResult, &error));
        connected(std::move(connection), GErrorPointer(error));
      })));
}

void Bus::whenConnected(UniqueFunction<void(GDBusConnection*)> use) {
  if (isSettled_) return use(connection_.get());
  waiting_.push_back(std::move(use));
}

BusSubscription Bus::whenEverConnected(std::function<void(GDBusConnection*)> use) {
  const int number = ++lastUse_;
  const auto& kept = uses_[number] = std::move(use);
  if (isSettled_) kept(connection_.get());
  return BusSubscription(lifetime_.bind([this, number] { uses_.erase(number); }));
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
  if (signal.type != nullptr) {
    handler = [type = signal.type, inner = std::move(handler)](GVariant* parameters) {
      if (g_variant_is_of_type(parameters, G_VARIANT_TYPE(type)) != FALSE) inner(parameters);
    };
  }
  return onEachConnection(
      *this, [signal, handler](GDBusConnection* connection) -> UniqueFunction<void()> {
        if (connection == nullptr) return nullptr;
        const guint id = g_dbus_connection_signal_subscribe(
            connection, signal.service, signal.interface, signal.signal, signal.path, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE,
            [](GDBusConnection*, const char*, const char*, const char*, const char*,
               GVariant* parameters,
               gpointer data) { (*static_cast<SignalHandler*>(data))(parameters); },
            new SignalHandler(handler), deleteBoxed<SignalHandler>);
        return [kept = retained(connection), id] {
          g_dbus_connection_signal_unsubscribe(kept.get(), id);
        };
      });
}

BusSubscription Bus::watchName(const std::string& name,
                               const std::function<void(const std::string&)>& handler) {
  using Handler = std::function<void(const std::string&)>;
  return onEachConnection(*this,
                          [name, handler](GDBusConnection* connection) -> UniqueFunction<void()> {
                            if (connection == nullptr) return handler({}), nullptr;
                            const guint id = g_bus_watch_name_on_connection(
                                connection, name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                [](GDBusConnection*, const char*, const char* owner,
                                   gpointer data) { (*static_cast<Handler*>(data))(owner); },
                                [](GDBusConnection*, const char*, gpointer data) {
                                  (*static_cast<Handler*>(data))({});
                                },
                                new Handler(handler), deleteBoxed<Handler>);
                            return [id] { g_bus_unwatch_name(id); };
                          });
}

}  // namespace brevanholt::platform
