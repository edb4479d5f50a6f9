#include "Runner/ReceiveFolder/LegacyItems.h"

#include "Runner/ReceiveFolder/PathRules.h"
#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/files/ReplaceFile.h"
#include "platform/foundation/Log.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

namespace brevanholt {

namespace fs = std::filesystem;
using platform::PlatformError;

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

// The receive folder with every component of the working directory appended. Empty where there is
// no such directory.
//
// Earlier builds made plain directories. They did not make symbolic links, and one may
// lead out of the receive folder, or to what the user has sorted within it, so links are not
// followed. The receive folder itself may be a link.
fs::path legacyDirectory(const fs::path& receiveFolder, const fs::path& workingDirectory) {
  if (!workingDirectory.has_relative_path()) return {};
  std::error_code error;
  fs::path directory = fs::canonical(receiveFolder, error);
  if (error) return {};
  for (const fs::path& component : workingDirectory.relative_path()) directory /= component;
  const bool isPlain = fs::canonical(directory, error) == directory && !error;
  return isPlain && fs::is_directory(directory, error) ? directory : fs::path();
}

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

void LegacyItems::migrateLegacyReceivedItems(const fs::path& receiveFolder) {
  const fs::path legacy = legacyDirectory(receiveFolder, workingDirectory_);
  if (legacy.empty()) return;
  const auto names = namesIn(legacy);
  if (!names) return;
  for (const fs::path& name : *names) {
    if (name != kFolderSettings) moveUp(legacy / name, receiveFolder);
  }
  pruneEmptyLegacyDirectories(legacy, receiveFolder);
}

void LegacyItems::moveUp(const fs::path& item, const fs::path& receiveFolder) {
  const std::string name = item.filename().native();
  try {
    const auto choose = [&] {
      return uniqueDestination(receiveFolder, name, platform::nameIsTaken);
    };
    if (platform::renameIntoPlace(item, choose)) return;
  } catch (const PlatformError& error) {
    return cannotMove(item, error);
  }
  if (!copying_.insert(item).second) return;
  copies_.add(
      item, receiveFolder, name,
      lifetime_.bind([this, item, receiveFolder](const platform::Result<fs::path>& outcome) {
        copying_.erase(item);
        if (!outcome.ok()) return cannotMove(item, outcome.error());
        pruneEmptyLegacyDirectories(item.parent_path(), receiveFolder);
      }));
}

void LegacyItems::cannotMove(const fs::path& item, const PlatformError& error) {
  const std::string entry = item.native() + '\0';
  std::string record = contentOf(recordFile_);
  if (('\0' + record).find('\0' + entry) != std::string::npos) return;
  platform::logWarning("an item that an earlier build received stays in its folder: " +
                       error.message());
  try {
    platform::createDirectories(recordFile_.parent_path(), 0700);
    platform::replaceFile(recordFile_, record + entry);
  } catch (const PlatformError& failure) {
    platform::logDebug(failure.message());
  }
}

void LegacyItems::pruneEmptyLegacyDirectories(fs::path directory, const fs::path& receiveFolder) {
  std::error_code error;
  while (!fs::equivalent(directory, receiveFolder, error) && !error) {
    fs::remove(directory / kFolderSettings, error);
    // rmdir never takes anything along; a directory that is not empty ends the pruning.
    if (!platform::removeEmptyDirectory(directory)) return;
    directory = directory.parent_path();
  }
}

}  // namespace brevanholt
