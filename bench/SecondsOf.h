#pragma once

#include <chrono>
#include <functional>

namespace brevanholt {

inline double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace brevanholt
