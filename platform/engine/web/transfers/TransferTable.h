#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/engine/FileAccess.h"
#include "platform/engine/web/sockets/SocketTable.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"
#include "platform/transfer/SealedConnection.h"

#include <cstdint>
#include <map>
#include <memory>

namespace brevanholt::platform {

// The sealed connections that the page has, by the handle that their sockets had. For the main
// thread; nothing here blocks.
//
//   protect {handle, send, receive, silence}  null: from now on the socket carries records alone,
//                                             sealed with the one key and opened with the other,
//                                             and answers to the methods below alone. The other
//                                             side may be silent for so many milliseconds
//   send {handle, type, bytes}                null, when the system has taken the control record
//   sendContent {handle, parts}               what could not be sent, when the rest has been taken:
//                                             [[entry, error's name, text]]. A part is {entry, path
//                                             or bytes, offset, size, modified}; a file that is not
//                                             of that size and time fails with ESTALE
//   expect {handle, parts}                    null: content is written to {entry, path, offset,
//                                             size}, or kept where there is no path
//   receive {handle, largest, readsAhead}     {taken, whole: [entry], texts: [[entry, bytes]],
//   failed:
//                                             [[entry, error's name, text]], wanted, type, body,
//                                             isEnd}; see Arrival
//   part {handle, type?, bytes}               null at the other side's end, once a last record and
//                                             this side's end were sent
//   close {handle}                            null; what waits fails with ECANCELED
//
// A failure is the error "socket_error" with the system's text, and the error's name as details:
// EBADMSG or EPROTO for what another program would not have sent.
class TransferTable {
 public:
  TransferTable(SocketTable& sockets, MainQueue& mainQueue)
      : sockets_(sockets), mainQueue_(mainQueue) {}

  // Borrowed; null refuses every path.
  void setAccess(FileAccess* access) { access_ = access; }
  // Answers now or later, once.
  void perform(const MethodCall& call, MethodResult result);
  void closeAll();

 private:
  using Connections = std::map<std::int64_t, std::unique_ptr<SealedConnection>>;

  [[nodiscard]] bool dispatch(const MethodCall& call, MethodResult& result);
  void protect(const Map& arguments);
  void close(Connections::iterator connection);
  [[nodiscard]] SealedConnection& at(const Map& arguments) const;

  FileAccess* access_ = nullptr;
  SocketTable& sockets_;
  MainQueue& mainQueue_;
  Connections open_;
  Connections closing_;  // until their threads are done
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
