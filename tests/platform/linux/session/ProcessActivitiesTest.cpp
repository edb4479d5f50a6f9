#include "platform/linux/session/LinuxProcessActivities.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

struct FakeInhibitor final : SleepInhibitor {
  std::shared_ptr<void> inhibit(const std::string& /*reason*/) override {
    auto inhibition = std::make_shared<int>();
    held = inhibition;
    return inhibition;
  }
  std::weak_ptr<void> held;
};

TEST(ProcessActivitiesTest, TellsOfTheFirstKeepsTheSystemAwakeAndWaitsForQuiet) {
  FakeInhibitor inhibitor;
  int begun = 0;
  int uses = 0;
  LinuxProcessActivities activities(inhibitor, [&begun] { ++begun; });
  auto transfer = activities.begin(ActivityOptions::kUserInitiated, "a transfer");
  auto discovery =
      activities.begin(ActivityOptions::kUserInitiatedAllowingIdleSystemSleep, "discovery");
  activities.whenQuiet([&uses] { ++uses; });
  EXPECT_EQ(std::pair(inhibitor.held.expired(), uses), std::pair(false, 0));
  transfer.reset();
  EXPECT_EQ(std::pair(inhibitor.held.expired(), uses), std::pair(true, 1));
  EXPECT_EQ(begun, 1);
}

}  // namespace
}  // namespace brevanholt::platform
