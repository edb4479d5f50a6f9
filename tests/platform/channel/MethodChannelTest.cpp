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

TEST_F(MethodChannelTest, AnswersADroppedCallOnceAndSaysSo) {
  channel_.setMethodCallHandler([](const MethodCall&, MethodResult result) {
    const MethodResult dropped = std::move(result);
  });

  const auto reply = messenger_.call("test", "forgotten");

  ASSERT_TRUE(reply->has_value());
  EXPECT_EQ(std::get<MethodError>(**reply).code, "abandoned");
  EXPECT_EQ(log_.count(LogLevel::kError, "dropped"), 1);
}

TEST_F(MethodChannelTest, DropsASecondReplyAndSaysSo) {
  channel_.setMethodCallHandler([](const MethodCall&, MethodResult result) {
    std::move(result).success(1.0);
    std::move(result).success(2.0);  // NOLINT(bugprone-use-after-move): what this is about
  });

  EXPECT_EQ(*messenger_.call("test", "twice"), Reply(Value(1.0)));
  EXPECT_EQ(log_.count(LogLevel::kError, "answered twice"), 1);
}

TEST_F(MethodChannelTest, SendsEventsAndLetsGoOfItsHandlerAtTheEnd) {
  channel_.invokeMethod("filesDropped", List{"a"});
  ASSERT_EQ(messenger_.events.size(), 1U);
  EXPECT_EQ(messenger_.events[0].method, "filesDropped");
  EXPECT_EQ(messenger_.events[0].arguments, Value(List{"a"}));

  {
    MethodChannel brief("brief", messenger_);
    brief.setMethodCallHandler([](const MethodCall&, const MethodResult&) {});
    EXPECT_TRUE(messenger_.hasHandler("brief"));
  }
  EXPECT_FALSE(messenger_.hasHandler("brief"));
}

}  // namespace
}  // namespace brevanholt::platform
