#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>

#include <sys/mount.h>

namespace brevanholt {

// A file system of its own, in memory and of a given size. Mounting takes root; where the tests
// have none, isMounted() says so.
class SmallDisk {
 public:
  // In `parent`, or where temporary files go.
  explicit SmallDisk(const std::string& size = "1m",
                     const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : folder_(parent),
        isMounted_(::mount("tmpfs", folder_.path().c_str(), "tmpfs", 0, ("size=" + size).c_str()) ==
                   0) {}
  ~SmallDisk() {
    if (isMounted_) ::umount2(folder_.path().c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  [[nodiscard]] bool isMounted() const { return isMounted_; }
  [[nodiscard]] const std::filesystem::path& path() const { return folder_.path(); }
  void makeReadOnly() {
    ::mount(nullptr, path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
  }

 private:
  TemporaryFolder folder_;
  bool isMounted_;
};

}  // namespace brevanholt

#define BREVANHOLT_NEEDS(disk) \
  if (!(disk).isMounted()) GTEST_SKIP() << "mounting a file system needs root"
