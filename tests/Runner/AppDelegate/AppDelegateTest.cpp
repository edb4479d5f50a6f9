#include "tests/Runner/HostTest.h"

#include <algorithm>
#include <thread>

namespace brevanholt {
namespace {

using namespace platform;

constexpr const char* kAvailability = "Brevanholt background discovery and receiving";
constexpr const char* kTransfer = "Brevanholt file transfer";

class AppDelegateTest : public HostTest {
 protected:
  void SetUp() override { delegate_->applicationDidFinishLaunching(); }

  void expectInBackground(bool inBackground, const char* after) {
    SCOPED_TRACE(after);
    EXPECT_EQ(platform_.window.visible, !inBackground);
    EXPECT_EQ(platform_.application.policy,
              inBackground ? ActivationPolicy::kAccessory : ActivationPolicy::kRegular);
    EXPECT_EQ(platform_.processActivities.held[kAvailability], inBackground ? 1 : 0);
    EXPECT_FALSE(platform_.application.isTerminated);
  }
  void activate(std::string_view title) {
    const auto& items = platform_.statusItem.menu->items();
    (*std::ranges::find(items, title, &MenuItem::title))->activate();
  }
  // The number of discovery requests sent since the last call.
  std::ptrdiff_t requests() {
    platform_.mainQueue.drain();
    const auto events = std::exchange(platform_.engine.messenger.events, {});
    return std::ranges::count(events, "discoveryRecoveryRequested", &MethodCall::method);
  }
  // The activities that run after a call with that mode.
  std::pair<int, int> heldAfter(const Map& mode) {
    EXPECT_EQ(call("setBackgroundMode", mode), Reply(Value()));
    return {platform_.processActivities.held[kAvailability],
            platform_.processActivities.held[kTransfer]};
  }
};

TEST_F(AppDelegateTest, IsInTheBackgroundJustWhileItsWindowIsHidden) {
  const auto close = [this] { platform_.window.delegate->performClose(); };
  expectInBackground(false, "the start");
  close();
  close();
  expectInBackground(true, "closing twice");
  delegate_->applicationShouldHandleReopen(false);
  expectInBackground(false, "another launch");
  close();
  platform_.notificationCenter.opened();
  expectInBackground(false, "opening a notification");
  close();
  activate("Open Brevanholt");
  expectInBackground(false, "the menu's command");

  platform_.isLoginItemLaunch = true;
  const int presentations = platform_.window.presentations;
  restart();
  delegate_->applicationDidFinishLaunching();
  platform_.mainQueue.drain();
  expectInBackground(true, "the start at login");
  EXPECT_EQ(platform_.window.presentations, presentations) << "not even for a moment";
  activate("Quit Brevanholt");
  EXPECT_TRUE(platform_.application.isTerminated);
}

TEST_F(AppDelegateTest, HoldsEachActivityOnlyWhileItIsAskedFor) {
  using Held = std::pair<int, int>;
  const Map both{{"enabled", true}, {"transferInProgress", true}};
  EXPECT_EQ(heldAfter(both), Held(1, 1));
  EXPECT_EQ(heldAfter(Map{{"enabled", true}}), Held(1, 0));
  EXPECT_EQ(heldAfter(both), Held(1, 1));
  EXPECT_EQ(heldAfter(Map{{"enabled", "yes"}, {"transferInProgress", true}}), Held(0, 0));
  EXPECT_EQ(heldAfter(Map{{"enabled", true}, {"transferInProgress", 1}}), Held(1, 0));

  delegate_->hideToBackground();
  EXPECT_EQ(heldAfter(Map{{"enabled", true}}), Held(1, 0)) << "one token for both";
  heldAfter(both);
  window_.reset();
  EXPECT_EQ(platform_.processActivities.held[kTransfer], 0) << "ends with the window";
}

TEST_F(AppDelegateTest, AsksForDiscoveryOnEveryOccasionWhileThereIsAWindow) {
  EXPECT_GE(requests(), 1) << "the start";
  std::thread([this] { platform_.networkMonitor.updated(); }).join();
  EXPECT_TRUE(events().empty()) << "sent from the main thread alone";
  EXPECT_EQ(requests(), 1);

  platform_.wakeNotices.systemDidWake.emit();
  platform_.wakeNotices.screensDidWake.emit();
  platform_.window.delegate->windowDidBecomeKey();
  platform_.statusItem.menu->willOpen();
  EXPECT_EQ(requests(), 4);

  platform_.networkMonitor.updated();
  window_.reset();
  EXPECT_FALSE(platform_.networkMonitor.updated) << "the monitor is cancelled";
  platform_.wakeNotices.systemDidWake.emit();
  platform_.statusItem.menu->willOpen();
  activate("Open Brevanholt");
  delegate_.reset();
  platform_.notificationCenter.opened();
  EXPECT_EQ(requests(), 0);
}

TEST_F(AppDelegateTest, TakesAStateOfTheShellForWhatItMakesSenseOf) {
  const Map active{{"title", "Sending"},
                   {"item", "a"},
                   {"stateKey", "sending"},
                   {"progressLabel", "12 of 24 MB"}};
  const auto shownAfter = [this](const Map& state) {
    EXPECT_EQ(call("updateDesktopShell", state), Reply(Value()));
    return platform_.statusItem.toolTip + ", " +
           std::to_string(platform_.statusItem.menu->items().size()) + " items";
  };
  EXPECT_EQ(shownAfter({{"activeTransfer", active}, {"recentTransfers", List{active}}}),
            "Brevanholt — 12 of 24 MB, 10 items");
  for (const char* key : {"title", "item", "stateKey", "progressLabel"}) {
    Map mistyped = active;
    mistyped.add(key, 1.0);
    EXPECT_EQ(shownAfter({{"activeTransfer", mistyped}}), "Brevanholt, 7 items") << key;
  }
  EXPECT_EQ(shownAfter({{"activeTransfer", Map{}}, {"recentTransfers", "none"}, {"visible", "no"}}),
            "Brevanholt, 7 items");
}

}  // namespace
}  // namespace brevanholt
