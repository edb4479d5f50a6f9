#pragma once

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>

#include <fcntl.h>

namespace brevanholt {

// Exchanges two names again and again in a thread, while it exists.
class Swapping {
 public:
  Swapping(std::filesystem::path one, std::filesystem::path other)
      : thread_([this, one = std::move(one), other = std::move(other)] {
          while (!stops_) {
            ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
          }
        }) {}
  ~Swapping() {
    stops_ = true;
    thread_.join();
  }
  Swapping(const Swapping&) = delete;
  Swapping& operator=(const Swapping&) = delete;

 private:
  std::atomic<bool> stops_ = false;
  std::thread thread_;
};

}  // namespace brevanholt
