#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <utility>

namespace brevanholt::platform {

// Jobs of which only so many are under way at once; the others wait in order. One that takes long
// may stand aside: it goes on, and another one starts in its place.
template <class Job>
class BoundedJobs {
 public:
  // Stays valid until remove().
  using Position = typename std::list<Job>::iterator;

  struct Most {
    std::size_t running = 1;
    std::size_t aside = 0;  // beyond those
  };

  BoundedJobs(Most most, std::function<void(Position)> start)
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

  // Makes room for another job, once so many may be aside.
  void standAside(Position position) {
    position->isSlow = true;
    startWaiting();
  }

  void startWaiting() {
    while (!waiting_.empty() && running_.size() < most_.running + aside()) {
      running_.splice(running_.end(), waiting_, waiting_.begin());
      start_(std::prev(running_.end()));
    }
  }

 private:
  [[nodiscard]] std::size_t aside() const {
    std::size_t slow = 0;
    for (const Job& job : running_) slow += job.isSlow ? 1U : 0U;
    return slow < most_.aside ? slow : most_.aside;
  }

  Most most_;
  std::function<void(Position)> start_;
  std::list<Job> waiting_;
  std::list<Job> running_;
};

}  // namespace brevanholt::platform
