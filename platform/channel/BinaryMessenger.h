#pragma once

#include "platform/channel/Message.h"
#include "platform/foundation/UniqueFunction.h"

#include <functional>
#include <string>

namespace brevanholt::platform {

// Answers one message; the engine ignores it when the page that asked is gone.
using BinaryReply = UniqueFunction<void(Message)>;

// Carries messages between the host and the UI engine, by channel name, on the main thread.
class BinaryMessenger {
 public:
  using Handler = std::function<void(Bytes message, BinaryReply reply)>;

  virtual ~BinaryMessenger() = default;
  // Kept, in order, until the UI listens on `channel`.
  virtual void send(const std::string& channel, Message message) = 0;
  // The same; `handled` is called when the UI has handled the message. A UI that ends before that
  // is sent the message again once it was started again, so that it may get it twice. Engines that
  // cannot tell call `handled` at once.
  virtual void sendUntilHandled(const std::string& channel, Message message,
                                UniqueFunction<void()> handled) {
    send(channel, std::move(message));
    handled();
  }
  // An empty handler removes the one that is set. Messages on a channel without a handler are
  // answered with the empty message, which reads as "not implemented".
  virtual void setMessageHandler(const std::string& channel, Handler handler) = 0;
};

}  // namespace brevanholt::platform
