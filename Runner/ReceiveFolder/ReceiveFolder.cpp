#include "Runner/ReceiveFolder/ReceiveFolder.h"

#include "Runner/ReceiveFolder/PathRules.h"
#include "Runner/ReceiveFolder/ScratchArea.h"
#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/foundation/Log.h"

#include <utility>

namespace brevanholt {

namespace fs = std::filesystem;
using platform::PlatformError;

ReceiveFolder::ReceiveFolder(platform::KnownFolders folders, platform::MainQueue& mainQueue)
    : folders_(std::move(folders)),
      folderSync_(mainQueue),
      copies_(mainQueue),
      legacyItems_(folders_, copies_) {}

fs::path ReceiveFolder::brevanholtDownloadsDirectory() {
  fs::path directory = folders_.downloads / receiveFolderName_;
  create(directory);
  legacyItems_.migrateLegacyReceivedItems(directory);
  if (std::exchange(cleanedDirectory_, directory) != directory) copies_.removeLeftovers(directory);
  return directory;
}

bool ReceiveFolder::prepare() {
  try {
    receiveDirectory_ = brevanholtDownloadsDirectory();
  } catch (const PlatformError& error) {
    platform::logInfo("there is no receive folder: " + error.message());
    receiveDirectory_.reset();
  }
  return receiveDirectory_.has_value();
}

fs::path ReceiveFolder::prepareToOpen() {
  receiveDirectory_ = brevanholtDownloadsDirectory();
  return *receiveDirectory_;
}

void ReceiveFolder::setReceiveFolderName(std::string_view name) {
  receiveFolderName_ = safeFolderName(name);
  prepare();
}

fs::path ReceiveFolder::temporaryReceivePath(std::string_view name) {
  const std::string fileName = scratchFileName(name);
  scratchArea_ = preparedScratchArea(scratchArea_, folders_);
  return *scratchArea_ / fileName;
}

void ReceiveFolder::create(const fs::path& folder) {
  for (fs::path& changed : platform::createDirectories(folder)) {
    unsynced_.insert(std::move(changed));
  }
}

const fs::path& ReceiveFolder::requiredReceiveDirectory() const {
  if (!receiveDirectory_) throw PlatformError("No receive folder is selected.");
  return *receiveDirectory_;
}

}  // namespace brevanholt
