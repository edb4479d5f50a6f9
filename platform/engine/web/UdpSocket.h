#pragma once

#include "platform/engine/web/EngineSocket.h"
#include "platform/engine/web/SocketAddress.h"

#include <string>

namespace brevanholt::platform {

// A datagram socket. What comes in faster than the page asks for it is the system's to drop.
class UdpSocket final : public EngineSocket {
 public:
  // With `isShared`, others may bind the same port too, as discovery does. Throws SystemError.
  UdpSocket(const SocketAddress& address, bool isShared);

  [[nodiscard]] Value description() const;
  // Joins a multicast group on one interface, and sends to groups from there.
  void join(const std::string& group, const std::string& interface);
  void send(const Bytes& bytes, const SocketAddress& to, MethodResult& result);
  void receive(MethodResult& result);

 private:
  // Whether one was there.
  bool receiveNow();

  ReadinessWatch readable_;
  OwedReply receiving_;
};

}  // namespace brevanholt::platform
