#pragma once

namespace brevanholt::platform {

// Something of the toolkit's that can stand in a window. Only the toolkit's own code looks inside.
class NativeView {
 public:
  virtual ~NativeView() = default;
};

}  // namespace brevanholt::platform
