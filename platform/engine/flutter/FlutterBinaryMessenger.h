#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/engine/flutter/FlutterFunctions.h"
#include "platform/gtk/GLibPointers.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

namespace brevanholt::platform {

// Messages to and from the Dart code of a Flutter engine.
//
// Dart keeps one message for a channel without a listener, and drops the others. So the first is
// sent alone, and the next ones follow once it was answered, which shows that there is a listener.
class FlutterBinaryMessenger final : public BinaryMessenger {
 public:
  FlutterBinaryMessenger(const FlutterFunctions& functions, FlBinaryMessenger* messenger);
  ~FlutterBinaryMessenger() override { stop(); }
  FlutterBinaryMessenger(const FlutterBinaryMessenger&) = delete;
  FlutterBinaryMessenger& operator=(const FlutterBinaryMessenger&) = delete;

  void send(const std::string& channel, Message message) override;
  void sendUntilHandled(const std::string& channel, Message message,
                        UniqueFunction<void()> handled) override;
  void setMessageHandler(const std::string& channel, Handler handler) override;

  // The engine runs: what was kept until now is sent.
  void start();
  // The Dart code ended and will start again: what it has not handled is kept until it calls.
  void uiEnded();
  // Nothing is sent or handed on any more; replies that are owed are answered with the empty
  // message. For good, and before the engine ends.
  void stop();

 private:
  struct Outgoing {
    Message message;
    UniqueFunction<void()> handled;  // empty if no reply is wanted
  };
  struct Channel {
    Handler handler;
    std::deque<Outgoing> waiting;
    bool listens = false;  // the Dart code has answered on it
    bool asked = false;    // the first message is on its way
  };
  struct Sent {
    std::string channel;
    Outgoing outgoing;
  };
  class OwedReplies;
  struct PendingAnswer;

  void post(const std::string& channel, Outgoing outgoing);
  void sendWaiting(const std::string& channel);
  void sendOne(const std::string& channel, Outgoing outgoing, bool wantsAnswer);
  void answered(std::uint64_t number, const GError* error);
  void keepUnhandled();
  void received(const char* channel, GBytes* message, FlBinaryMessengerResponseHandle* handle);

  const FlutterFunctions& functions_;
  GObjectPointer<FlBinaryMessenger> messenger_;
  std::map<std::string, Channel, std::less<>> channels_;
  std::map<std::uint64_t, Sent> unanswered_;  // in the order in which they were sent
  std::uint64_t lastNumber_ = 0;
  bool runs_ = false;
  bool isStopped_ = false;
  std::shared_ptr<OwedReplies> owed_;
  std::shared_ptr<FlutterBinaryMessenger*> self_;  // what callbacks of the engine hold weakly
};

}  // namespace brevanholt::platform
