#include "platform/linux/notifications/FreedesktopNotificationCenter.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr BusMethod kGetServerInformation{kService, kPath, kService, "GetServerInformation"};
constexpr BusMethod kGetCapabilities{kService, kPath, kService, "GetCapabilities"};
constexpr BusMethod kGetNameOwner{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "GetNameOwner"};

std::set<std::string> capabilitiesIn(GVariant* reply) {
  std::set<std::string> capabilities;
  const GVariantPointer list(g_variant_get_child_value(reply, 0));
  for (gsize index = 0; index < g_variant_n_children(list.get()); ++index) {
    const char* name = nullptr;
    g_variant_get_child(list.get(), index, "&s", &name);
    capabilities.insert(name);
  }
  return capabilities;
}

}  // namespace

FreedesktopNotificationCenter::FreedesktopNotificationCenter(
    Bus& sessionBus, UserDefaults& store, NotificationSender sender,
    std::function<void(const std::string&)> activationTokenGiven, NotificationLimits limits)
    : sessionBus_(sessionBus),
      posted_(store),
      sender_(std::move(sender)),
      limits_(limits),
      activationTokenGiven_(std::move(activationTokenGiven)),
      switches_(sessionBus, kNotificationSenderName, sender_.desktopEntry) {
  subscribe();
  sessionBus.whenConnected(lifetime_.bind([this](GDBusConnection* connection) {
    if (connection == nullptr) return;
    busId_ = g_dbus_connection_get_guid(connection);
    findServer([](const Result<std::string>&) {});  // what an earlier run posted can be opened
  }));
}

void FreedesktopNotificationCenter::subscribe() {
  const auto on = [this](const char* signal, const char* type, Bus::SignalHandler handler) {
    subscriptions_.push_back(
        sessionBus_.subscribe({kService, kPath, kService, signal, type}, std::move(handler)));
  };
  on("ActivationToken", "(us)", [this](GVariant* parameters) {
    std::uint32_t number = 0;
    const char* token = nullptr;
    g_variant_get(parameters, "(u&s)", &number, &token);
    if (posted_.contains(number)) activationTokenGiven_(token);
  });
  on("ActionInvoked", "(us)", [this](GVariant* parameters) {
    std::uint32_t number = 0;
    const char* action = nullptr;
    g_variant_get(parameters, "(u&s)", &number, &action);
    if (posted_.contains(number) && action == std::string_view(kDefaultAction)) opened_();
  });
  on("NotificationClosed", "(uu)", [this](GVariant* parameters) {
    std::uint32_t number = 0;
    g_variant_get(parameters, "(uu)", &number, nullptr);
    posted_.forget(number);
  });
}

void FreedesktopNotificationCenter::requestAuthorization(
    UniqueFunction<void(Result<bool>)> callback) {
  sessionBus_.call(
      kGetServerInformation, nullptr, "(ssss)",
      lifetime_.bind([this, callback = std::move(callback)](Result<GVariantPointer> reply) mutable {
        if (!reply.ok()) {
          return callback(
              PlatformError("Could not ask for notifications: " + reply.error().message()));
        }
        const char* name = nullptr;
        g_variant_get_child(reply.value().get(), 0, "&s", &name);
        switches_.areOff(
            name, [callback = std::move(callback)](bool areOff) mutable { callback(!areOff); });
      }));
}

void FreedesktopNotificationCenter::add(const Notification& notification,
                                        UniqueFunction<void(Result<Done>)> callback) {
  enqueue(notification.identifier, {.notification = notification, .callback = std::move(callback)});
}

void FreedesktopNotificationCenter::remove(const std::string& identifier) {
  enqueue(identifier, {.notification = std::nullopt, .callback = [](const Result<Done>&) {}});
}

void FreedesktopNotificationCenter::enqueue(const std::string& identifier, Request request) {
  auto& requests = requests_[identifier];
  requests.push_back(std::move(request));
  if (requests.size() == 1) runFirst(identifier);
}

void FreedesktopNotificationCenter::runFirst(const std::string& identifier) {
  if (requests_.at(identifier).front().notification) return show(identifier);
  withdraw(identifier);
}

void FreedesktopNotificationCenter::show(const std::string& identifier) {
  // The first call starts the service where the bus can; by the second it has its connection.
  sessionBus_.call(kGetCapabilities, nullptr, "(as)",
                   lifetime_.bind([this, identifier](Result<GVariantPointer> reply) {
                     if (!reply.ok()) return finished(identifier, reply.error());
                     findServer(lifetime_.bind(
                         [this, identifier, capabilities = capabilitiesIn(reply.value().get())](
                             Result<std::string> server) {
                           if (!server.ok()) return finished(identifier, server.error());
                           send(identifier, server.value(), capabilities);
                         }));
                   }),
                   limits_.answer);
}

void FreedesktopNotificationCenter::send(const std::string& identifier, const std::string& server,
                                         const std::set<std::string>& capabilities) {
  const Notification& notification = *requests_.at(identifier).front().notification;
  const auto posting = std::make_shared<Posting>();
  posting->server = server;
  posting->onTimeLimit = LoopSource::after(
      limits_.answer, lifetime_.bind([this, identifier, late = std::weak_ptr(posting)] {
        if (const auto current = late.lock()) current->isLate = true;
        finished(identifier, PlatformError("it took too long"));
      }));
  postings_.emplace(identifier, posting);
  sessionBus_.call(
      {server.c_str(), kPath, kService, "Notify"},
      notifyParameters(notification, posted_.find(identifier), capabilities, sender_), "(u)",
      lifetime_.bind([this, identifier, posting](const Result<GVariantPointer>& reply) {
        posted(identifier, posting, reply);
      }),
      limits_.lateAnswer);
}

void FreedesktopNotificationCenter::posted(const std::string& identifier,
                                           const std::shared_ptr<Posting>& posting,
                                           const Result<GVariantPointer>& reply) {
  posting->onTimeLimit.stop();
  std::erase_if(postings_, [&posting](const auto& entry) { return entry.second == posting; });
  if (!reply.ok()) return posting->isLate ? void() : finished(identifier, reply.error());
  std::uint32_t number = 0;
  g_variant_get(reply.value().get(), "(u)", &number);
  if (posting->isSuperseded && number != posted_.find(identifier)) {
    return close(posting->server, number, [](const Result<GVariantPointer>&) {});
  }
  posted_.keep(identifier, number);
  if (posting->isLate) return;
  supersedeLate(identifier);
  finished(identifier, Done{});
}

void FreedesktopNotificationCenter::supersedeLate(const std::string& identifier) {
  const auto [first, last] = postings_.equal_range(identifier);
  for (auto entry = first; entry != last; ++entry) entry->second->isSuperseded = true;
}

void FreedesktopNotificationCenter::withdraw(const std::string& identifier) {
  supersedeLate(identifier);
  findServer(lifetime_.bind([this, identifier](Result<std::string> server) {
    const std::uint32_t number = server.ok() ? posted_.find(identifier) : 0;
    if (number == 0) return finished(identifier, Done{});
    close(server.value(), number,
          lifetime_.bind([this, identifier, number](const Result<GVariantPointer>&) {
            posted_.forget(number);  // a server that knows no such number says so
            finished(identifier, Done{});
          }));
  }));
}

void FreedesktopNotificationCenter::close(
    const std::string& server, std::uint32_t number,
    UniqueFunction<void(const Result<GVariantPointer>&)> callback) {
  sessionBus_.call({server.c_str(), kPath, kService, "CloseNotification"},
                   g_variant_new("(u)", number), "()", std::move(callback), limits_.answer);
}

void FreedesktopNotificationCenter::finished(const std::string& identifier,
                                             const Result<Done>& outcome) {
  std::deque<Request>& waiting = requests_.at(identifier);
  Request answered = std::move(waiting.front());
  waiting.pop_front();
  if (waiting.empty()) {
    requests_.erase(identifier);
  } else {
    runFirst(identifier);
  }
  if (outcome.ok()) return answered.callback(Done{});
  logFailure(outcome.error());
  answered.callback(PlatformError("Could not show the notification: " + outcome.error().message()));
}

// Once for each cause: a service that is missing is asked for again and again.
void FreedesktopNotificationCenter::logFailure(const PlatformError& error) {
  if (std::exchange(lastWarning_, error.message()) == error.message()) return;
  logWarning("a notification could not be shown: " + error.message());
}

void FreedesktopNotificationCenter::findServer(UniqueFunction<void(Result<std::string>)> callback) {
  sessionBus_.call(
      kGetNameOwner, g_variant_new("(s)", kService), "(s)",
      lifetime_.bind([this, callback = std::move(callback)](Result<GVariantPointer> reply) mutable {
        if (!reply.ok()) return callback(reply.error());
        const char* owner = nullptr;
        g_variant_get(reply.value().get(), "(&s)", &owner);
        posted_.useServer(busId_ + owner);
        callback(std::string(owner));
      }));
}

}  // namespace brevanholt::platform
