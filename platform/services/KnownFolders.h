#pragma once

#include <filesystem>

namespace brevanholt::platform {

// Where this user's things are. Nothing here need exist yet.
struct KnownFolders {
  std::filesystem::path downloads;
  std::filesystem::path temporary;  // on the same disk as Downloads where that can be had
  std::filesystem::path caches;     // this user's own
  std::filesystem::path applicationSupport;
  std::filesystem::path configuration;
  std::filesystem::path workingDirectory;  // the process's own; empty where it is gone
};

}  // namespace brevanholt::platform
