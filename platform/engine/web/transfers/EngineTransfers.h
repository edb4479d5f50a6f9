#pragma once

#include "platform/channel/MethodChannel.h"
#include "platform/engine/web/transfers/TransferTable.h"

namespace brevanholt::platform {

// Transfers for UI code, on the channel "engine/transfers".
class EngineTransfers {
 public:
  EngineTransfers(BinaryMessenger& messenger, SocketTable& sockets, MainQueue& mainQueue)
      : table_(sockets, mainQueue), channel_("engine/transfers", messenger) {
    channel_.setMethodCallHandler([this](const MethodCall& call, MethodResult result) {
      table_.perform(call, std::move(result));
    });
  }

  // Borrowed; null refuses every path.
  void setAccess(FileAccess* access) { table_.setAccess(access); }
  // Closes what the page that has gone left open.
  void closeAll() { table_.closeAll(); }

 private:
  TransferTable table_;
  MethodChannel channel_;
};

}  // namespace brevanholt::platform
