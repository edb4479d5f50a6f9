#include "platform/foundation/WorkerPool.h"

#include <pthread.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kThreadNameLength = 15;

}  // namespace

WorkerPool::WorkerPool(std::string label, std::size_t mostThreads)
    : label_(std::move(label)), mostThreads_(mostThreads) {}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WorkerPool::async(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  if (tasks_.size() > idle_ && threads_.size() < mostThreads_) {
    threads_.emplace_back([this] { run(); });
    ::pthread_setname_np(threads_.back().native_handle(),
                         label_.substr(0, kThreadNameLength).c_str());
  }
  changed_.notify_one();
}

void WorkerPool::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    changed_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
    --idle_;
    if (tasks_.empty()) return;
    {
      Task task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
    }
    lock.lock();
  }
}

}  // namespace brevanholt::platform
