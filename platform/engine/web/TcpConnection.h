#pragma once

#include "platform/engine/web/EngineSocket.h"
#include "platform/engine/web/SocketAddress.h"

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
  ~TcpConnection() override;
  // Begins to connect. Throws SystemError.
  explicit TcpConnection(const SocketAddress& address);

  // Waits until the connection stands. `connected` makes what the page gets for it.
  void whenConnected(std::int64_t limitMilliseconds, MethodResult& result,
                     std::function<Value()> connected, std::function<void()> failed);
  [[nodiscard]] Value description() const;

  void read(std::int64_t minimum, std::int64_t maximum, MethodResult& result);
  void write(const Bytes& bytes, MethodResult& result);
  // Sends nothing more; what the other side sends can still be read.
  void finish();

 private:
  // Whether the read, or the write, is over.
  bool readNow();
  bool writeNow();
  void connectionSettled(int error);

  ReadinessWatch readable_;
  ReadinessWatch writable_;
  unsigned limitSource_ = 0;
  std::function<Value()> connected_;
  std::function<void()> failed_;
  OwedReply connecting_;

  OwedReply reading_;
  std::shared_ptr<std::uint8_t[]> buffer_;
  std::size_t minimum_ = 0;
  std::size_t maximum_ = 0;
  std::size_t filled_ = 0;

  OwedReply writing_;
  Bytes outgoing_;
  std::size_t written_ = 0;
};

}  // namespace brevanholt::platform
