#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/engine/web/LinkFrame.h"
#include "platform/engine/web/LinkSocket.h"

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
  void setMessageHandler(const std::string& channel, Handler handler) override;

  // A new page: it listens on nothing yet. `onPageGone` is called when it ends.
  void attach(FileDescriptor socket, std::function<void()> onPageGone);
  void detach();

 private:
  void frameArrived(const Bytes& bytes);
  void callArrived(LinkFrame frame);
  void listenerArrived(const std::string& channel);

  std::map<std::string, Handler> handlers_;
  std::map<std::string, std::deque<Message>> kept_;  // for channels that the page does not hear yet
  std::set<std::string> listening_;
  std::shared_ptr<LinkSocket> page_;
};

}  // namespace brevanholt::platform
