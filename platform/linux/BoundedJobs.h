#pragma once

#include <functional>
#include <list>
#include <utility>

namespace brevanholt::platform {

// Jobs of which only so many are under way at once; the others wait in order.
template <class Job>
class BoundedJobs {
 public:
  // Stays valid until remove().
  using Position = typename std::list<Job>::iterator;

  BoundedJobs(std::size_t most, std::function<void(Position)> start)
      : most_(most), start_(std::move(start)) {}

  void add(Job job) {
    waiting_.push_back(std::move(job));
    startWaiting();
  }

  // The job is over, which makes room; startWaiting() is for the caller, unless `start` calls this.
  Job remove(Position position) {
    Job job = std::move(*position);
    running_.erase(position);
    return job;
  }

  void startWaiting() {
    while (!waiting_.empty() && running_.size() < most_) {
      running_.splice(running_.end(), waiting_, waiting_.begin());
      start_(std::prev(running_.end()));
    }
  }

 private:
  std::size_t most_;
  std::function<void(Position)> start_;
  std::list<Job> waiting_;
  std::list<Job> running_;
};

}  // namespace brevanholt::platform
