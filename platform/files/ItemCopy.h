#pragma once

#include "platform/files/FileDescriptor.h"

#include <filesystem>
#include <stop_token>

namespace brevanholt::platform {

// A copy of an item under a hidden name, ".<UUID>.partial", in the folder where it is to stay. It
// is removed again unless it was released. Failures are PlatformErrors.
class PartialCopy {
 public:
  explicit PartialCopy(const std::filesystem::path& folder);
  ~PartialCopy();
  PartialCopy(const PartialCopy&) = delete;
  PartialCopy& operator=(const PartialCopy&) = delete;

  // Copies content, permissions and times, and waits for the disk. Sockets and devices are refused.
  void copy(const std::filesystem::path& source, const std::stop_token& stop);
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  // It has its final name now, and stays.
  void release() { isReleased_ = true; }

 private:
  std::filesystem::path path_;
  FileDescriptor lock_;  // tells removePartialCopies() that this copy is in use
  bool isReleased_ = false;
};

}  // namespace brevanholt::platform
