#include "platform/foundation/DispatchQueue.h"

#include <future>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kThreadNameLength = 15;
constexpr int kUtilityNiceness = 10;

}  // namespace

DispatchQueue::DispatchQueue(std::string label, QueuePriority priority)
    : label_(std::move(label)), thread_([this, priority] { run(priority); }) {
  const std::size_t excess =
      label_.size() > kThreadNameLength ? label_.size() - kThreadNameLength : 0;
  ::pthread_setname_np(thread_.native_handle(), label_.c_str() + excess);
}

DispatchQueue::~DispatchQueue() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void DispatchQueue::async(Task task) {
  {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
}

void DispatchQueue::sync(const std::function<void()>& task) {
  std::promise<void> finished;
  async([&task, &finished] {
    try {
      task();
      finished.set_value();
    } catch (...) {
      finished.set_exception(std::current_exception());
    }
  });
  finished.get_future().get();
}

void DispatchQueue::run(QueuePriority priority) {
  if (priority == QueuePriority::kUtility) {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kUtilityNiceness);
  }
  for (;;) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
    if (tasks_.empty()) return;
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
  }
}

}  // namespace brevanholt::platform
