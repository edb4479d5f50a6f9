#pragma once

#include "platform/foundation/DispatchQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace brevanholt::platform {

// A few threads that run tasks in no order, for work that waits for the disk. Threads start when
// there is work for them. Destroying it runs what is queued and joins them. Tasks capture values,
// never an owner; they return through the main queue.
class WorkerPool {
 public:
  // The threads carry the label, shortened to what the system shows.
  WorkerPool(std::string label, std::size_t mostThreads);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  void async(Task task);

 private:
  void run();

  std::string label_;
  std::size_t mostThreads_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  std::size_t idle_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace brevanholt::platform
