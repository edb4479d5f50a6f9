#pragma once

#include "platform/gtk/LoopSource.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace brevanholt::platform {

// Coalesces requests: runs an action once for all requests since the last run, and at most once in
// an interval.
class UpdateThrottle {
 public:
  UpdateThrottle(std::chrono::milliseconds interval, std::function<void()> update)
      : interval_(interval), update_(std::move(update)) {}

  void schedule() {
    if (timer_) return;
    const auto wait = std::max(Clock::duration::zero(), next_ - Clock::now());
    timer_ = LoopSource::after(std::chrono::ceil<std::chrono::milliseconds>(wait), [this] {
      timer_.stop();
      next_ = Clock::now() + interval_;
      update_();
    });
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::chrono::milliseconds interval_;
  std::function<void()> update_;
  Clock::time_point next_;  // when the next one may be
  LoopSource timer_;
};

}  // namespace brevanholt::platform
