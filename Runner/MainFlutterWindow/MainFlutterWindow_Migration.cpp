#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/PathRules.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/MoveIntoPlace.h"

#include <vector>

namespace brevanholt {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolderSettings = ".DS_Store";  // of another system's file manager

// The names in a directory. Nothing where it cannot be listed to its end.
std::optional<std::vector<fs::path>> namesIn(const fs::path& directory) {
  std::vector<fs::path> names;
  std::error_code error;
  for (fs::directory_iterator entry(directory, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    names.push_back(entry->path().filename());
  }
  return error ? std::nullopt : std::optional(std::move(names));
}

// Where earlier builds put received items: they appended every component of the working directory
// to the receive folder. Empty where there is no such directory.
//
// Those builds made plain directories. A link on the way was put there by somebody else and may
// lead out of the receive folder, or to what the user has sorted within it, so nothing is taken
// from behind one. The receive folder itself may well be a link.
fs::path legacyDirectory(const fs::path& receiveFolder, const fs::path& workingDirectory) {
  if (!workingDirectory.has_relative_path()) return {};
  std::error_code error;
  fs::path directory = fs::canonical(receiveFolder, error);
  if (error) return {};
  for (const fs::path& component : workingDirectory.relative_path()) directory /= component;
  const bool isPlain = fs::canonical(directory, error) == directory && !error;
  return isPlain && fs::is_directory(directory, error) ? directory : fs::path();
}

// Stays where it is when it cannot be moved at once.
void moveUp(const fs::path& item, const fs::path& receiveFolder) {
  try {
    const fs::path destination =
        uniqueDestination(receiveFolder, item.filename().native(), platform::nameIsTaken);
    if (platform::renameIntoPlace(item, destination)) return;
    platform::logDebug("on another file system: " + item.string());
  } catch (const platform::PlatformError& error) {
    platform::logDebug(error.message());
  }
}

}  // namespace

void MainFlutterWindow::migrateLegacyReceivedItems(const fs::path& receiveFolder) const {
  const fs::path legacy = legacyDirectory(receiveFolder, services_.folders.workingDirectory);
  if (legacy.empty()) return;
  const auto names = namesIn(legacy);
  if (!names) return;
  for (const fs::path& name : *names) {
    if (name != kFolderSettings) moveUp(legacy / name, receiveFolder);
  }
  pruneEmptyLegacyDirectories(legacy, receiveFolder);
}

void MainFlutterWindow::pruneEmptyLegacyDirectories(fs::path directory,
                                                    const fs::path& receiveFolder) {
  std::error_code error;
  while (!fs::equivalent(directory, receiveFolder, error) && !error) {
    fs::remove(directory / kFolderSettings, error);
    // rmdir never takes anything along; a directory that is not empty ends the pruning.
    if (!platform::removeEmptyDirectory(directory)) return;
    directory = directory.parent_path();
  }
}

}  // namespace brevanholt
