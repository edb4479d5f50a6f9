#include "platform/engine/web/WebBinaryMessenger.h"

#include "platform/channel/StandardMethodCodec.h"
#include "platform/foundation/Log.h"

namespace brevanholt::platform {

using Kind = LinkFrame::Kind;

void WebBinaryMessenger::send(const std::string& channel, Message message) {
  send({.channel = channel, .message = std::move(message), .handled = nullptr});
}

void WebBinaryMessenger::sendUntilHandled(const std::string& channel, Message message,
                                          UniqueFunction<void()> handled) {
  send({.channel = channel, .message = std::move(message), .handled = std::move(handled)});
}

void WebBinaryMessenger::send(Outgoing outgoing) {
  if (!page_ || !listening_.contains(outgoing.channel)) {
    kept_[outgoing.channel].push_back(std::move(outgoing));
    return;
  }
  const std::uint32_t number = outgoing.handled ? ++lastNumber_ : 0;
  page_->send(LinkFrame::encode(Kind::kMessage, outgoing.channel, number, outgoing.message));
  if (number != 0) unhandled_.emplace(number, std::move(outgoing));
}

void WebBinaryMessenger::handled(std::uint32_t number) {
  auto outgoing = unhandled_.extract(number);
  if (outgoing) outgoing.mapped().handled();
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
      std::move(socket),
      LinkSocket::Events{.onFrame = [this](const Bytes& frame) { frameArrived(frame); },
                         .onRefused = [this](const Bytes& head) { frameRefused(head); },
                         .onEnd =
                             [this, onPageGone = std::move(onPageGone)] {
                               const auto tell = onPageGone;  // detaching destroys this function
                               detach();
                               tell();
                             }});
}

void WebBinaryMessenger::detach() {
  listening_.clear();
  page_.reset();
  while (!unhandled_.empty()) {
    auto last = unhandled_.extract(std::prev(unhandled_.end()));
    kept_[last.mapped().channel].push_front(std::move(last.mapped()));
  }
}

void WebBinaryMessenger::frameArrived(const Bytes& bytes) {
  auto frame = LinkFrame::parse(bytes);
  if (!frame) return logWarning("invalid frame from the page");
  switch (frame->kind) {
    case Kind::kMessage:
      return callArrived(std::move(*frame));
    case Kind::kListen:
      return listenerArrived(frame->channel);
    case Kind::kReply:
      return handled(frame->number);
  }
}

void WebBinaryMessenger::frameRefused(const Bytes& head) {
  logWarning("a frame from the page is too large");
  const auto frame = LinkFrame::parse(head);
  if (!frame || frame->kind != Kind::kMessage || frame->number == 0) return;
  const MethodError error{"message_too_large", "The message is too large.", {}};
  page_->send(
      LinkFrame::encode(Kind::kReply, {}, frame->number, StandardMethodCodec::encodeReply(error)));
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
  auto messages = std::move(found->second);
  kept_.erase(found);
  for (Outgoing& outgoing : messages) send(std::move(outgoing));
}

}  // namespace brevanholt::platform
