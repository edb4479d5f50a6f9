#include "platform/channel/MethodChannel.h"
#include "tests/fakes/FakeBinaryMessenger.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

class MethodChannelTest : public testing::Test {
 protected:
  CapturedLog log_;
  FakeBinaryMessenger messenger_;
  MethodChannel channel_{"test", messenger_};
};

TEST_F(MethodChannelTest, AnswersWhatIsNoMethodCallWithoutAskingTheHandler) {
  bool asked = false;
  channel_.setMethodCallHandler([&asked](const MethodCall&, const MethodResult&) { asked = true; });

  const auto reply = messenger_.callRaw("test", std::vector<std::uint8_t>{12, 255, 1, 2, 3, 4});

  ASSERT_TRUE(reply->has_value());
  EXPECT_EQ(std::get<MethodError>(**reply).code, "malformed_message");
  EXPECT_FALSE(asked);
}

TEST_F(MethodChannelTest, AnswersEachCallExactlyOnceWhateverItsHandlerDoes) {
  channel_.setMethodCallHandler([](const MethodCall& call, MethodResult result) {
    if (call.method == "forgotten") return;
    if (call.method == "dropped") return std::move(result).drop();
    std::move(result).success(1.0);
    std::move(result).success(2.0);  // NOLINT(bugprone-use-after-move): what this is about
  });

  EXPECT_EQ(std::get<MethodError>(messenger_.call("test", "forgotten")->value()).code,
            "platform_error");
  EXPECT_EQ(log_.count(LogLevel::kError, "dropped"), 1);
  EXPECT_FALSE(messenger_.call("test", "dropped")->has_value());
  EXPECT_EQ(log_.count(LogLevel::kError, "dropped"), 1);
  EXPECT_EQ(*messenger_.call("test", "twice"), Reply(Value(1.0)));
  EXPECT_EQ(log_.count(LogLevel::kError, "answered twice"), 1);
}

TEST_F(MethodChannelTest, LetsGoOfItsHandlerAtTheEnd) {
  {
    MethodChannel brief("brief", messenger_);
    brief.setMethodCallHandler([](const MethodCall&, const MethodResult&) {});
    EXPECT_TRUE(messenger_.hasHandler("brief"));
  }
  EXPECT_FALSE(messenger_.hasHandler("brief"));
}

}  // namespace
}  // namespace brevanholt::platform
