#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"

#include <gtest/gtest.h>

namespace brevanholt {
namespace {

using namespace platform;

constexpr const char* kAvailability = "Brevanholt background discovery and receiving";
constexpr const char* kTransfer = "Brevanholt file transfer";

class DesktopServicesTest : public testing::Test {
 protected:
  void SetUp() override { open(true); }
  void open(bool withDelegate) {
    delegate_ = std::make_unique<AppDelegate>(platform_.services());
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(),
                                                  withDelegate ? delegate_.get() : nullptr);
    delegate_->setMainWindow(window_);
    window_->awakeFromNib();
    delegate_->applicationDidFinishLaunching();
    platform_.mainQueue.drain();
    platform_.engine.messenger.events.clear();
  }
  std::pair<int, int> heldAfter(const Map& mode) {
    EXPECT_EQ(platform_.call("setBackgroundMode", mode), Reply(Value()));
    return {platform_.processActivities.held[kAvailability],
            platform_.processActivities.held[kTransfer]};
  }
  Reply setLaunchAtStartup(const Value& enabled) {
    return platform_.call("setLaunchAtStartup", Map{{"enabled", enabled}});
  }
  // How many requests to look for devices anew were sent since the last time.
  std::size_t requests() {
    platform_.mainQueue.drain();
    for (const auto& event : std::as_const(platform_.engine.messenger.events)) {
      EXPECT_EQ(event.method, "discoveryRecoveryRequested");
      EXPECT_TRUE(event.arguments.isNull());
    }
    return std::exchange(platform_.engine.messenger.events, {}).size();
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::unique_ptr<AppDelegate> delegate_;
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(DesktopServicesTest, HoldsEachActivityOnceAndOnlyWhileItIsAskedFor) {
  using Held = std::pair<int, int>;
  const Map both{{"enabled", true}, {"transferInProgress", true}};
  EXPECT_EQ(heldAfter(both), Held(1, 1));
  EXPECT_EQ(heldAfter(both), Held(1, 1));
  EXPECT_EQ(platform_.processActivities.begun[kAvailability], 1);
  EXPECT_EQ(platform_.processActivities.begun[kTransfer], 1);
  EXPECT_EQ(platform_.processActivities.options[kTransfer], ActivityOptions::kUserInitiated);
  EXPECT_EQ(platform_.processActivities.options[kAvailability],
            ActivityOptions::kUserInitiatedAllowingIdleSystemSleep);

  EXPECT_EQ(heldAfter(Map{{"enabled", true}}), Held(1, 0));
  EXPECT_EQ(heldAfter(both), Held(1, 1));
  EXPECT_EQ(heldAfter(Map{{"enabled", false}, {"transferInProgress", true}}), Held(0, 0));
  EXPECT_EQ(heldAfter(Map{{"enabled", "yes"}, {"transferInProgress", true}}), Held(0, 0));
  EXPECT_EQ(heldAfter(Map{{"enabled", true}, {"transferInProgress", 1}}), Held(1, 0));

  delegate_->hideToBackground();
  EXPECT_EQ(heldAfter(Map{{"enabled", true}}), Held(1, 0)) << "one token for both";
  delegate_->showMainWindow();
  EXPECT_EQ(platform_.processActivities.held[kAvailability], 0);
}

TEST_F(DesktopServicesTest, EndsTheTransferActivityWithTheWindow) {
  heldAfter(Map{{"enabled", true}, {"transferInProgress", true}});
  window_.reset();
  EXPECT_EQ(platform_.processActivities.held[kTransfer], 0);
}

TEST_F(DesktopServicesTest, TouchesTheLoginItemOnlyWhenItMust) {
  using Status = LoginItem::Status;
  struct Case {
    Status before;
    Value enabled;
    Status after;
    int changes;
  };
  for (const auto& [before, enabled, after, changes] :
       {Case{Status::kNotRegistered, true, Status::kEnabled, 1},
        Case{Status::kEnabled, true, Status::kEnabled, 0},
        Case{Status::kRequiresApproval, true, Status::kEnabled, 1},
        Case{Status::kNotFound, true, Status::kEnabled, 1},
        Case{Status::kEnabled, false, Status::kNotRegistered, 1},
        Case{Status::kRequiresApproval, "yes", Status::kNotRegistered, 1},
        Case{Status::kNotRegistered, {}, Status::kNotRegistered, 0}}) {
    platform_.loginItem.current = before;
    platform_.loginItem.changes = 0;
    EXPECT_EQ(platform_.call("launchAtStartupEnabled"), Reply(Value(before == Status::kEnabled)));
    EXPECT_EQ(setLaunchAtStartup(enabled), Reply(Value()));
    EXPECT_EQ(platform_.loginItem.current, after);
    EXPECT_EQ(platform_.loginItem.changes, changes);
  }
  platform_.loginItem.failure = PlatformError("Read-only file system");
  EXPECT_EQ(setLaunchAtStartup(true), failure("Read-only file system"));
}

TEST_F(DesktopServicesTest, DoesWithoutADelegate) {
  open(false);
  platform_.loginItem.current = LoginItem::Status::kEnabled;
  EXPECT_EQ(platform_.call("launchAtStartupEnabled"), Reply(Value(false)));
  EXPECT_EQ(setLaunchAtStartup(false), Reply(Value()));
  EXPECT_EQ(platform_.loginItem.changes, 0);
  EXPECT_EQ(heldAfter(Map{{"enabled", true}, {"transferInProgress", true}}), (std::pair(0, 1)));
}

TEST_F(DesktopServicesTest, AsksForDiscoveryOnEveryOccasion) {
  EXPECT_EQ(platform_.networkMonitor.label, "brevanholt.network-monitor");
  std::thread([this] {
    platform_.networkMonitor.updated();
    platform_.networkMonitor.updated();
  }).join();
  EXPECT_TRUE(platform_.engine.messenger.events.empty()) << "sent from the main thread alone";
  EXPECT_EQ(requests(), 2U);

  platform_.wakeNotices.systemDidWake.emit();
  platform_.wakeNotices.screensDidWake.emit();
  platform_.window.delegate->windowDidBecomeKey();
  EXPECT_EQ(requests(), 3U);

  platform_.networkMonitor.updated();
  window_.reset();
  platform_.wakeNotices.systemDidWake.emit();
  EXPECT_EQ(requests(), 0U) << "the window is gone";
  EXPECT_FALSE(platform_.networkMonitor.updated) << "the monitor is cancelled";
}

TEST_F(DesktopServicesTest, AsksForDiscoveryOnceAfterTheStartAndNotBeforeTheChannel) {
  window_.reset();
  window_ = std::make_shared<MainFlutterWindow>(platform_.services(), delegate_.get());
  platform_.window.delegate->windowDidBecomeKey();
  EXPECT_EQ(requests(), 0U);
  window_->awakeFromNib();
  EXPECT_EQ(requests(), 1U);
}

TEST_F(DesktopServicesTest, ShowsReplacesAndClearsNotifications) {
  const auto show = [this](const char* title) {
    return platform_.call("showNotification",
                          Map{{"id", "transfer-1"}, {"title", title}, {"body", "from Ada"}});
  };
  EXPECT_EQ(show("Receiving"), Reply(Value()));
  EXPECT_EQ(show("Received"), Reply(Value()));
  EXPECT_EQ(platform_.notificationCenter.shown,
            (std::map<std::string, std::pair<std::string, std::string>>{
                {"transfer-1", {"Received", "from Ada"}}}));
  EXPECT_EQ(platform_.call("clearNotification", Map{{"id", "transfer-1"}}), Reply(Value()));
  EXPECT_EQ(platform_.call("clearNotification", Map{{"id", "never"}}), Reply(Value()));
  EXPECT_TRUE(platform_.notificationCenter.shown.empty());

  EXPECT_EQ(platform_.call("requestNotificationPermission"), Reply(Value(true)));
  platform_.notificationCenter.isAllowed = false;
  EXPECT_EQ(platform_.call("requestNotificationPermission"), Reply(Value(false)));
  platform_.notificationCenter.failure = PlatformError("no service");
  EXPECT_EQ(platform_.call("requestNotificationPermission"),
            Reply(MethodError{"notification_permission_error", "no service", {}}));
  EXPECT_EQ(show("x"), Reply(MethodError{"notification_error", "no service", {}}));
}

TEST_F(DesktopServicesTest, PresentsTheWindowWhenANotificationIsOpened) {
  delegate_->hideToBackground();
  platform_.notificationCenter.opened();
  EXPECT_TRUE(platform_.window.visible);
  EXPECT_EQ(platform_.application.policy, ActivationPolicy::kRegular);
  delegate_.reset();
  platform_.notificationCenter.opened();
}

}  // namespace
}  // namespace brevanholt
