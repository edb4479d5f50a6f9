#pragma once

#include "platform/foundation/UniqueFunction.h"
#include "platform/linux/GPointers.h"

#include <glib.h>

#include <chrono>

namespace brevanholt::platform {

// Something that the main loop does for as long as this object is there. It may go, or stop(), from
// within what it does.
class LoopSource {
 public:
  LoopSource() = default;
  LoopSource(LoopSource&&) noexcept = default;
  LoopSource& operator=(LoopSource&& other) noexcept {
    stop();
    source_ = std::move(other.source_);
    return *this;
  }
  ~LoopSource() { stop(); }

  // Once, after that time.
  [[nodiscard]] static LoopSource after(std::chrono::milliseconds time,
                                        UniqueFunction<void()> action);
  // Whenever a descriptor has something to read, or is at its end.
  [[nodiscard]] static LoopSource whenReadable(int descriptor, UniqueFunction<void()> action);

  void stop();

 private:
  using Pointer = std::unique_ptr<GSource, FreeWith<g_source_unref>>;
  explicit LoopSource(Pointer source) : source_(std::move(source)) {}

  Pointer source_;
};

}  // namespace brevanholt::platform
