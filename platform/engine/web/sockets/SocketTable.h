#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/engine/web/sockets/Announcements.h"
#include "platform/engine/web/sockets/EngineSocket.h"
#include "platform/engine/web/sockets/NetworkRules.h"

#include <cstdint>
#include <map>
#include <memory>

namespace brevanholt::platform {

// The sockets that the page has open, by handle. For the main thread; nothing here blocks.
//
//   interfaces {}                              [{name, index, isLoopback, canMulticast, addresses:
//                                               [{address, prefix}]}] of those that are up
//   udpBind {address, port, isShared}          {handle, port}
//   udpJoin {handle, group, interface}         null; it sends to groups from there, too
//   udpSend {handle, bytes, address, port}     null
//   udpFarewell {handle, bytes, address, port} null: they are sent when the socket closes
//   udpRepeat {datagrams, shortest, longest}   null: each {handle, bytes, address, port} is sent
//   again
//                                              and again, after a random one of these milliseconds,
//                                              in place of those before; none where the list is
//                                              empty
//   udpReceive {handle}                        {bytes, address, port}, when one has come
//                                              that is not what the socket itself repeats
//   tcpListen {address, port, backlog}         {handle, port}
//   tcpAccept {handle}                         {handle, address, port} of the next caller
//   tcpConnect {address, port, limit}          {handle, address, port}; the limit in milliseconds
//   tcpRead {handle, minimum, maximum}         bytes: at least the minimum, fewer only at the end
//   tcpWrite {handle, bytes, head?}            null, when the system has taken the head and them
//   tcpFinish {handle}                         null: nothing more is sent, the rest can be read
//   close {handle}                             null; what waits on the socket fails with ECANCELED
//
// Whom the page may talk to is NetworkRules' matter. Addresses are numeric, with a zone where IPv6
// needs one ("fe80::1%eth0"). A failure is the error "socket_error" with the system's text, and the
// error's name ("ECONNREFUSED") as details.
class SocketTable {
 public:
  explicit SocketTable(const BundleNeeds& needs) : rules_(needs) {}

  // Answers now or later, once.
  void perform(const MethodCall& call, MethodResult result);
  void closeAll();

  // Removes a TCP connection from the table and returns it. Throws PlatformError where there is
  // none under that handle. The handle is not used again.
  [[nodiscard]] FileDescriptor release(std::int64_t handle);

 private:
  template <class Socket>
  [[nodiscard]] Socket& at(const Map& arguments) const;
  [[nodiscard]] Value add(std::unique_ptr<EngineSocket> socket, const Value& description);
  void expectRoom() const;

  [[nodiscard]] bool performUdp(const MethodCall& call, MethodResult& result);
  [[nodiscard]] bool performTcp(const MethodCall& call, MethodResult& result);
  void connect(const Map& arguments, MethodResult& result);
  void repeat(const Map& arguments);
  void sendAgain(const Announcements::Datagram& datagram);

  NetworkRules rules_;
  std::map<std::int64_t, std::unique_ptr<EngineSocket>> open_;
  std::int64_t lastHandle_ = 0;
  Announcements announcements_;
};

}  // namespace brevanholt::platform
