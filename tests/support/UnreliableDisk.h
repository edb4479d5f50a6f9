#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace brevanholt {

// A small disk whose power can be cut: what was not flushed is lost, also where ext4 would have
// flushed on its own. Needs root and loop devices; isMounted() is false without them.
//
// It moves this process to mounts of its own. A mount namespace that another program makes
// meanwhile would otherwise copy the mount and keep the file system in use, which stays shut down
// until everybody has unmounted it.
class UnreliableDisk {
 public:
  UnreliableDisk() {
    isMounted_ = hasOwnMounts() &&
                 run("truncate --size=4M '" + image_ + "' && mkfs.ext4 -q -F '" + image_ + "'") &&
                 std::filesystem::create_directory(path_) && mount();
  }
  ~UnreliableDisk() {
    if (isMounted_) unmount();
  }
  UnreliableDisk(const UnreliableDisk&) = delete;
  UnreliableDisk& operator=(const UnreliableDisk&) = delete;

  [[nodiscard]] bool isMounted() const { return isMounted_; }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  // Cuts the power and turns it on again.
  void cutPower() {
    constexpr unsigned long kShutDown = _IOR('X', 125, std::uint32_t);  // EXT4_IOC_SHUTDOWN
    std::uint32_t withoutWritingTheLog = 2;
    const int root = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY);
    const bool isDown = ::ioctl(root, kShutDown, &withoutWritingTheLog) == 0;
    ::close(root);
    if (!isDown || !unmount() || !mount()) throw std::runtime_error("the disk did not come back");
  }

 private:
  static bool hasOwnMounts() {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  }
  static bool run(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
  }
  bool mount() {
    return run("mount -o loop,noauto_da_alloc '" + image_ + "' '" + path_.string() + "'");
  }
  bool unmount() { return run("umount '" + path_.string() + "'"); }

  TemporaryFolder folder_;
  std::string image_ = folder_ / "image";
  std::filesystem::path path_ = folder_ / "disk";
  bool isMounted_ = false;
};

}  // namespace brevanholt
