#pragma once

#include "platform/channel/Message.h"
#include "platform/files/FileDescriptor.h"
#include "platform/gtk/LoopSource.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>

namespace brevanholt::platform {

// The host's end of the socket that joins it to one page. It never blocks: bytes that the page has
// not read yet are queued, and each frame is handed on when it is complete. For the main thread.
class LinkSocket {
 public:
  struct Events {
    std::function<void(Bytes)> onFrame;  // each frame, without its size
    // The head of a frame that is too large, or for which there is no memory; the rest was dropped.
    std::function<void(Bytes)> onRefused;
    std::function<void()> onEnd;  // once, when the page has gone
  };
  // Each event may destroy this.
  LinkSocket(FileDescriptor socket, Events events);
  LinkSocket(const LinkSocket&) = delete;
  LinkSocket& operator=(const LinkSocket&) = delete;

  // Takes a frame with its size in front.
  void send(const Message& frame);

 private:
  // A frame on its way in.
  struct Incoming {
    std::uint32_t size = 0;
    std::size_t filled = 0;  // of the size first, then of the frame
    bool hasSize = false;
    bool isRefused = false;
    std::shared_ptr<std::uint8_t[]> storage;
  };

  void readable();
  // False where there is nothing more to read for now, or the link has ended.
  bool readSome();
  // Where the next bytes go, and how many of them at most.
  [[nodiscard]] std::span<std::uint8_t> room();
  void sizeArrived();
  bool frameArrived();
  void writeQueued();
  void end();

  FileDescriptor socket_;
  Events events_;
  Incoming incoming_;
  std::deque<Bytes> outgoing_;
  std::size_t outgoingOffset_ = 0;  // of the first part, what is written already
  LoopSource onReadable_;
  LoopSource onWritable_;
  std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace brevanholt::platform
