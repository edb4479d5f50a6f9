#pragma once

#include "platform/channel/MethodChannel.h"
#include "platform/engine/web/files/Describing.h"
#include "platform/engine/web/files/FileTable.h"
#include "platform/engine/web/files/Settling.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/MainQueue.h"

#include <memory>

namespace brevanholt::platform {

// Files for UI code, on the channel "engine/files". The disk is used on a thread of its own, one
// operation after another, so a page that waits for each write sends no more than the disk takes;
// only files that are whole are flushed on several.
class EngineFiles {
 public:
  EngineFiles(BinaryMessenger& messenger, MainQueue& mainQueue);

  // Borrowed; null refuses every path.
  void setAccess(FileAccess* access) { access_ = access; }
  // Closes what the page that has gone left open.
  void closeAll();

 private:
  FileAccess* access_ = nullptr;
  std::shared_ptr<FileTable> table_ = std::make_shared<FileTable>();  // for the thread alone
  Settling settling_;
  Describing describing_;
  MethodChannel channel_;
  DispatchQueue thread_{"brevanholt.engine-io"};
};

}  // namespace brevanholt::platform
