#include "platform/engine/web/SocketTable.h"
#include "tests/support/MainLoop.h"
#include "tests/support/PrintValue.h"

#include <gtest/gtest.h>

#include <array>

namespace brevanholt::platform {
namespace {

using SharedReply = std::shared_ptr<std::optional<Reply>>;

class SocketTableTest : public testing::Test {
 protected:
  SharedReply start(const std::string& method, Value arguments) {
    auto reply = std::make_shared<std::optional<Reply>>();
    table_.perform({method, std::move(arguments)},
                   MethodResult([reply](Reply answer) { *reply = std::move(answer); }));
    return reply;
  }
  static Reply wait(const SharedReply& reply) {
    if (!spinUntil([&reply] { return reply->has_value(); })) return MethodError{"never", "", {}};
    return **reply;
  }
  Reply call(const std::string& method, Value arguments) {
    return wait(start(method, std::move(arguments)));
  }
  static std::int64_t number(const Reply& reply, std::string_view key) {
    const auto* value = std::get_if<Value>(&reply);
    const auto* map = value != nullptr ? value->getIf<Map>() : nullptr;
    const auto* found = map != nullptr ? map->find(key) : nullptr;
    return found != nullptr ? found->integer().value_or(-1) : -1;
  }
  static std::string errorOf(const Reply& reply) {
    const auto* error = std::get_if<MethodError>(&reply);
    if (error == nullptr) return "no error";
    const auto* name = error->details.getIf<std::string>();
    return name != nullptr ? *name : error->message;
  }
  static Value bytes(const std::string& text) {
    return Bytes(std::vector<std::uint8_t>(text.begin(), text.end()));
  }
  static std::string text(const Reply& reply) {
    const auto* value = std::get_if<Value>(&reply);
    const auto* found = value != nullptr ? value->getIf<Bytes>() : nullptr;
    return found != nullptr ? std::string(found->begin(), found->end()) : "no bytes";
  }
  Reply read(std::int64_t handle, std::int64_t minimum, std::int64_t maximum) {
    return call("tcpRead", Map{{"handle", handle}, {"minimum", minimum}, {"maximum", maximum}});
  }
  // Both ends of a new connection.
  void connect(const std::string& address = "127.0.0.1") {
    const Reply listener =
        call("tcpListen",
             Map{{"address", address}, {"port", std::int32_t{0}}, {"backlog", std::int32_t{4}}});
    const auto accepting = start("tcpAccept", Map{{"handle", number(listener, "handle")}});
    const Reply connected = call("tcpConnect", Map{{"address", address},
                                                   {"port", number(listener, "port")},
                                                   {"limit", std::int64_t{5000}}});
    near_ = number(connected, "handle");
    far_ = number(wait(accepting), "handle");
  }

  SocketTable table_;
  std::int64_t near_ = 0;
  std::int64_t far_ = 0;
};

TEST_F(SocketTableTest, CarriesAStreamBothWaysAndItsEnd) {
  for (const char* address : {"127.0.0.1", "::1"}) {
    connect(address);
    EXPECT_EQ(call("tcpWrite", Map{{"handle", near_}, {"bytes", bytes("hello")}}), Reply(Value()));
    EXPECT_EQ(text(read(far_, 5, 100)), "hello");
    EXPECT_EQ(call("tcpFinish", Map{{"handle", near_}}), Reply(Value()));
    EXPECT_EQ(text(read(far_, 5, 5)), "");
    EXPECT_EQ(call("tcpWrite", Map{{"handle", far_}, {"bytes", bytes("bye")}}), Reply(Value()));
    EXPECT_EQ(text(read(near_, 1, 2)), "by");
    EXPECT_EQ(text(read(near_, 1, 2)), "e");
  }
}

TEST_F(SocketTableTest, WaitsForTheMinimumAndHoldsTheSenderBack) {
  connect();
  const std::string payload(12 << 20, 'x');
  const auto writing = start("tcpWrite", Map{{"handle", near_}, {"bytes", bytes(payload)}});
  spinOnce();
  EXPECT_FALSE(writing->has_value()) << "nobody has read yet";
  EXPECT_EQ(errorOf(call("tcpWrite", Map{{"handle", near_}, {"bytes", bytes("second")}})),
            "The socket is busy with an earlier call of this kind.");
  const auto size = static_cast<std::int64_t>(payload.size());
  EXPECT_TRUE(text(read(far_, size, size)) == payload);
  EXPECT_EQ(wait(writing), Reply(Value()));
}

TEST_F(SocketTableTest, AnswersWhatWaitsOnASocketThatIsClosed) {
  connect();
  const auto reading = start(
      "tcpRead", Map{{"handle", far_}, {"minimum", std::int64_t{1}}, {"maximum", std::int64_t{1}}});
  EXPECT_EQ(call("close", Map{{"handle", far_}}), Reply(Value()));
  EXPECT_EQ(errorOf(wait(reading)), "ECANCELED");
  EXPECT_EQ(text(read(near_, 1, 1)), "");
  EXPECT_EQ(errorOf(read(far_, 1, 1)), "There is no such socket.");

  const Reply listener = call(
      "tcpListen", Map{{"address", "::"}, {"port", std::int32_t{0}}, {"backlog", std::int32_t{4}}});
  const auto accepting = start("tcpAccept", Map{{"handle", number(listener, "handle")}});
  table_.closeAll();
  EXPECT_EQ(errorOf(wait(accepting)), "ECANCELED");
}

TEST_F(SocketTableTest, TellsWhyThereIsNoConnection) {
  const Reply listener =
      call("tcpListen",
           Map{{"address", "127.0.0.1"}, {"port", std::int32_t{0}}, {"backlog", std::int32_t{1}}});
  const auto connectTo = [this](const char* address, std::int64_t port, std::int64_t limit) {
    return errorOf(call("tcpConnect", Map{{"address", address}, {"port", port}, {"limit", limit}}));
  };
  EXPECT_EQ(errorOf(call("tcpListen", Map{{"address", "127.0.0.1"},
                                          {"port", number(listener, "port")},
                                          {"backlog", std::int32_t{1}}})),
            "EADDRINUSE");
  EXPECT_EQ(connectTo("127.0.0.1", 1, 5000), "ECONNREFUSED");
  EXPECT_EQ(connectTo("example.org", 80, 5000), "“example.org” port 80 is no network address.");
  EXPECT_EQ(connectTo("127.0.0.1", 70000, 5000), "“127.0.0.1” port 70000 is no network address.");
  // Nobody takes calls from a full backlog.
  std::array<SharedReply, 8> waiting;
  for (SharedReply& reply : waiting) {
    reply = start("tcpConnect", Map{{"address", "127.0.0.1"},
                                    {"port", number(listener, "port")},
                                    {"limit", std::int64_t{300}}});
  }
  EXPECT_EQ(errorOf(wait(waiting.back())), "ETIMEDOUT");
}

TEST_F(SocketTableTest, CarriesDatagramsAndGroups) {
  const auto bind = [this](const char* address, std::int64_t port) {
    return call("udpBind", Map{{"address", address}, {"port", port}, {"isShared", true}});
  };
  const Reply first = bind("0.0.0.0", 0);
  const std::int64_t port = number(first, "port");
  const Reply second = bind("0.0.0.0", port);
  const std::int64_t one = number(first, "handle");
  const std::int64_t other = number(second, "handle");
  for (const std::int64_t handle : {one, other}) {
    EXPECT_EQ(
        call("udpJoin", Map{{"handle", handle}, {"group", "239.255.1.2"}, {"interface", "lo"}}),
        Reply(Value()));
  }
  const auto receiving = start("udpReceive", Map{{"handle", other}});
  EXPECT_EQ(call("udpSend", Map{{"handle", one},
                                {"bytes", bytes("to all")},
                                {"address", "239.255.1.2"},
                                {"port", port}}),
            Reply(Value()));
  const Reply datagram = wait(receiving);
  const Map& received = *std::get<Value>(datagram).getIf<Map>();
  EXPECT_EQ(*received.find("bytes"), bytes("to all"));
  EXPECT_EQ(number(datagram, "port"), port);
  EXPECT_EQ(errorOf(call("udpJoin",
                         Map{{"handle", one}, {"group", "239.255.1.2"}, {"interface", "no0"}})),
            "ENODEV");
  EXPECT_EQ(errorOf(call("udpSend", Map{{"handle", one},
                                        {"bytes", Bytes(std::vector<std::uint8_t>(70000))},
                                        {"address", "127.0.0.1"},
                                        {"port", port}})),
            "EMSGSIZE");
}

}  // namespace
}  // namespace brevanholt::platform
