#include "Runner/ReceiveFolder/Copies.h"

#include "Runner/ReceiveFolder/PathRules.h"
#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::PlatformError;
using platform::Result;

namespace {

// An item that waited for another copy may be on the same file system.
Result<fs::path> move(const fs::path& source, const platform::ChooseDestination& choose,
                      const std::stop_token& stop) {
  try {
    if (const auto renamed = platform::renameIntoPlace(source, choose)) return *renamed;
    return platform::copyIntoPlace(source, choose, stop);
  } catch (const PlatformError& error) {
    return PlatformError(error);
  } catch (const std::exception& error) {
    return PlatformError(error.what());
  }
}

}  // namespace

void Copies::add(const Path& source, const Path& folder, const std::string& name, Placed done) {
  const auto pending = pending_.insert(folder / name);
  auto finish = lifetime_.bind([this, pending](Placed& placed, Result<Path> outcome) {
    pending_.erase(pending);
    placed(std::move(outcome));
  });
  queue_.async([&mainQueue = mainQueue_, source, folder, name, stop = stop_.get_token(),
                done = std::move(done), finish = std::move(finish)]() mutable {
    const auto choose = [&] { return uniqueDestination(folder, name, platform::nameIsTaken); };
    Result<Path> outcome =
        stop.stop_requested() ? PlatformError("The program ends.") : move(source, choose, stop);
    mainQueue.post([outcome = std::move(outcome), done = std::move(done),
                    finish = std::move(finish)]() mutable { finish(done, std::move(outcome)); });
  });
}

void Copies::afterPending(platform::UniqueFunction<void()> task) {
  if (pending_.empty()) return task();
  queue_.async([&mainQueue = mainQueue_, task = lifetime_.bind(std::move(task))]() mutable {
    mainQueue.post(std::move(task));
  });
}

void Copies::removeLeftovers(const Path& folder) {
  queue_.async([folder, stop = stop_.get_token()] { platform::removePartialCopies(folder, stop); });
}

}  // namespace brevanholt
