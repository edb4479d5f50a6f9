#pragma once

#include "platform/foundation/UniqueFunction.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace brevanholt::platform {

using Task = UniqueFunction<void()>;

enum class QueuePriority { kDefault, kUtility };

// A serial queue: one thread that runs tasks one after another. Destroying it runs what is queued
// and joins the thread. Tasks capture values, never an owner; they return through the main queue.
class DispatchQueue {
 public:
  // The thread carries the label, shortened to what the system shows.
  explicit DispatchQueue(std::string label, QueuePriority priority = QueuePriority::kDefault);
  ~DispatchQueue();
  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;

  void async(Task task);
  // Returns when the task was run; never from the queue's own thread.
  void sync(const std::function<void()>& task);

 private:
  void run(QueuePriority priority);

  std::string label_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace brevanholt::platform
