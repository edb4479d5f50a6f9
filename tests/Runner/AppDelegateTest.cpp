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

class AppDelegateTest : public testing::Test {
 protected:
  void launch() {
    delegate_ = std::make_unique<AppDelegate>(platform_.services());
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), delegate_.get());
    delegate_->setMainWindow(window_);
    window_->awakeFromNib();
    delegate_->applicationDidFinishLaunching();
  }
  std::ptrdiff_t recoveryRequests() const {
    return std::ranges::count(platform_.engine.messenger.events, "discoveryRecoveryRequested",
                              &MethodCall::method);
  }
  const MenuItem& command(std::string_view title) const {
    const auto& items = platform_.statusItem.menu->items();
    return **std::ranges::find(items, title, &MenuItem::title);
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::unique_ptr<AppDelegate> delegate_;
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(AppDelegateTest, StartsWithAWindowAndAStatusItem) {
  launch();
  EXPECT_TRUE(platform_.window.visible);
  EXPECT_EQ(platform_.processActivities.held[kAvailability], 0);
  EXPECT_EQ(platform_.statusItem.toolTip, "Brevanholt");
  EXPECT_EQ(platform_.statusItem.accessibilityLabel, "Brevanholt");
  ASSERT_NE(platform_.statusItem.menu, nullptr);
}

TEST_F(AppDelegateTest, StartsInTheBackgroundAtLogin) {
  platform_.isLoginItemLaunch = true;
  launch();
  platform_.mainQueue.drain();
  EXPECT_FALSE(platform_.window.visible);
  EXPECT_EQ(platform_.window.presentations, 0);
  EXPECT_EQ(platform_.application.policy, ActivationPolicy::kAccessory);
  EXPECT_EQ(platform_.processActivities.held[kAvailability], 1);
}

TEST_F(AppDelegateTest, ComesBackFromTheBackgroundByItsMenu) {
  launch();
  platform_.window.delegate->performClose();
  const auto before = recoveryRequests();
  int closings = 0;
  const Connection connection =
      platform_.statusItem.menu->trackingCancelled.connect([&closings] { ++closings; });

  command("Open Brevanholt").activate();

  EXPECT_TRUE(platform_.window.visible);
  EXPECT_EQ(platform_.application.policy, ActivationPolicy::kRegular);
  EXPECT_EQ(platform_.application.activations, 1);
  EXPECT_EQ(platform_.processActivities.held[kAvailability], 0);
  EXPECT_EQ(recoveryRequests() - before, 1);
  EXPECT_EQ(closings, 1);
}

TEST_F(AppDelegateTest, ReopensOnlyWithoutVisibleWindows) {
  launch();
  EXPECT_TRUE(delegate_->applicationShouldHandleReopen(true));
  EXPECT_EQ(platform_.window.presentations, 1);
  platform_.window.delegate->performClose();
  EXPECT_TRUE(delegate_->applicationShouldHandleReopen(false));
  EXPECT_EQ(platform_.window.presentations, 2);
}

TEST_F(AppDelegateTest, AsksForDiscoveryEachTimeItsMenuOpens) {
  launch();
  const auto before = recoveryRequests();
  platform_.statusItem.menu->willOpen();
  platform_.statusItem.menu->willOpen();
  EXPECT_EQ(recoveryRequests() - before, 2);
  EXPECT_TRUE(platform_.engine.messenger.events.back().arguments.isNull());

  window_.reset();
  platform_.statusItem.menu->willOpen();
  command("Open Brevanholt").activate();
  EXPECT_EQ(recoveryRequests() - before, 2);
}

TEST_F(AppDelegateTest, QuitsOnlyByItsMenu) {
  launch();
  platform_.window.delegate->performClose();
  EXPECT_FALSE(platform_.application.isTerminated);
  command("Quit Brevanholt").activate();
  EXPECT_TRUE(platform_.application.isTerminated);
}

TEST_F(AppDelegateTest, ShowsTheShellsStateInMenuAndToolTip) {
  launch();
  const Map active{{"title", "Sending"},
                   {"item", "a"},
                   {"stateKey", "sending"},
                   {"progress", 0.5},
                   {"progressLabel", "12 of 24 MB"}};
  const auto update = [this](const Map& state) {
    EXPECT_EQ(platform_.call("updateDesktopShell", state), Reply(Value()));
    return platform_.statusItem.toolTip + ", " +
           std::to_string(platform_.statusItem.menu->items().size()) + " items";
  };
  EXPECT_EQ(update({{"activeTransfer", active}}), "Brevanholt — 12 of 24 MB, 7 items");
  EXPECT_EQ(update({{"activeTransfer", active}, {"recentTransfers", List{active}}}),
            "Brevanholt — 12 of 24 MB, 10 items");
  EXPECT_EQ(update({{"activeTransfer", Map{{"title", "x"}}}}), "Brevanholt, 7 items");
  EXPECT_EQ(update({{"activeTransfer", {}}, {"recentTransfers", "none"}, {"visible", "no"}}),
            "Brevanholt, 7 items");
}

TEST_F(AppDelegateTest, DrawsItsIconFromTheLogoOrWhatThereIs) {
  const auto logo = platform_.home /
                    "Frameworks/App.framework/Resources/flutter_assets/assets/images/"
                    "brevanholt_logo.png";
  platform_.images.pictures.insert(logo);
  launch();
  const Image& icon = platform_.statusItem.image;
  EXPECT_EQ(icon.width, 22);
  EXPECT_EQ(icon.height, 18);
  EXPECT_TRUE(icon.isTemplate);
  EXPECT_EQ(icon.alignment, (Rectangle{.x = -3, .y = -2, .width = 22, .height = 18}));
  const auto& drawing = std::get<Image::PictureDrawing>(icon.content);
  EXPECT_EQ(drawing.picture, logo);
  EXPECT_EQ(drawing.source, (Rectangle{.x = 68, .y = 110, .width = 376, .height = 292}));
  EXPECT_NEAR(drawing.destination.x, 0, 1e-9);
  EXPECT_NEAR(drawing.destination.y, 0.457, 0.001);
  EXPECT_NEAR(drawing.destination.width, 22, 1e-9);
  EXPECT_NEAR(drawing.destination.height, 17.085, 0.001);

  platform_.images.pictures.clear();
  launch();
  EXPECT_TRUE(std::holds_alternative<Image::ApplicationIcon>(platform_.statusItem.image.content));
  platform_.images.applicationIcon = false;
  launch();
  EXPECT_TRUE(std::holds_alternative<Image::Nothing>(platform_.statusItem.image.content));
  EXPECT_TRUE(platform_.statusItem.image.isTemplate);
}

}  // namespace
}  // namespace brevanholt
