#pragma once

#include "platform/foundation/ProcessActivity.h"

#include <map>
#include <string>

namespace brevanholt::platform {

// Counts the activities that are held, by reason, and remembers their options.
class FakeProcessActivities final : public ProcessActivities {
 public:
  std::unique_ptr<ProcessActivity> begin(ActivityOptions newOptions,
                                         const std::string& reason) override {
    options[reason] = newOptions;
    ++begun[reason];
    return std::make_unique<Activity>(held[reason]);
  }

  std::map<std::string, ActivityOptions> options;
  std::map<std::string, int> begun;
  std::map<std::string, int> held;

 private:
  struct Activity final : ProcessActivity {
    explicit Activity(int& count) : count_(count) { ++count_; }
    ~Activity() override { --count_; }
    int& count_;
  };
};

}  // namespace brevanholt::platform
