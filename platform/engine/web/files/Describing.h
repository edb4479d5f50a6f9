#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/engine/FileAccess.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/MainQueue.h"

namespace brevanholt::platform {

// Looks at many files in one call: an offer may consist of 100,000.
//
//   describe {paths}  {kinds, sizes, modified}, each with one number for a path: 0 for what is
//                     neither file nor folder or may not be used, 1 for a file, 2 for a folder;
//                     bytes; milliseconds since 1970
class Describing {
 public:
  // The thread is where the disk is used.
  Describing(DispatchQueue& thread, MainQueue& mainQueue)
      : thread_(thread), mainQueue_(mainQueue) {}

  void perform(const MethodCall& call, FileAccess* access, MethodResult result);

 private:
  DispatchQueue& thread_;
  MainQueue& mainQueue_;
};

}  // namespace brevanholt::platform
