#include "Runner/ReceiveFolder/ScratchArea.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

namespace brevanholt {

namespace fs = std::filesystem;

fs::path preparedScratchArea(const std::optional<fs::path>& current,
                             const platform::KnownFolders& folders) {
  fs::path preferred = current.value_or(folders.temporary / "Brevanholt");
  fs::path other = folders.caches / "Brevanholt";
  try {
    platform::createPrivateDirectory(preferred);
    return preferred;
  } catch (const platform::PlatformError& error) {
    if (preferred == other) throw;
    platform::logWarning("received files are written to " + other.string() +
                         " first: " + error.message());
  }
  platform::createPrivateDirectory(other);
  return other;
}

}  // namespace brevanholt
