#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/engine/FileAccess.h"
#include "platform/foundation/MainQueue.h"
#include "platform/foundation/WorkerPool.h"

namespace brevanholt::platform {

// Puts whole files on the disk, several at once: a flush waits for the disk, which does many in
// little more than the time of one.
//
//   settle {files: [{path, modified}]}
//
// Replies with a list: for each file null once it is on the disk with that modification time
// (milliseconds since 1970) and a new file's usual permissions, or [code, text, the error's name].
class Settling {
 public:
  explicit Settling(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  void perform(const MethodCall& call, FileAccess* access, MethodResult result);

 private:
  MainQueue& mainQueue_;
  WorkerPool workers_{"brevanholt-save", 8};
};

}  // namespace brevanholt::platform
