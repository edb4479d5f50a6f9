#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/desktop/NativeView.h"
#include "platform/engine/BundleNeeds.h"
#include "platform/engine/FileAccess.h"
#include "platform/foundation/Signal.h"

namespace brevanholt::platform {

// All that the host knows of an embedded UI engine. The UI's timers run at full speed even when
// nobody can see the window: this device is found nearby all the while.
class UiEngine {
 public:
  virtual ~UiEngine() = default;
  [[nodiscard]] virtual NativeView& view() = 0;
  [[nodiscard]] virtual BinaryMessenger& binaryMessenger() = 0;

  // What is asked before the UI's code uses a file, for an engine whose code uses files through it.
  // Null, as at first, refuses everything.
  virtual void setFileAccess(FileAccess* /*access*/) {}
  [[nodiscard]] virtual BundleNeeds bundleNeeds() const { return {}; }

  // The UI's code has ended, by a crash for instance. The engine starts it again by itself; what it
  // had declared to the host no longer holds.
  Signal uiDidEnd;
};

}  // namespace brevanholt::platform
