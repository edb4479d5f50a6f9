#include "platform/engine/flutter/FlutterBinaryMessenger.h"

#include "platform/foundation/Log.h"

#include <iterator>
#include <utility>

namespace brevanholt::platform {
namespace {

// The message's bytes without a copy, where they are in one piece. Null for the empty message.
GBytesPointer bytesOf(const Message& message) {
  if (message.empty()) return nullptr;
  auto* whole = new Bytes(message.joined());
  return GBytesPointer(g_bytes_new_with_free_func(
      whole->data(), whole->size(), [](gpointer bytes) { delete static_cast<Bytes*>(bytes); },
      whole));
}

Bytes sharedBytes(GBytes* message) {
  if (message == nullptr) return {};
  gsize size = 0;
  const auto* data = static_cast<const std::uint8_t*>(g_bytes_get_data(message, &size));
  return {{data, size}, std::shared_ptr<GBytes>(g_bytes_ref(message), g_bytes_unref)};
}

}  // namespace

// The replies that the Dart code waits for. Each is sent once, by the first of these: the host's
// answer, dropping the reply, the end of the messenger.
class FlutterBinaryMessenger::OwedReplies {
 public:
  using Handle = GObjectPointer<FlBinaryMessengerResponseHandle>;

  OwedReplies(const FlutterFunctions& functions, FlBinaryMessenger* messenger)
      : functions_(functions), messenger_(messenger) {}

  [[nodiscard]] std::uint64_t add(FlBinaryMessengerResponseHandle* handle) {
    handles_.emplace(++last_, retained(handle));
    return last_;
  }
  void send(std::uint64_t number, const Message& message) {
    const auto handle = handles_.extract(number);
    if (!handle) return;
    const GBytesPointer bytes = bytesOf(message);
    GError* failure = nullptr;
    functions_.fl_binary_messenger_send_response(messenger_, handle.mapped().get(), bytes.get(),
                                                 &failure);
    const GErrorPointer error(failure);
    if (error)
      logWarning(std::string("a reply did not reach the user interface: ") + error->message);
  }
  void sendAll() {
    while (!handles_.empty()) send(handles_.begin()->first, {});
  }

 private:
  const FlutterFunctions& functions_;
  FlBinaryMessenger* messenger_;
  std::map<std::uint64_t, Handle> handles_;
  std::uint64_t last_ = 0;
};

// The user data of a response. The engine does not return it if it ends before the response.
struct FlutterBinaryMessenger::PendingAnswer {
  std::weak_ptr<FlutterBinaryMessenger*> messenger;
  std::uint64_t number;
};

FlutterBinaryMessenger::FlutterBinaryMessenger(const FlutterFunctions& functions,
                                               FlBinaryMessenger* messenger)
    : functions_(functions),
      messenger_(retained(messenger)),
      owed_(std::make_shared<OwedReplies>(functions, messenger)),
      self_(std::make_shared<FlutterBinaryMessenger*>(this)) {}

void FlutterBinaryMessenger::send(const std::string& channel, Message message) {
  post(channel, {.message = std::move(message), .handled = nullptr});
}

void FlutterBinaryMessenger::sendUntilHandled(const std::string& channel, Message message,
                                              UniqueFunction<void()> handled) {
  post(channel, {.message = std::move(message), .handled = std::move(handled)});
}

void FlutterBinaryMessenger::setMessageHandler(const std::string& channel, Handler handler) {
  if (isStopped_) return;
  Channel& entry = channels_[channel];
  entry.handler = std::move(handler);
  const FlMessageHandler onMessage = [](FlBinaryMessenger*, const char* name, GBytes* message,
                                        FlBinaryMessengerResponseHandle* handle, gpointer self) {
    static_cast<FlutterBinaryMessenger*>(self)->received(name, message, handle);
  };
  functions_.fl_binary_messenger_set_message_handler_on_channel(
      messenger_.get(), channel.c_str(), entry.handler ? onMessage : nullptr, this, nullptr);
}

void FlutterBinaryMessenger::start() {
  runs_ = true;
  for (const auto& [name, channel] : channels_) sendWaiting(name);
}

void FlutterBinaryMessenger::uiEnded() {
  runs_ = false;
  for (auto& [name, channel] : channels_) channel.listens = channel.asked = false;
  keepUnhandled();
}

void FlutterBinaryMessenger::stop() {
  if (std::exchange(isStopped_, true)) return;
  runs_ = false;
  self_.reset();
  for (const auto& [name, channel] : channels_) {
    if (!channel.handler) continue;
    functions_.fl_binary_messenger_set_message_handler_on_channel(messenger_.get(), name.c_str(),
                                                                  nullptr, nullptr, nullptr);
  }
  owed_->sendAll();
  owed_.reset();
}

void FlutterBinaryMessenger::post(const std::string& channel, Outgoing outgoing) {
  if (isStopped_) return;
  channels_[channel].waiting.push_back(std::move(outgoing));
  sendWaiting(channel);
}

void FlutterBinaryMessenger::sendWaiting(const std::string& name) {
  Channel& channel = channels_[name];
  while (runs_ && !channel.waiting.empty() && !channel.asked) {
    Outgoing outgoing = std::move(channel.waiting.front());
    channel.waiting.pop_front();
    channel.asked = !channel.listens;
    const bool wantsAnswer = channel.asked || outgoing.handled;
    sendOne(name, std::move(outgoing), wantsAnswer);
  }
}

void FlutterBinaryMessenger::sendOne(const std::string& channel, Outgoing outgoing,
                                     bool wantsAnswer) {
  const GBytesPointer bytes = bytesOf(outgoing.message);
  if (!wantsAnswer) {
    functions_.fl_binary_messenger_send_on_channel(messenger_.get(), channel.c_str(), bytes.get(),
                                                   nullptr, nullptr, nullptr);
    return;
  }
  const std::uint64_t number = ++lastNumber_;
  unanswered_.emplace(number, Sent{.channel = channel, .outgoing = std::move(outgoing)});
  functions_.fl_binary_messenger_send_on_channel(
      messenger_.get(), channel.c_str(), bytes.get(), nullptr,
      [](GObject* messenger, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<PendingAnswer> pending(static_cast<PendingAnswer*>(data));
        const auto self = pending->messenger.lock();
        if (!self) return;
        GError* failure = nullptr;
        const GBytesPointer answer((*self)->functions_.fl_binary_messenger_send_on_channel_finish(
            reinterpret_cast<FlBinaryMessenger*>(messenger), result, &failure));
        (*self)->answered(pending->number, GErrorPointer(failure).get());
      },
      new PendingAnswer{self_, number});
}

void FlutterBinaryMessenger::answered(std::uint64_t number, const GError* error) {
  if (!unanswered_.contains(number)) return;  // by Dart code that has ended since
  if (error != nullptr) {
    logWarning(std::string("a message did not reach the user interface: ") + error->message);
    return uiEnded();
  }
  auto sent = unanswered_.extract(number);
  const std::string name = std::move(sent.mapped().channel);
  Channel& channel = channels_[name];
  channel.listens = true;
  channel.asked = false;
  if (sent.mapped().outgoing.handled) sent.mapped().outgoing.handled();
  sendWaiting(name);
}

void FlutterBinaryMessenger::keepUnhandled() {
  while (!unanswered_.empty()) {
    auto last = unanswered_.extract(std::prev(unanswered_.end()));
    channels_[last.mapped().channel].waiting.push_front(std::move(last.mapped().outgoing));
  }
}

void FlutterBinaryMessenger::received(const char* channel, GBytes* message,
                                      FlBinaryMessengerResponseHandle* handle) {
  if (isStopped_) return;
  if (!runs_) start();
  // A reply that is destroyed unsent is sent empty.
  struct Reply {
    std::weak_ptr<OwedReplies> owed;
    std::uint64_t number;

    Reply(std::weak_ptr<OwedReplies> replies, std::uint64_t identifier)
        : owed(std::move(replies)), number(identifier) {}
    Reply(Reply&&) noexcept = default;
    Reply& operator=(Reply&&) = delete;
    ~Reply() { send({}); }
    void operator()(const Message& answer) { send(answer); }
    void send(const Message& answer) {
      if (const auto replies = owed.lock()) replies->send(number, answer);
    }
  };
  Reply reply(owed_, owed_->add(handle));
  const auto found = channels_.find(std::string_view(channel));
  if (found == channels_.end() || !found->second.handler) return;
  const Handler handler = found->second.handler;  // it may be replaced while it runs
  handler(sharedBytes(message), std::move(reply));
}

}  // namespace brevanholt::platform
