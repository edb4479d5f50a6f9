#pragma once

#include "platform/engine/web/sockets/EngineSocket.h"
#include "platform/engine/web/sockets/OwedReply.h"
#include "platform/engine/web/sockets/SocketAddress.h"
#include "platform/gtk/LoopSource.h"

#include <string>

namespace brevanholt::platform {

// A datagram socket. The system drops what arrives faster than the page asks for it.
class UdpSocket final : public EngineSocket {
 public:
  // With `isShared`, others may bind the same port too, as discovery does. Throws SystemError.
  UdpSocket(const SocketAddress& address, bool isShared);
  ~UdpSocket() override;

  [[nodiscard]] Value description() const;
  // Joins a multicast group on one interface, and sends to groups from there.
  void join(const std::string& group, const std::string& interface);
  // Throws SystemError.
  void send(const Bytes& bytes, const SocketAddress& to);
  // A datagram that this socket sends itself, and drops when it receives it.
  void ignore(const Bytes& bytes) { ignored_ = bytes; }
  void receive(MethodResult& result);
  // The datagram that is sent when the socket closes for whatever reason; none if it is empty.
  void setFarewell(const Bytes& bytes, const SocketAddress& to);

 private:
  Bytes farewell_;
  SocketAddress farewellTo_;
  Bytes ignored_;
  // Whether the call was answered.
  bool receiveNow();

  LoopSource onReadable_;
  OwedReply receiving_;
};

}  // namespace brevanholt::platform
