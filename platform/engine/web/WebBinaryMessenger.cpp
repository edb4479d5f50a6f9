#include "platform/engine/web/WebBinaryMessenger.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {

using Kind = LinkFrame::Kind;

void WebBinaryMessenger::send(const std::string& channel, Message message) {
  if (!page_ || !listening_.contains(channel)) {
    kept_[channel].push_back(std::move(message));
    return;
  }
  page_->send(LinkFrame::encode(Kind::kMessage, channel, 0, message));
}

void WebBinaryMessenger::setMessageHandler(const std::string& channel, Handler handler) {
  if (handler) {
    handlers_[channel] = std::move(handler);
  } else {
    handlers_.erase(channel);
  }
}

void WebBinaryMessenger::attach(FileDescriptor socket, std::function<void()> onPageGone) {
  detach();
  page_ = std::make_shared<LinkSocket>(
      std::move(socket), [this](const Bytes& frame) { frameArrived(frame); },
      [this, onPageGone = std::move(onPageGone)] {
        const auto tell = onPageGone;  // detaching destroys this very function
        detach();
        tell();
      });
}

void WebBinaryMessenger::detach() {
  listening_.clear();
  page_.reset();
}

void WebBinaryMessenger::frameArrived(const Bytes& bytes) {
  auto frame = LinkFrame::parse(bytes);
  if (!frame) return logWarning("the page sent what is no frame");
  switch (frame->kind) {
    case Kind::kMessage:
      return callArrived(std::move(*frame));
    case Kind::kListen:
      return listenerArrived(frame->channel);
    case Kind::kReply:
      return;  // events expect none
  }
}

void WebBinaryMessenger::callArrived(LinkFrame frame) {
  BinaryReply reply = [page = std::weak_ptr(page_), number = frame.number](const Message& message) {
    const auto asker = page.lock();
    if (asker && number != 0) asker->send(LinkFrame::encode(Kind::kReply, {}, number, message));
  };
  const auto found = handlers_.find(frame.channel);
  if (found == handlers_.end()) return reply({});
  const Handler handler = found->second;  // it may be replaced while it runs
  handler(std::move(frame.message), std::move(reply));
}

void WebBinaryMessenger::listenerArrived(const std::string& channel) {
  listening_.insert(channel);
  const auto found = kept_.find(channel);
  if (found == kept_.end()) return;
  const auto messages = std::move(found->second);
  kept_.erase(found);
  for (const Message& message : messages) send(channel, message);
}

}  // namespace brevanholt::platform
