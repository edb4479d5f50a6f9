#include "platform/engine/web/files/EngineFiles.h"

namespace brevanholt::platform {

EngineFiles::EngineFiles(BinaryMessenger& messenger, MainQueue& mainQueue)
    : settling_(mainQueue), channel_("engine/files", messenger) {
  channel_.setMethodCallHandler([this, &mainQueue](MethodCall call, MethodResult result) {
    if (call.method == "settle") return settling_.perform(call, std::move(result));
    thread_.async(
        [table = table_, &mainQueue, call = std::move(call), result = std::move(result)]() mutable {
          mainQueue.post([reply = table->perform(call), result = std::move(result)]() mutable {
            std::move(result).reply(std::move(reply));
          });
        });
  });
}

void EngineFiles::closeAll() {
  thread_.async([table = table_] { table->closeAll(); });
}

}  // namespace brevanholt::platform
