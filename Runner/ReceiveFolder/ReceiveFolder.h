#pragma once

#include "Runner/ReceiveFolder/Copies.h"
#include "Runner/ReceiveFolder/FolderSync.h"
#include "Runner/ReceiveFolder/LegacyItems.h"
#include "platform/foundation/MainQueue.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"
#include "platform/services/KnownFolders.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace brevanholt {

// Where received items live: a folder in the user's Downloads folder, and the private area in which
// they are written first. For the main thread; nothing here blocks it for long. What throws, throws
// PlatformError.
class ReceiveFolder {
 public:
  using Path = std::filesystem::path;
  using Placed = Copies::Placed;
  using Identity = std::pair<dev_t, ino_t>;

  // A file that was received completely, and where it should go below the folder.
  struct Arrival {
    std::optional<Path> path;  // none for an empty file, which is made in its place
    std::string name;
    std::optional<std::string> relativePath = std::nullopt;
    bool isReadable = true;     // to the UI, once it is placed
    std::int64_t modified = 0;  // of one that is made, in milliseconds since 1970
  };
  using Places = std::vector<platform::Result<Path>>;
  struct Found {
    std::string name;
    Path location;
    std::uint64_t size = 0;
  };

  ReceiveFolder(platform::KnownFolders folders, platform::MainQueue& mainQueue);

  // Unset while the folder cannot be prepared.
  [[nodiscard]] const std::optional<Path>& receiveDirectory() const { return receiveDirectory_; }
  [[nodiscard]] const std::string& receiveFolderName() const { return receiveFolderName_; }

  // Makes the folder ready; whether it is. The reason why not is logged.
  bool prepare();
  // Makes the folder ready for the file manager; throws where that fails.
  Path prepareToOpen();
  // Throws for a name that is not allowed. A folder that cannot be made is unset.
  void setReceiveFolderName(std::string_view name);
  // Where to write a received file before it is published. Nothing is created but the area.
  [[nodiscard]] Path temporaryReceivePath(std::string_view name);

  // The area, once something was to be written there.
  [[nodiscard]] const std::optional<Path>& scratchArea() const { return scratchArea_; }
  // The device and inode of the readable file that this run has placed there.
  [[nodiscard]] std::optional<Identity> placedAt(const Path& location) const;

  // Moves a file into the folder under a free name. `done` gets its final path when that outlasts a
  // power cut, or why the file stays where it was.
  void publishFile(const Arrival& arrival, Placed done);
  // The same with many; `done` is called once.
  void publishFiles(const std::vector<Arrival>& arrivals,
                    platform::UniqueFunction<void(Places)> done);
  // Makes a directory, or takes the one that is there.
  void publishDirectory(std::string_view relativePath, Placed done);
  // Finds files by their names at the folder's top level, after everything published so far.
  void locate(std::vector<std::string> names,
              platform::UniqueFunction<void(std::vector<Found>)> done);

 private:
  [[nodiscard]] Path brevanholtDownloadsDirectory();
  [[nodiscard]] const Path& requiredReceiveDirectory() const;
  [[nodiscard]] std::vector<Found> found(const std::vector<std::string>& names) const;
  // Where an arrival goes.
  struct Destination {
    Path folder;
    std::string name;
  };
  struct Round;

  [[nodiscard]] Destination destinationOf(const Arrival& arrival) const;
  [[nodiscard]] std::optional<Path> place(const Arrival& arrival, const Destination& destination);
  void create(const Path& folder);
  void remember(const Path& placed);
  void afterSync(platform::UniqueFunction<void()> done);

  platform::KnownFolders folders_;
  std::optional<Path> receiveDirectory_;
  std::string receiveFolderName_ = "Brevanholt";
  std::optional<Path> scratchArea_;
  Path cleanedDirectory_;  // where leftovers were looked for
  std::unordered_map<std::string, Identity> placed_;
  FolderSync::Folders unsynced_;  // folders with entries that may not be on the disk yet
  FolderSync folderSync_;
  Copies copies_;
  LegacyItems legacyItems_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
