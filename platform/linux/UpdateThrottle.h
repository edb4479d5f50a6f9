#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace brevanholt::platform {

// How often something may be sent. Asking costs nothing; time is the caller's.
class UpdateThrottle {
 public:
  using Clock = std::chrono::steady_clock;

  explicit UpdateThrottle(Clock::duration interval) : interval_(interval) {}

  // How long to wait before sending at `now`.
  [[nodiscard]] Clock::duration delay(Clock::time_point now) const {
    if (!last_) return Clock::duration::zero();
    return std::max(Clock::duration::zero(), *last_ + interval_ - now);
  }
  void sentAt(Clock::time_point now) { last_ = now; }

 private:
  Clock::duration interval_;
  std::optional<Clock::time_point> last_;
};

}  // namespace brevanholt::platform
