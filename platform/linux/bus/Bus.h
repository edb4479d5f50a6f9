#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"
#include "platform/gtk/GLibPointers.h"
#include "platform/gtk/LoopSource.h"

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace brevanholt::platform {

inline constexpr std::chrono::milliseconds kBusTimeLimit{5000};

// One method of one service on a bus.
struct BusMethod {
  const char* service;
  const char* path;
  const char* interface;
  const char* method;
};

// One signal; a null service or path stands for any. Signals whose parameters are not of `type` are
// dropped, where it is set.
struct BusSignal {
  const char* service;
  const char* path;
  const char* interface;
  const char* signal;
  const char* type = nullptr;
};

// Ends with its destruction: a signal subscription, a watched name.
class BusSubscription {
 public:
  BusSubscription() = default;
  explicit BusSubscription(UniqueFunction<void()> end) : end_(std::move(end)) {}
  BusSubscription(BusSubscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
  BusSubscription& operator=(BusSubscription&& other) noexcept {
    std::swap(end_, other.end_);
    return *this;
  }
  ~BusSubscription() {
    if (end_) end_();
  }

 private:
  UniqueFunction<void()> end_;
};

// A message bus that may not be there. It is reached in the background; calls made before that wait
// for it, and every call ends in a reply or an error within its time limit. A connection that the
// bus closes is opened again, with a growing pause where that happens again soon, and what was
// subscribed, watched and registered is so there, too. For the main thread.
class Bus {
 public:
  using ReplyCallback = UniqueFunction<void(Result<GVariantPointer>)>;
  using DescriptorCallback = UniqueFunction<void(Result<FileDescriptor>)>;
  using SignalHandler = std::function<void(GVariant* parameters)>;

  explicit Bus(GBusType type);
  // A bus at a given address, for tests.
  explicit Bus(const std::string& address);
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  // Runs `use` with the connection as soon as there is one, with null when there will be none.
  void whenConnected(UniqueFunction<void(GDBusConnection*)> use);

  // The same, and again with each later connection, until the result is destroyed.
  [[nodiscard]] BusSubscription whenEverConnected(std::function<void(GDBusConnection*)> use);

  // `parameters` may be floating; `replyType` is the tuple that the reply must have. The text of an
  // error is the service's own.
  void call(const BusMethod& method, GVariant* parameters, const char* replyType,
            ReplyCallback callback, std::chrono::milliseconds limit = kBusTimeLimit);
  // The same for a method that takes one file descriptor, as index 0; with an empty one it is
  // call().
  void callWithDescriptor(const BusMethod& method, GVariant* parameters,
                          const FileDescriptor& descriptor, const char* replyType,
                          ReplyCallback callback);
  // The same for a method that answers with one file descriptor, "(h)". One that comes too late is
  // closed.
  void callForDescriptor(const BusMethod& method, GVariant* parameters,
                         DescriptorCallback callback);

  [[nodiscard]] BusSubscription subscribe(const BusSignal& signal, SignalHandler handler);
  // Tells, from now on, whether `name` has an owner (its unique name; empty for none).
  [[nodiscard]] BusSubscription watchName(
      const std::string& name, const std::function<void(const std::string& owner)>& handler);

 private:
  using Finish = UniqueFunction<void(GAsyncResult*)>;
  void connected(GObjectPointer<GDBusConnection> connection, GErrorPointer error);
  void closed();
  void reopen();

  GBusType type_;
  const char* kind_;
  std::string address_;
  GObjectPointer<GCancellable> cancellable_;
  GObjectPointer<GDBusConnection> connection_;
  bool isSettled_ = false;
  std::string failure_;
  std::vector<UniqueFunction<void(GDBusConnection*)>> waiting_;
  std::map<int, std::function<void(GDBusConnection*)>> uses_;
  int lastUse_ = 0;
  bool wasOpen_ = false;
  std::chrono::milliseconds pause_{0};  // before it is opened again
  std::chrono::steady_clock::time_point opened_;
  LoopSource onReopen_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
