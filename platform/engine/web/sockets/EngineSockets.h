#pragma once

#include "platform/channel/MethodChannel.h"
#include "platform/engine/web/sockets/SocketTable.h"

namespace brevanholt::platform {

// Sockets for UI code, on the channel "engine/sockets".
class EngineSockets {
 public:
  EngineSockets(BinaryMessenger& messenger, const BundleNeeds& needs)
      : table_(needs), channel_("engine/sockets", messenger) {
    channel_.setMethodCallHandler([this](const MethodCall& call, MethodResult result) {
      table_.perform(call, std::move(result));
    });
  }

  // Closes what the page that has gone left open.
  void closeAll() { table_.closeAll(); }
  [[nodiscard]] SocketTable& table() { return table_; }

 private:
  SocketTable table_;
  MethodChannel channel_;
};

}  // namespace brevanholt::platform
