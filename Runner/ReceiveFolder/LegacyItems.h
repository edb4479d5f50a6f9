#pragma once

#include "Runner/ReceiveFolder/Copies.h"
#include "platform/foundation/PlatformError.h"
#include "platform/services/KnownFolders.h"

#include <filesystem>
#include <set>
#include <string>

namespace brevanholt {

// What earlier builds received into a folder nested inside the receive folder: they appended every
// component of the working directory to it. Nothing here fails, and nothing replaces or removes
// anything that holds something.
class LegacyItems {
 public:
  // Borrows `copies`.
  LegacyItems(const platform::KnownFolders& folders, Copies& copies)
      : workingDirectory_(folders.workingDirectory),
        recordFile_(folders.configuration / "legacy-items-left"),
        copies_(copies) {}

  // Moves the items up into the receive folder, beside what is there. Those on another file system
  // are copied, which goes on after this returns.
  void migrateLegacyReceivedItems(const std::filesystem::path& receiveFolder);
  // Removes empty directories from `directory` upwards, as far as the receive folder.
  static void pruneEmptyLegacyDirectories(std::filesystem::path directory,
                                          const std::filesystem::path& receiveFolder);

 private:
  void moveUp(const std::filesystem::path& item, const std::filesystem::path& receiveFolder);
  // Logs it, unless this or an earlier run has logged it already.
  void cannotMove(const std::filesystem::path& item, const platform::PlatformError& error);

  std::filesystem::path workingDirectory_;
  std::filesystem::path recordFile_;  // the paths that were logged, each with a NUL at its end
  std::set<std::filesystem::path> copying_;
  Copies& copies_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
