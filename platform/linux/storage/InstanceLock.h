#pragma once

#include "platform/files/FileDescriptor.h"

#include <filesystem>

namespace brevanholt::platform {

// Makes this process the only one of this user that runs the program. The session bus does so
// within a session; two sessions, or two computers, that share a home would overwrite each other's
// identity and history. The lock ends with the process.
class InstanceLock {
 public:
  // Waits a few seconds for an instance that is ending. Throws PlatformError, naming the other
  // instance, where it goes on running. A folder or file system without locks is no error: the
  // program then runs unlocked, and the log says so.
  explicit InstanceLock(const std::filesystem::path& configurationFolder);

 private:
  FileDescriptor file_;
};

}  // namespace brevanholt::platform
