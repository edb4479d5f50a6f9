#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <list>
#include <utility>

namespace brevanholt::platform {

// Jobs of which only so many are under way at once; the others wait in order. One that takes long
// may stand aside: it goes on, and another one starts in its place. Where all that are under way
// have stood aside and others wait, the latest is interrupted, and begins anew once none waits that
// has not been begun.
template <class Job>
class BoundedJobs {
 public:
  // Stays valid until remove().
  using Position = typename std::list<Job>::iterator;

  struct Most {
    std::size_t running = 1;
    std::size_t aside = 0;  // beyond those
  };

  // Without `interrupt`, no job is interrupted.
  BoundedJobs(Most most, std::function<void(Position)> start,
              std::function<void(Position)> interrupt = nullptr)
      : most_(most), start_(std::move(start)), interrupt_(std::move(interrupt)) {}

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
    while (!waiting_.empty() && (hasRoom() || makeRoom())) startFirstOf(waiting_);
    while (!interrupted_.empty() && hasRoom()) startFirstOf(interrupted_);
  }

 private:
  [[nodiscard]] std::size_t slow() const {
    std::size_t slow = 0;
    for (const Job& job : running_) slow += job.isSlow ? 1U : 0U;
    return slow;
  }
  [[nodiscard]] bool hasRoom() const {
    return running_.size() < most_.running + std::min(slow(), most_.aside);
  }
  bool makeRoom() {
    if (!interrupt_ || slow() < running_.size()) return false;
    const Position latest = std::prev(running_.end());
    latest->isSlow = false;
    interrupted_.splice(interrupted_.end(), running_, latest);
    interrupt_(latest);
    return true;
  }
  void startFirstOf(std::list<Job>& jobs) {
    running_.splice(running_.end(), jobs, jobs.begin());
    start_(std::prev(running_.end()));
  }

  Most most_;
  std::function<void(Position)> start_;
  std::function<void(Position)> interrupt_;
  std::list<Job> waiting_;
  std::list<Job> interrupted_;
  std::list<Job> running_;
};

}  // namespace brevanholt::platform
