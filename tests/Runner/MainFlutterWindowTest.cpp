#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"

#include <gtest/gtest.h>

namespace brevanholt {
namespace {

using namespace platform;

class MainFlutterWindowTest : public testing::Test {
 protected:
  void SetUp() override { open(); }
  void open() {
    delegate_ = std::make_unique<AppDelegate>(platform_.services());
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), delegate_.get());
    delegate_->setMainWindow(window_);
    window_->awakeFromNib();
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::unique_ptr<AppDelegate> delegate_;
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(MainFlutterWindowTest, AnswersTheInlineServices) {
  EXPECT_EQ(platform_.call("deviceName"), Reply(Value("Ada’s computer")));
  EXPECT_EQ(platform_.call("appVersion"),
            Reply(Value(Map{{"version", "1.2.3"}, {"buildNumber", "45"}})));
  EXPECT_EQ(platform_.call("enableMulticast"), Reply(Value()));

  const std::string support = platform_.home / "data/Brevanholt";
  EXPECT_EQ(platform_.call("appSupportPath"), Reply(Value(support)));
  EXPECT_EQ(platform_.call("appSupportPath"), Reply(Value(support)));
  EXPECT_TRUE(std::filesystem::is_directory(support));
}

TEST_F(MainFlutterWindowTest, ComparesMethodNamesExactly) {
  for (const char* name : {"devicename", "DeviceName", "deviceName ", "", "noSuchMethod"}) {
    EXPECT_EQ(platform_.call(name), Reply(NotImplemented{})) << name;
  }
}

TEST_F(MainFlutterWindowTest, ReportsAnApplicationFolderThatCannotBeMade) {
  writeFile(platform_.home / "data", "in the way");

  const Reply reply = platform_.call("appSupportPath");

  const auto& error = std::get<MethodError>(reply);
  EXPECT_EQ(error.code, "platform_error");
  EXPECT_NE(error.message.find("Not a directory"), std::string::npos) << error.message;
  EXPECT_TRUE(error.details.isNull());
}

TEST_F(MainFlutterWindowTest, WritesTheClipboardOrSaysThatItCould) {
  EXPECT_EQ(platform_.call("writeClipboardText", Map{{"text", "naïve 🎈"}}), Reply(Value()));
  EXPECT_EQ(platform_.pasteboard.text, "naïve 🎈");

  platform_.pasteboard.refuses = true;
  EXPECT_EQ(platform_.call("writeClipboardText", Map{{"text", "x"}}),
            failure("Clipboard text could not be saved."));
}

TEST_F(MainFlutterWindowTest, OpensOnlyWebLinks) {
  EXPECT_EQ(platform_.call("openExternalUrl", Map{{"url", "https://example.org/?q=1"}}),
            Reply(Value()));
  EXPECT_EQ(platform_.call("openExternalUrl", Map{{"url", "http://example.org"}}), Reply(Value()));
  for (const char* url :
       {"HTTPS://example.org", "ftp://example.org", "file:///etc/passwd", "mailto:a@b",
        "javascript:alert(1)", "httpss://x", "https", "", "https://x\ny"}) {
    EXPECT_EQ(platform_.call("openExternalUrl", Map{{"url", url}}),
              failure("The web link could not be opened."))
        << url;
  }
  EXPECT_EQ(platform_.workspace.opened,
            (std::vector<std::string>{"https://example.org/?q=1", "http://example.org"}));

  platform_.workspace.refuses = true;
  EXPECT_EQ(platform_.call("openExternalUrl", Map{{"url", "https://example.org"}}),
            failure("The web link could not be opened."));
}

TEST_F(MainFlutterWindowTest, EndsTheProcessWhenARequiredArgumentIsMissing) {
  setLogSink(nullptr);
  const auto call = [this](const Value& arguments) {
    setLogSink([](LogLevel, std::string_view text) { std::fprintf(stderr, "%s\n", text.data()); });
    platform_.call("writeClipboardText", arguments);
  };
  const std::string complaint = "\"writeClipboardText\" was called without a valid ";
  EXPECT_DEATH(call({}), complaint + "\"arguments\"");
  EXPECT_DEATH(call(List{"text"}), complaint + "\"arguments\"");
  EXPECT_DEATH(call(Map{{"text", 1.0}}), complaint + "\"text\"");
}

TEST_F(MainFlutterWindowTest, FillsTheWindowAndKeepsItsFrame) {
  EXPECT_EQ(platform_.window.content, &platform_.dropContainer.nativeView);
  EXPECT_EQ(platform_.dropContainer.subview, &platform_.engine.nativeView);
  EXPECT_EQ(platform_.window.current.width, 800);
  EXPECT_EQ(platform_.window.current.height, 600);
}

TEST_F(MainFlutterWindowTest, StaysUsableWithoutADownloadsFolder) {
  platform_.folders.downloads = platform_.home / "file/Downloads";
  writeFile(platform_.home / "file", "in the way");
  open();

  EXPECT_EQ(platform_.call("locateReceivedFiles", Map{{"names", List{"a"}}}), Reply(Value(List{})));
  EXPECT_EQ(platform_.call("prepareReceiveLocation"), Reply(Value(false)));
}

TEST_F(MainFlutterWindowTest, HidesInsteadOfClosingAndHoldsOneActivity) {
  constexpr const char* kReason = "Brevanholt background discovery and receiving";
  delegate_->applicationDidFinishLaunching();
  ASSERT_TRUE(platform_.window.visible);

  platform_.window.delegate->performClose();
  platform_.window.delegate->performClose();

  EXPECT_FALSE(platform_.window.visible);
  EXPECT_FALSE(platform_.window.isClosed);
  EXPECT_EQ(platform_.application.policy, ActivationPolicy::kAccessory);
  EXPECT_EQ(platform_.processActivities.held[kReason], 1);
  EXPECT_EQ(platform_.processActivities.options[kReason],
            ActivityOptions::kUserInitiatedAllowingIdleSystemSleep);

  EXPECT_TRUE(delegate_->applicationShouldHandleReopen(false));
  EXPECT_TRUE(platform_.window.visible);
  EXPECT_EQ(platform_.application.policy, ActivationPolicy::kRegular);
  EXPECT_EQ(platform_.processActivities.held[kReason], 0);
}

TEST_F(MainFlutterWindowTest, ClosesForGoodWithoutADelegate) {
  const auto alone = std::make_shared<MainFlutterWindow>(platform_.services(), nullptr);
  alone->performClose();
  EXPECT_TRUE(platform_.window.isClosed);
}

}  // namespace
}  // namespace brevanholt
