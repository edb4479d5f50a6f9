#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/engine/web/link/LinkFrame.h"
#include "platform/engine/web/link/LinkSocket.h"

#include <deque>
#include <map>
#include <memory>
#include <set>

namespace brevanholt::platform {

// Messages to and from the page that is loaded now. Calls reach their handlers in the order in
// which the page made them; replies go to the page that asked, or nowhere when it has gone.
class WebBinaryMessenger final : public BinaryMessenger {
 public:
  void send(const std::string& channel, Message message) override;
  void sendUntilHandled(const std::string& channel, Message message,
                        UniqueFunction<void()> handled) override;
  void setMessageHandler(const std::string& channel, Handler handler) override;

  // A new page: it listens on nothing yet. `onPageGone` is called when it ends.
  void attach(FileDescriptor socket, std::function<void()> onPageGone);
  void detach();

  // Whether the page that is loaded now listens on a channel.
  [[nodiscard]] bool isHeard(const std::string& channel) const {
    return listening_.contains(channel);
  }

 private:
  struct Outgoing {
    std::string channel;
    Message message;
    UniqueFunction<void()> handled;  // empty if no reply is wanted
  };

  void send(Outgoing outgoing);
  void handled(std::uint32_t number);
  void frameArrived(const Bytes& bytes);
  void frameRefused(const Bytes& head);
  void callArrived(LinkFrame frame);
  void listenerArrived(const std::string& channel);

  std::map<std::string, Handler> handlers_;
  std::map<std::string, std::deque<Outgoing>>
      kept_;                                     // for channels that the page does not hear yet
  std::map<std::uint32_t, Outgoing> unhandled_;  // sent, by the number that the page answers with
  std::uint32_t lastNumber_ = 0;
  std::set<std::string> listening_;
  std::shared_ptr<LinkSocket> page_;
};

}  // namespace brevanholt::platform
