#pragma once

#include "platform/foundation/UniqueFunction.h"
#include "platform/gtk/GLibPointers.h"

#include <glib.h>

#include <chrono>

namespace brevanholt::platform {

// An action that the main loop runs while this object exists. The action may stop() the source or
// destroy this object.
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
  // Whenever a descriptor accepts more bytes, or has failed.
  [[nodiscard]] static LoopSource whenWritable(int descriptor, UniqueFunction<void()> action);

  void stop();
  // Whether it was started and not stopped; a timer that ran counts as started.
  explicit operator bool() const { return source_ != nullptr; }

 private:
  using Pointer = std::unique_ptr<GSource, FreeWith<g_source_unref>>;
  [[nodiscard]] static LoopSource whenReady(int descriptor, GIOCondition condition,
                                            UniqueFunction<void()> action);
  explicit LoopSource(Pointer source) : source_(std::move(source)) {}

  Pointer source_;
};

}  // namespace brevanholt::platform
