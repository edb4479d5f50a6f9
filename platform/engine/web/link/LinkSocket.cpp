#include "platform/engine/web/link/LinkSocket.h"

#include "platform/engine/web/link/LinkFrame.h"

#include <glib-unix.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include <sys/socket.h>
#include <sys/uio.h>

namespace brevanholt::platform {
namespace {

constexpr int kReadsPerTurn = 16;  // then the rest of the main loop has its turn
constexpr std::size_t kPartsPerWrite = 64;
constexpr int kSocketBuffer = 4 << 20;
constexpr std::size_t kRefusedBuffer = 64 << 10;

}  // namespace

LinkSocket::LinkSocket(FileDescriptor socket, Events events)
    : socket_(std::move(socket)), events_(std::move(events)) {
  g_unix_set_fd_nonblocking(socket_.get(), TRUE, nullptr);
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof(kSocketBuffer));
  onReadable_ = LoopSource::whenReadable(socket_.get(), [this] { readable(); });
}

void LinkSocket::send(const Message& frame) {
  if (!socket_) return;
  outgoing_.insert(outgoing_.end(), frame.parts().begin(), frame.parts().end());
  if (!onWritable_) writeQueued();
}

void LinkSocket::readable() {
  const std::weak_ptr<char> alive = alive_;
  for (int round = 0; round < kReadsPerTurn; ++round) {
    if (!readSome() || alive.expired() || !onReadable_) return;
  }
}

std::span<std::uint8_t> LinkSocket::room() {
  if (!incoming_.hasSize) {
    return std::span(reinterpret_cast<std::uint8_t*>(&incoming_.size), LinkFrame::kSizePrefix)
        .subspan(incoming_.filled);
  }
  const std::size_t left = incoming_.size - incoming_.filled;
  if (!incoming_.isRefused) return {incoming_.storage.get() + incoming_.filled, left};
  // Behind the head there is room for what is dropped.
  const std::size_t at = std::min(incoming_.filled, LinkFrame::kLongestHead);
  return {incoming_.storage.get() + at, std::min(left, kRefusedBuffer - at)};
}

bool LinkSocket::readSome() {
  const std::span<std::uint8_t> target = room();
  const ssize_t count = ::recv(socket_.get(), target.data(), target.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return errno == EINTR;
  if (count <= 0) return end(), false;
  incoming_.filled += static_cast<std::size_t>(count);
  if (!incoming_.hasSize && incoming_.filled == LinkFrame::kSizePrefix) sizeArrived();
  return !incoming_.hasSize || incoming_.filled < incoming_.size || frameArrived();
}

void LinkSocket::sizeArrived() {
  incoming_.hasSize = true;
  incoming_.filled = 0;
  incoming_.isRefused = incoming_.size > LinkFrame::kLargest;
  try {
    const std::size_t size = incoming_.isRefused ? kRefusedBuffer : incoming_.size;
    incoming_.storage = std::make_shared_for_overwrite<std::uint8_t[]>(size);
  } catch (const std::bad_alloc&) {
    incoming_.isRefused = true;
    incoming_.storage = std::make_shared_for_overwrite<std::uint8_t[]>(kRefusedBuffer);
  }
}

bool LinkSocket::frameArrived() {
  const Incoming frame = std::exchange(incoming_, {});
  if (frame.isRefused) {
    const std::size_t size = std::min<std::size_t>(frame.size, LinkFrame::kLongestHead);
    events_.onRefused(Bytes({frame.storage.get(), size}, frame.storage));
  } else {
    events_.onFrame(Bytes({frame.storage.get(), frame.size}, frame.storage));
  }
  return true;
}

void LinkSocket::writeQueued() {
  while (!outgoing_.empty()) {
    std::array<iovec, kPartsPerWrite> parts{};
    const std::size_t count = std::min(outgoing_.size(), parts.size());
    for (std::size_t index = 0; index < count; ++index) {
      const std::size_t skipped = index == 0 ? outgoingOffset_ : 0;
      parts[index] = {const_cast<std::uint8_t*>(outgoing_[index].data()) + skipped,
                      outgoing_[index].size() - skipped};
    }
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = count;
    const ssize_t written = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) break;  // full, or closed; the reading side reports the latter
    outgoingOffset_ += static_cast<std::size_t>(written);
    while (!outgoing_.empty() && outgoingOffset_ >= outgoing_.front().size()) {
      outgoingOffset_ -= outgoing_.front().size();
      outgoing_.pop_front();
    }
  }
  if (outgoing_.empty()) return;
  if (errno != EAGAIN) {
    outgoing_.clear();
    outgoingOffset_ = 0;
    return;
  }
  onWritable_ = LoopSource::whenWritable(socket_.get(), [this] {
    onWritable_.stop();
    writeQueued();
  });
}

void LinkSocket::end() {
  onReadable_.stop();
  onWritable_.stop();
  outgoing_.clear();
  socket_.reset();
  events_.onEnd();
}

}  // namespace brevanholt::platform
