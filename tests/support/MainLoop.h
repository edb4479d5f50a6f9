#pragma once

#include <glib.h>

#include <chrono>
#include <functional>

namespace brevanholt::platform {

// Runs the default main context until `done` holds; false when that takes over ten seconds.
inline bool spinUntil(const std::function<bool()>& done,
                      std::chrono::milliseconds limit = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    if (g_main_context_iteration(nullptr, FALSE) == FALSE) g_usleep(500);
  }
  return true;
}

// Runs what is ready now.
inline void spinOnce() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

}  // namespace brevanholt::platform
