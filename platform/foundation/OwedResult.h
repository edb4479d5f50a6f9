#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <utility>

namespace brevanholt::platform {

// A callback that is called exactly once: with a result, or with an error if this is destroyed
// without one.
template <class T>
class OwedResult {
 public:
  using Callback = UniqueFunction<void(Result<T>)>;

  explicit OwedResult(Callback callback) : callback_(std::move(callback)) {}
  OwedResult(OwedResult&&) noexcept = default;
  OwedResult& operator=(OwedResult&&) = delete;
  ~OwedResult() {
    if (callback_) std::move(*this).deliver(PlatformError("it was given up"));
  }

  void deliver(Result<T> result) && { std::exchange(callback_, nullptr)(std::move(result)); }

 private:
  Callback callback_;
};

}  // namespace brevanholt::platform
