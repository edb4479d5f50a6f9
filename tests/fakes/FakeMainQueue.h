#pragma once

#include "platform/foundation/MainQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace brevanholt::platform {

// A main queue that runs when the test says so.
class FakeMainQueue final : public MainQueue {
 public:
  void post(Task task) override {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    changed_.notify_one();
  }

  // Runs what is posted until `done` holds; false when that takes over ten seconds.
  bool runUntil(const std::function<bool()>& done) {
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!done()) {
      if (!runOne(deadline)) return false;
    }
    return true;
  }

  // Runs what is posted now, and what that posts.
  void drain() {
    while (runOne(Clock::now())) {
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  bool runOne(Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, deadline, [this] { return !tasks_.empty(); })) return false;
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    return true;
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
};

}  // namespace brevanholt::platform
