#include "platform/engine/web/extension/PageConnection.h"

#include "platform/engine/web/link/LinkFrame.h"

#include <glib-unix.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/uio.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kBufferSize = 256 << 10;
constexpr std::size_t kLargeFrame = 32 << 10;  // from here on, reading in place beats copying
constexpr int kReadsPerTurn = 16;
constexpr int kSocketBuffer = 4 << 20;

void deleteWeak(gpointer data) {
  delete static_cast<std::weak_ptr<PageConnection>*>(data);
}

std::uint8_t* dataOf(JSCValue* array) {
  gsize length = 0;
  return static_cast<std::uint8_t*>(jsc_value_typed_array_get_data(array, &length));
}

}  // namespace

PageConnection::PageConnection(FileDescriptor socket)
    : socket_(std::move(socket)), buffer_(kBufferSize) {
  g_unix_set_fd_nonblocking(socket_.get(), TRUE, nullptr);
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof(kSocketBuffer));
}

void PageConnection::exposeTo(JSCContext* context) {
  const GObjectPointer<JSCValue> link(jsc_value_new_object(context, nullptr, nullptr));
  const GObjectPointer<JSCValue> connectFunction(jsc_value_new_function(
      context, "connect", G_CALLBACK(connectFromScript), new std::weak_ptr(weak_from_this()),
      deleteWeak, G_TYPE_NONE, 1, JSC_TYPE_VALUE));
  const GObjectPointer<JSCValue> sendFunction(jsc_value_new_function_variadic(
      context, "send", G_CALLBACK(sendFromScript), new std::weak_ptr(weak_from_this()), deleteWeak,
      G_TYPE_NONE));
  jsc_value_object_set_property(link.get(), "connect", connectFunction.get());
  jsc_value_object_set_property(link.get(), "send", sendFunction.get());
  jsc_context_set_value(context, "brevanholtEngineLink", link.get());
}

void PageConnection::connectFromScript(JSCValue* receiver, std::weak_ptr<PageConnection>* self) {
  if (const auto connection = self->lock()) connection->connect(receiver);
}

void PageConnection::sendFromScript(GPtrArray* arrays, std::weak_ptr<PageConnection>* self) {
  if (const auto connection = self->lock()) connection->send(arrays);
}

void PageConnection::connect(JSCValue* receiver) {
  if (jsc_value_is_function(receiver) == FALSE) return;
  receiver_ = retained(receiver);
  if (onReadable_ || !socket_) return;
  onReadable_ = LoopSource::whenReadable(socket_.get(), [this] {
    const auto self = shared_from_this();  // a script may end the page
    readable();
  });
}

void PageConnection::send(const GPtrArray* arrays) {
  if (!socket_) return;
  std::uint32_t frameSize = 0;
  std::size_t size = 0;
  std::vector<iovec> parts{{&frameSize, LinkFrame::kSizePrefix}};
  for (guint index = 0; index < arrays->len; ++index) {
    auto* array = static_cast<JSCValue*>(g_ptr_array_index(arrays, index));
    if (jsc_value_is_typed_array(array) == FALSE) continue;
    parts.push_back({dataOf(array), jsc_value_typed_array_get_size(array)});
    size += parts.back().iov_len;
  }
  if (size > UINT32_MAX) {
    return jsc_context_throw(jsc_context_get_current(), "A frame has a size of 32 bits.");
  }
  frameSize = static_cast<std::uint32_t>(size);

  std::size_t sent = 0;
  if (outgoing_.empty()) {
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    const ssize_t count = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL);
    sent = count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  // The page may change its arrays as soon as this returns: what the socket did not take is copied.
  for (const iovec& part : parts) {
    const std::size_t skipped = std::min(sent, part.iov_len);
    const auto* data = static_cast<const std::uint8_t*>(part.iov_base);
    outgoing_.insert(outgoing_.end(), data + skipped, data + part.iov_len);
    sent -= skipped;
  }
  if (!onWritable_) writeQueued();
}

void PageConnection::writeQueued() {
  while (written_ < outgoing_.size()) {
    const ssize_t count = ::send(socket_.get(), outgoing_.data() + written_,
                                 outgoing_.size() - written_, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) break;
    written_ += static_cast<std::size_t>(count);
  }
  if (written_ < outgoing_.size() && errno == EAGAIN) {
    onWritable_ = LoopSource::whenWritable(socket_.get(), [this] {
      onWritable_.stop();
      writeQueued();
    });
    return;
  }
  if (outgoing_.capacity() > kBufferSize) outgoing_ = {};
  outgoing_.clear();
  written_ = 0;
}

void PageConnection::readable() {
  for (int round = 0; round < kReadsPerTurn && socket_; ++round) {
    if (!(frame_ ? readIntoFrame() : readIntoBuffer())) break;
  }
  if (!socket_) onReadable_.stop();
}

bool PageConnection::readIntoBuffer() {
  const ssize_t count =
      ::recv(socket_.get(), buffer_.data() + buffered_, buffer_.size() - buffered_, 0);
  if (count < 0) return errno == EINTR;
  if (count == 0) return socket_.reset(), false;
  buffered_ += static_cast<std::size_t>(count);
  takeFramesFromBuffer();
  return true;
}

bool PageConnection::readIntoFrame() {
  const ssize_t count =
      ::recv(socket_.get(), dataOf(frame_.get()) + frameFilled_, frameSize_ - frameFilled_, 0);
  if (count < 0) return errno == EINTR;
  if (count == 0) return socket_.reset(), false;
  frameFilled_ += static_cast<std::size_t>(count);
  if (frameFilled_ == frameSize_) deliver();
  return true;
}

void PageConnection::takeFramesFromBuffer() {
  std::size_t position = 0;
  while (!frame_ && buffered_ - position >= LinkFrame::kSizePrefix) {
    std::uint32_t size = 0;
    std::memcpy(&size, buffer_.data() + position, sizeof(size));
    const std::size_t available = buffered_ - position - LinkFrame::kSizePrefix;
    if (available < size && size < kLargeFrame) break;  // the rest comes into the buffer
    position += LinkFrame::kSizePrefix;
    beginFrame(size);
    frameFilled_ = std::min<std::size_t>(available, size);
    std::memcpy(dataOf(frame_.get()), buffer_.data() + position, frameFilled_);
    position += frameFilled_;
    if (frameFilled_ == size) deliver();
  }
  std::memmove(buffer_.data(), buffer_.data() + position, buffered_ - position);
  buffered_ -= position;
}

void PageConnection::beginFrame(std::size_t size) {
  const GObjectPointer<JSCContext> context = retained(jsc_value_get_context(receiver_.get()));
  frame_.reset(jsc_value_new_typed_array(context.get(), JSC_TYPED_ARRAY_UINT8, size));
  frameSize_ = size;
}

void PageConnection::deliver() {
  const GObjectPointer<JSCValue> frame = std::exchange(frame_, nullptr);
  const GObjectPointer<JSCValue> nothing(
      jsc_value_function_call(receiver_.get(), JSC_TYPE_VALUE, frame.get(), G_TYPE_NONE));
}

}  // namespace brevanholt::platform
