#include "platform/engine/web/files/EngineFiles.h"

#include "platform/engine/web/files/Publishing.h"
#include "platform/engine/web/link/EngineArguments.h"

namespace brevanholt::platform {

EngineFiles::EngineFiles(BinaryMessenger& messenger, MainQueue& mainQueue)
    : settling_(mainQueue), describing_(thread_, mainQueue), channel_("engine/files", messenger) {
  channel_.setMethodCallHandler([this, &mainQueue](MethodCall call, MethodResult result) {
    if (call.method == "settle") {
      return settling_.perform(call, access_, std::move(result));
    }
    if (call.method == "publish") return publishFiles(call, access_, std::move(result));
    if (call.method == "describe") {
      return describing_.perform(call, access_, std::move(result));
    }
    FileTable::Permitted permitted;
    try {
      permitted = FileTable::permitted(std::move(call), access_);
    } catch (const std::exception& error) {
      return std::move(result).error(engineError("file_error", error));
    }
    thread_.async([table = table_, &mainQueue, permitted = std::move(permitted),
                   result = std::move(result)]() mutable {
      mainQueue.post([reply = table->perform(permitted), result = std::move(result)]() mutable {
        std::move(result).reply(std::move(reply));
      });
    });
  });
}

void EngineFiles::closeAll() {
  thread_.async([table = table_] { table->closeAll(); });
}

}  // namespace brevanholt::platform
