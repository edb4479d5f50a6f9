#pragma once

#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace brevanholt::platform {

// Keeps one slot connected; destroying it disconnects.
class Connection {
 public:
  Connection() = default;
  explicit Connection(std::shared_ptr<void> slot) : slot_(std::move(slot)) {}

 private:
  std::shared_ptr<void> slot_;
};

// Calls the connected slots when something happened. For one thread. A slot may connect and
// disconnect others, or itself, while it runs.
class Signal {
 public:
  using Slot = std::function<void()>;

  [[nodiscard]] Connection connect(Slot slot) {
    slots_.remove_if([](const std::weak_ptr<Slot>& known) { return known.expired(); });
    auto kept = std::make_shared<Slot>(std::move(slot));
    slots_.push_back(kept);
    return Connection(std::move(kept));
  }

  void emit() const {
    const std::list<std::weak_ptr<Slot>> present = slots_;
    for (const auto& known : present) {
      if (const auto slot = known.lock()) (*slot)();
    }
  }

 private:
  std::list<std::weak_ptr<Slot>> slots_;
};

}  // namespace brevanholt::platform
