#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/channel/StandardMethodCodec.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A UI that listens on every channel, remembers what it was sent, and makes calls.
class FakeBinaryMessenger final : public BinaryMessenger {
 public:
  void send(const std::string& /*channel*/, Message message) override {
    events.push_back(StandardMethodCodec::decodeMethodCall(message.joined()));
  }
  void sendUntilHandled(const std::string& channel, Message message,
                        UniqueFunction<void()> handled) override {
    send(channel, std::move(message));
    if (handlesEvents) handled();
  }
  void setMessageHandler(const std::string& channel, Handler handler) override {
    handlers_[channel] = std::move(handler);
  }

  void deliver(const std::string& channel, Bytes message, BinaryReply reply) {
    if (!hasHandler(channel)) return reply({});
    handlers_.at(channel)(std::move(message), std::move(reply));
  }
  // The reply, once there is one.
  std::shared_ptr<std::optional<Reply>> callRaw(const std::string& channel, Bytes message) {
    auto answer = std::make_shared<std::optional<Reply>>();
    deliver(channel, std::move(message), [answer](const Message& reply) {
      if (answer->has_value()) throw std::logic_error("answered twice");
      *answer = StandardMethodCodec::decodeReply(reply.joined());
    });
    return answer;
  }
  std::shared_ptr<std::optional<Reply>> call(const std::string& channel, const std::string& method,
                                             Value arguments = {}) {
    return callRaw(channel,
                   StandardMethodCodec::encodeMethodCall({method, std::move(arguments)}).joined());
  }
  [[nodiscard]] bool hasHandler(const std::string& channel) const {
    const auto found = handlers_.find(channel);
    return found != handlers_.end() && found->second;
  }

  std::vector<MethodCall> events;
  bool handlesEvents = true;  // or ends before it does

 private:
  std::map<std::string, Handler> handlers_;
};

}  // namespace brevanholt::platform
