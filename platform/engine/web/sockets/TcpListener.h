#pragma once

#include "platform/engine/web/sockets/EngineSocket.h"
#include "platform/engine/web/sockets/NetworkRules.h"
#include "platform/engine/web/sockets/OwedReply.h"
#include "platform/engine/web/sockets/SocketAddress.h"
#include "platform/engine/web/sockets/TcpConnection.h"
#include "platform/gtk/LoopSource.h"

#include <functional>
#include <memory>

namespace brevanholt::platform {

// Takes connections, one for each time the page asks; the others wait in the system's backlog.
class TcpListener final : public EngineSocket {
 public:
  // What the page gets for a connection.
  using Accepted = std::function<Value(std::unique_ptr<TcpConnection>)>;

  // Throws SystemError. Borrows the rules.
  TcpListener(const SocketAddress& address, int backlog, const NetworkRules& rules,
              Accepted accepted);

  [[nodiscard]] Value description() const;
  void accept(MethodResult& result);

 private:
  // Whether the call was answered.
  bool acceptNow();

  const NetworkRules& rules_;
  Accepted accepted_;
  LoopSource onReadable_;
  OwedReply accepting_;
};

}  // namespace brevanholt::platform
