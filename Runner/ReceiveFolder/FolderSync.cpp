#include "Runner/ReceiveFolder/FolderSync.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <utility>

namespace brevanholt {
namespace {

void syncAll(const FolderSync::Folders& folders) {
  for (const auto& folder : folders) {
    try {
      platform::syncDirectory(folder);
    } catch (const platform::PlatformError& error) {
      platform::logWarning("a received item may not outlast a power cut: " + error.message());
    }
  }
}

}  // namespace

void FolderSync::afterSync(const Folders& folders, platform::UniqueFunction<void()> done) {
  folders_.insert(folders.begin(), folders.end());
  waiting_.push_back(std::move(done));
  if (!isSyncing_) start();
}

void FolderSync::start() {
  isSyncing_ = true;
  auto finish = lifetime_.bind([this](Waiting finished) {
    for (auto& done : finished) done();
    isSyncing_ = false;
    if (!waiting_.empty()) start();
  });
  queue_.async([&mainQueue = mainQueue_, folders = std::exchange(folders_, {}),
                waiting = std::exchange(waiting_, {}), finish = std::move(finish)]() mutable {
    syncAll(folders);
    mainQueue.post([waiting = std::move(waiting), finish = std::move(finish)]() mutable {
      finish(std::move(waiting));
    });
  });
}

}  // namespace brevanholt
