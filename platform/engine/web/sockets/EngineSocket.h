#pragma once

#include "platform/files/FileDescriptor.h"

namespace brevanholt::platform {

// A socket that the page has open. Destroying it closes it and answers what waits on it with
// ECANCELED. Nothing here blocks.
class EngineSocket {
 public:
  virtual ~EngineSocket() = default;

  // Gives the socket to another owner. Calls that wait on this object are answered when it is
  // destroyed.
  [[nodiscard]] FileDescriptor release() { return std::move(descriptor_); }

 protected:
  explicit EngineSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
  [[nodiscard]] int descriptor() const { return descriptor_.get(); }

 private:
  FileDescriptor descriptor_;
};

}  // namespace brevanholt::platform
