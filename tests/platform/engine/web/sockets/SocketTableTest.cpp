#include "platform/engine/web/sockets/SocketTable.h"
#include "platform/foundation/PlatformError.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <array>

namespace brevanholt::platform {
namespace {

using SharedReply = std::shared_ptr<std::optional<Reply>>;

class SocketTableTest : public testing::Test {
 protected:
  SharedReply start(const std::string& method, Value arguments) {
    return startOn(table_, method, std::move(arguments));
  }
  static SharedReply startOn(SocketTable& table, const std::string& method, Value arguments) {
    auto reply = std::make_shared<std::optional<Reply>>();
    table.perform({method, std::move(arguments)},
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
  // The bytes that were read, as text.
  static std::string text(const Reply& reply) {
    const auto* value = std::get_if<Value>(&reply);
    const auto* found = value != nullptr ? value->getIf<Bytes>() : nullptr;
    return found != nullptr ? std::string(found->begin(), found->end()) : errorOf(reply);
  }
  SharedReply startReading(std::int64_t handle, std::int64_t minimum, std::int64_t maximum) {
    return start("tcpRead", Map{{"handle", handle}, {"minimum", minimum}, {"maximum", maximum}});
  }
  std::string read(std::int64_t handle, std::int64_t minimum, std::int64_t maximum) {
    return text(wait(startReading(handle, minimum, maximum)));
  }
  SharedReply startWriting(std::int64_t handle, const std::string& content,
                           const Value& head = {}) {
    return start("tcpWrite", Map{{"handle", handle}, {"bytes", bytes(content)}, {"head", head}});
  }
  Reply listen(std::int64_t port = 0) {
    return call("tcpListen",
                Map{{"address", "127.0.0.1"}, {"port", port}, {"backlog", std::int64_t{1}}});
  }
  Reply bind() {
    return call("udpBind",
                Map{{"address", "127.0.0.1"}, {"port", std::int64_t{0}}, {"isShared", false}});
  }
  // What sends a text from one socket to another.
  static Map datagram(const Reply& from, const Reply& to, const std::string& text) {
    return Map{{"handle", number(from, "handle")},
               {"bytes", bytes(text)},
               {"address", "127.0.0.1"},
               {"port", number(to, "port")}};
  }
  SharedReply startConnecting(const char* address, std::int64_t port, std::int64_t limit = 5000) {
    return start("tcpConnect", Map{{"address", address}, {"port", port}, {"limit", limit}});
  }
  // Both ends of a new connection.
  void connect() {
    const Reply listener = listen();
    const auto accepting = start("tcpAccept", Map{{"handle", number(listener, "handle")}});
    near_ = number(wait(startConnecting("127.0.0.1", number(listener, "port"))), "handle");
    far_ = number(wait(accepting), "handle");
  }

  SocketTable table_{{.folders = {},
                      .datagrams = {{.port = 0, .to = {"127.0.0.0/8", "239.255.77.66"}}},
                      .networks = {"127.0.0.0/8"}}};
  std::int64_t near_ = 0;
  std::int64_t far_ = 0;
};

TEST_F(SocketTableTest, RepeatsADatagramUntilItIsToldOtherwiseAndDoesNotHearItself) {
  const auto repeat = [this](List datagrams) {
    return call("udpRepeat", Map{{"datagrams", std::move(datagrams)},
                                 {"shortest", std::int64_t{100}},
                                 {"longest", std::int64_t{100}}});
  };
  const Reply speaker = bind();
  const Reply hearer = bind();
  const auto own = start("udpReceive", Map{{"handle", number(speaker, "handle")}});
  EXPECT_EQ(repeat({datagram(speaker, speaker, "here"), datagram(speaker, hearer, "here")}),
            Reply(Value()));
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(number(call("udpReceive", Map{{"handle", number(hearer, "handle")}}), "port"),
              number(speaker, "port"));
  }
  EXPECT_FALSE(own->has_value());
  EXPECT_EQ(repeat({}), Reply(Value()));
}

TEST_F(SocketTableTest, WaitsForTheMinimumAndHoldsTheSenderBack) {
  connect();
  EXPECT_EQ(wait(startWriting(near_, "and bytes", bytes("head "))), Reply(Value()));
  EXPECT_EQ(read(far_, 14, 14), "head and bytes");
  const std::string payload(12 << 20, 'x');
  const auto writing = startWriting(near_, payload, bytes("head"));
  spinOnce();
  EXPECT_FALSE(writing->has_value()) << "nobody has read yet";
  EXPECT_EQ(errorOf(wait(startWriting(near_, "second"))),
            "The socket is busy with an earlier call of this kind.");
  const auto size = static_cast<std::int64_t>(payload.size()) + 4;
  EXPECT_TRUE(read(far_, size, size) == "head" + payload);
  EXPECT_EQ(wait(writing), Reply(Value()));
}

TEST_F(SocketTableTest, SaysFarewellWhenASocketCloses) {
  const Reply near = bind();
  const Reply far = bind();
  const auto receiving = start("udpReceive", Map{{"handle", number(far, "handle")}});
  EXPECT_EQ(call("udpFarewell", datagram(near, far, "bye")), Reply(Value()));
  spinOnce();
  EXPECT_FALSE(receiving->has_value());
  call("close", Map{{"handle", number(near, "handle")}});
  const Reply received = wait(receiving);
  EXPECT_EQ(*std::get<Value>(received).getIf<Map>()->find("bytes"), bytes("bye"));
}

TEST_F(SocketTableTest, AnswersWhatWaitsOnASocketThatIsClosed) {
  connect();
  const auto reading = startReading(far_, 1, 1);
  EXPECT_EQ(call("close", Map{{"handle", far_}}), Reply(Value()));
  EXPECT_EQ(errorOf(wait(reading)), "ECANCELED");
  EXPECT_EQ(read(near_, 1, 1), "") << "the end of the stream";
  EXPECT_EQ(read(far_, 1, 1), "There is no such socket.");

  const auto accepting = start("tcpAccept", Map{{"handle", number(listen(), "handle")}});
  table_.closeAll();
  EXPECT_EQ(errorOf(wait(accepting)), "ECANCELED");
}

TEST_F(SocketTableTest, TellsWhyThereIsNoConnection) {
  const std::int64_t port = number(listen(), "port");
  EXPECT_EQ(errorOf(listen(port)), "EADDRINUSE");
  EXPECT_EQ(errorOf(wait(startConnecting("127.0.0.1", 1))), "ECONNREFUSED");
  EXPECT_EQ(errorOf(wait(startConnecting("example.org", 80))),
            "“example.org” port 80 is no network address.");
  EXPECT_EQ(errorOf(wait(startConnecting("127.0.0.1", 70000))),
            "“127.0.0.1” port 70000 is no network address.");
  // A full backlog accepts no more connections.
  std::array<SharedReply, 8> waiting;
  for (SharedReply& reply : waiting) reply = startConnecting("127.0.0.1", port, 300);
  EXPECT_EQ(errorOf(wait(waiting.back())), "ETIMEDOUT");
}

TEST(NetworkRulesTest, KnowsLocalNetworksAndWhatTheManifestAdds) {
  NetworkRules rules({.folders = {},
                      .datagrams = {{.port = 45457, .to = {"239.255.77.66", "ff02::b4e7"}}},
                      .networks = {"198.51.100.0/25", "not a network", "1.2.3.4/33"}});
  const auto isPeer = [&](const char* address) { return rules.isPeer(SocketAddress(address, 1)); };
  for (const char* address : {"10.1.2.3", "172.31.0.1", "192.168.9.9", "169.254.1.1", "fd00::1",
                              "fe80::1%lo", "::ffff:192.168.1.1", "198.51.100.127"}) {
    EXPECT_TRUE(isPeer(address)) << address;
  }
  for (const char* address :
       {"127.0.0.1", "::1", "0.0.0.0", "::", "::ffff:127.0.0.1", "172.32.0.1", "198.51.100.128",
        "203.0.113.7", "2001:db8::1", "224.0.0.1", "255.255.255.255", "::10.1.2.3"}) {
    EXPECT_FALSE(isPeer(address)) << address;
  }
  EXPECT_THROW(rules.expectPeer(SocketAddress("203.0.113.7", 1)), PlatformError);
  EXPECT_NO_THROW(rules.expectDatagramPort(SocketAddress("0.0.0.0", 45457)));
  EXPECT_THROW(rules.expectDatagramPort(SocketAddress("0.0.0.0", 0)), PlatformError);
  EXPECT_NO_THROW(rules.expectDatagramsTo(SocketAddress("ff02::b4e7", 45457)));
  EXPECT_NO_THROW(rules.expectDatagramsTo(SocketAddress("239.255.77.66", 0))) << "to join it";
  EXPECT_THROW(rules.expectDatagramsTo(SocketAddress("239.255.77.66", 53)), PlatformError);
  EXPECT_THROW(rules.expectDatagramsTo(SocketAddress("224.0.0.251", 45457)), PlatformError);
}

TEST_F(SocketTableTest, TalksToNobodyOutsideOfItsNetworks) {
  EXPECT_EQ(errorOf(wait(startConnecting("203.0.113.7", 1))),
            "“203.0.113.7” is not on a local network.");
  SocketTable strict{BundleNeeds{}};
  const Reply listener = wait(startOn(
      strict, "tcpListen",
      Map{{"address", "127.0.0.1"}, {"port", std::int64_t{0}}, {"backlog", std::int64_t{1}}}));
  const auto accepting = startOn(strict, "tcpAccept", Map{{"handle", number(listener, "handle")}});
  const Reply caller = wait(startConnecting("127.0.0.1", number(listener, "port")));
  EXPECT_EQ(read(number(caller, "handle"), 1, 1), "") << "it is hung up on";
  EXPECT_FALSE(accepting->has_value());
}

}  // namespace
}  // namespace brevanholt::platform
