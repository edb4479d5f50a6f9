#include "platform/channel/BinaryMessenger.h"
#include "platform/channel/StandardMethodCodec.h"
#include "platform/engine/flutter/FlutterBinaryMessenger.h"
#include "tests/fakes/FakeBinaryMessenger.h"
#include "tests/platform/engine/flutter/StandInEngine.h"
#include "tests/platform/engine/web/FakePage.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

// A message that says its text; events of the fake must be method calls.
Message text(std::string_view content) {
  return StandardMethodCodec::encodeMethodCall({std::string(content), {}});
}

std::string textOf(const Bytes& message) {
  return message.empty() ? "" : StandardMethodCodec::decodeMethodCall(message).method;
}

Bytes bytesOf(std::string_view message) {
  return std::vector<std::uint8_t>(message.begin(), message.end());
}

std::string stringOf(const Message& message) {
  const Bytes whole = message.joined();
  return {whole.begin(), whole.end()};
}

// Each of these is a UI at the other end of one kind of messenger.

class FakeUi {
 public:
  BinaryMessenger& messenger() { return fake_; }
  int call(const std::string& channel, std::string_view message) {
    answers_.push_back(std::make_shared<std::vector<std::string>>());
    fake_.deliver(channel, text(message).joined(),
                  [answers = answers_.back()](const Message& reply) {
                    answers->push_back(textOf(reply.joined()));
                  });
    return static_cast<int>(answers_.size()) - 1;
  }
  std::vector<std::string> repliesTo(int call) {
    return *answers_.at(static_cast<std::size_t>(call));
  }

 private:
  FakeBinaryMessenger fake_;
  std::vector<std::shared_ptr<std::vector<std::string>>> answers_;
};

class WebUi {
 public:
  WebUi() { startAgain(); }
  BinaryMessenger& messenger() { return messenger_; }
  int call(const std::string& channel, std::string_view message) {
    page_->send(LinkFrame::Kind::kMessage, channel, static_cast<std::uint32_t>(++calls_),
                text(message));
    spinOnce();
    return calls_;
  }
  std::vector<std::string> repliesTo(int call) {
    takeFrames();
    return replies_[call];
  }
  void listen(const std::string& channel) {
    page_->send(LinkFrame::Kind::kListen, channel, 0, {});
    spinOnce();
  }
  std::optional<std::string> next() {
    takeFrames();
    if (events_.empty()) return std::nullopt;
    return textOf(events_.front().message);
  }
  void handle() {
    if (events_.front().number != 0) {
      page_->send(LinkFrame::Kind::kReply, "", events_.front().number, {});
      spinOnce();
    }
    events_.erase(events_.begin());
  }
  void startAgain() {
    if (page_) page_->leave();
    spinOnce();
    events_.clear();
    replies_.clear();
    page_.emplace(messenger_);
  }

 private:
  void takeFrames() {
    while (const auto frame = page_->receive(std::chrono::milliseconds(100))) {
      if (frame->kind == LinkFrame::Kind::kReply) {
        replies_[static_cast<int>(frame->number)].push_back(textOf(frame->message));
      } else {
        events_.push_back(*frame);
      }
    }
  }

  WebBinaryMessenger messenger_;
  std::optional<FakePage> page_;
  std::vector<LinkFrame> events_;
  std::map<int, std::vector<std::string>> replies_;
  int calls_ = 0;
};

class FlutterUi {
 public:
  FlutterUi() { messenger_.start(); }
  ~FlutterUi() {
    messenger_.stop();
    dart_.end();
    spinOnce();
    dart_.replies.clear();
  }
  FlutterUi(const FlutterUi&) = delete;
  FlutterUi& operator=(const FlutterUi&) = delete;

  FlutterBinaryMessenger& messenger() { return messenger_; }
  int call(const std::string& channel, std::string_view message) {
    const int number = dart_.call(channel, stringOf(text(message)));
    if (number < 0) dart_.replies[number] = {""};  // the engine's own answer
    return number;
  }
  std::vector<std::string> repliesTo(int call) {
    std::vector<std::string> texts;
    for (const std::string& reply : dart_.replies[call]) texts.push_back(textOf(bytesOf(reply)));
    return texts;
  }
  void listen(const std::string& channel) { dart_.listen(channel); }
  std::optional<std::string> next() {
    spinOnce();
    const auto event = dart_.next();
    return event ? std::optional(textOf(bytesOf(*event))) : std::nullopt;
  }
  void handle() {
    dart_.handle();
    spinOnce();
  }
  void startAgain() {
    messenger_.uiEnded();
    dart_.end();
    spinOnce();
    dart_.replies.clear();
    messenger_.setMessageHandler("hello", [](const Bytes&, const BinaryReply&) {});
    call("hello", "again");
  }

 private:
  FlutterFunctions functions_ = standInFunctions();
  StandInDart& dart_ = StandInDart::instance();
  FlutterBinaryMessenger messenger_{functions_, functions_.fl_engine_get_binary_messenger(nullptr)};
};

using Texts = std::vector<std::string>;

template <class Ui>
class BinaryMessengerTest : public testing::Test {
 protected:
  // Keeps the replies to calls on a channel until the test sends them.
  void keepReplies(const std::string& channel) {
    ui_.messenger().setMessageHandler(channel, [this](const Bytes& message, BinaryReply reply) {
      seen_.push_back(textOf(message));
      owed_.push_back(std::move(reply));
    });
  }

  CapturedLog log_;
  Ui ui_;
  Texts seen_;
  std::vector<BinaryReply> owed_;
};
using AllMessengers = testing::Types<FakeUi, WebUi, FlutterUi>;
TYPED_TEST_SUITE(BinaryMessengerTest, AllMessengers);

TYPED_TEST(BinaryMessengerTest, HandsOnCallsInOrderAndRepliesToTheRightOne) {
  this->keepReplies("letters");
  const int first = this->ui_.call("letters", "a");
  const int second = this->ui_.call("letters", "b");
  const int third = this->ui_.call("letters", "c");
  EXPECT_EQ(this->seen_, (Texts{"a", "b", "c"}));

  this->owed_[2](text("C"));
  this->owed_[0](text("A"));
  EXPECT_EQ(this->ui_.repliesTo(third), Texts{"C"});
  EXPECT_EQ(this->ui_.repliesTo(first), Texts{"A"});
  EXPECT_EQ(this->ui_.repliesTo(second), Texts{});
}

TYPED_TEST(BinaryMessengerTest, AnswersOnAChannelThatNobodyServes) {
  EXPECT_EQ(this->ui_.repliesTo(this->ui_.call("nobody", "x")), Texts{""});
  this->keepReplies("brief");
  this->ui_.messenger().setMessageHandler("brief", nullptr);
  EXPECT_EQ(this->ui_.repliesTo(this->ui_.call("brief", "x")), Texts{""});
}

// Messengers whose UI starts and ends.
template <class Ui>
class EngineMessengerTest : public BinaryMessengerTest<Ui> {};
using EngineMessengers = testing::Types<WebUi, FlutterUi>;
TYPED_TEST_SUITE(EngineMessengerTest, EngineMessengers);

TYPED_TEST(EngineMessengerTest, KeepsEventsUntilTheUiListens) {
  for (const char* event : {"1", "2", "3"}) this->ui_.messenger().send("events", text(event));
  EXPECT_FALSE(this->ui_.next());

  this->ui_.listen("events");
  for (const char* event : {"1", "2", "3"}) {
    EXPECT_EQ(this->ui_.next(), event);
    this->ui_.handle();
  }
  this->ui_.messenger().send("other", text("nobody listens here"));
  this->ui_.messenger().send("events", text("4"));
  EXPECT_EQ(this->ui_.next(), "4");
}

TYPED_TEST(EngineMessengerTest, SendsAgainWhatTheUiDidNotHandleBeforeItEnded) {
  this->ui_.listen("events");
  std::string handled;
  for (const char* event : {"1", "2", "3"}) {
    this->ui_.messenger().sendUntilHandled("events", text(event),
                                           [&handled, event] { handled += event; });
  }
  EXPECT_EQ(this->ui_.next(), "1");
  this->ui_.handle();
  EXPECT_TRUE(spinUntil([&] { return handled == "1"; }));
  EXPECT_EQ(this->ui_.next(), "2");

  this->ui_.startAgain();
  this->ui_.messenger().send("events", text("4"));
  this->ui_.listen("events");
  for (const char* event : {"2", "3", "4"}) {
    EXPECT_EQ(this->ui_.next(), event);
    this->ui_.handle();
  }
  EXPECT_TRUE(spinUntil([&] { return handled == "123"; }));
}

TYPED_TEST(EngineMessengerTest, DropsRepliesToAUiThatHasGone) {
  this->keepReplies("slow");
  this->ui_.call("slow", "x");
  ASSERT_EQ(this->owed_.size(), 1U);
  this->ui_.startAgain();
  const int next = this->ui_.call("slow", "y");
  this->owed_[0](text("too late"));
  EXPECT_EQ(this->ui_.repliesTo(next), Texts{});
}

// The engine treats a call that is never answered as a fault.
TEST(FlutterBinaryMessengerTest, AnswersEveryCallOnceWhetherItIsDroppedRepliedToOrCutShort) {
  StandInDart& dart = StandInDart::instance();
  const FlutterFunctions functions = standInFunctions();
  std::vector<BinaryReply> owed;
  {
    FlutterBinaryMessenger messenger(functions, functions.fl_engine_get_binary_messenger(nullptr));
    messenger.setMessageHandler(
        "slow", [&](const Bytes&, BinaryReply reply) { owed.push_back(std::move(reply)); });
    const int dropped = dart.call("slow", "");
    owed.clear();
    EXPECT_EQ(dart.replies[dropped], Texts{""});
    const int repliedTo = dart.call("slow", "");
    owed[0](Message(bytesOf("once")));
    owed[0](Message(bytesOf("twice")));
    EXPECT_EQ(dart.replies[repliedTo], Texts{"once"});
    dart.call("slow", "");
  }
  const int last = dart.replies.rbegin()->first;
  EXPECT_EQ(dart.replies[last], Texts{""});
  owed[1](Message(bytesOf("too late")));
  owed.clear();
  EXPECT_EQ(dart.replies[last], Texts{""});
  EXPECT_EQ(dart.call("slow", ""), -1);
  dart.replies.clear();
}

}  // namespace
}  // namespace brevanholt::platform
