#pragma once

#include "platform/engine/web/sockets/EngineSocket.h"
#include "platform/engine/web/sockets/OwedReply.h"
#include "platform/engine/web/sockets/SocketAddress.h"
#include "platform/gtk/LoopSource.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

namespace brevanholt::platform {

// A stream. One read and one write at a time: while the page does not read, the other side's window
// closes, and a write is answered when the system has taken all of it.
class TcpConnection final : public EngineSocket {
 public:
  static constexpr std::int64_t kLongestRead = 16 << 20;

  explicit TcpConnection(FileDescriptor connected);
  // Begins to connect. Throws SystemError.
  explicit TcpConnection(const SocketAddress& address);

  // Waits until the connection is established. `connected` makes the reply to the page.
  void whenConnected(std::int64_t limitMilliseconds, MethodResult& result,
                     std::function<Value()> connected, std::function<void()> failed);
  [[nodiscard]] Value description() const;

  void read(std::int64_t minimum, std::int64_t maximum, MethodResult& result);
  // The parts leave one after the other, as if they were one.
  void write(const Bytes& head, const Bytes& bytes, MethodResult& result);
  // Sends nothing more; what the other side sends can still be read.
  void finish();

 private:
  // Whether the read, or the write, was answered. Answering may destroy this.
  bool readNow();
  bool writeNow();
  void connectionSettled(int error);

  LoopSource onReadable_;
  LoopSource onWritable_;
  LoopSource onTimeLimit_;
  std::function<Value()> connected_;
  std::function<void()> failed_;
  OwedReply connecting_;

  OwedReply reading_;
  std::shared_ptr<std::uint8_t[]> buffer_;
  std::size_t minimum_ = 0;
  std::size_t maximum_ = 0;
  std::size_t filled_ = 0;

  OwedReply writing_;
  std::array<Bytes, 2> outgoing_;
  std::size_t written_ = 0;
};

}  // namespace brevanholt::platform
