#include "Runner/ReceiveFolder/PathRules.h"
#include "Runner/ReceiveFolder/ReceiveFolder.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/MoveIntoPlace.h"

#include <utility>

#include <sys/stat.h>

namespace brevanholt {

namespace fs = std::filesystem;
using platform::PlatformError;
using platform::Result;

namespace {

// What `compute` returns, or the error that it throws: a callback is then called outside of any
// try block.
template <class F>
auto outcomeOf(F compute) -> Result<decltype(compute())> {
  try {
    return compute();
  } catch (const PlatformError& error) {
    return PlatformError(error);
  }
}

// A name that denotes the folder itself or the one above it names no received file.
bool namesAnItem(const std::string& name) {
  return name != "." && name != "..";
}

}  // namespace

void ReceiveFolder::publishFile(const Arrival& arrival, Placed done) {
  std::string name;
  fs::path folder;
  const auto placed = outcomeOf([&]() -> std::optional<fs::path> {
    name = receivedFileName(arrival.name);
    const std::string relative = safeRelativePath(arrival.relativePath.value_or(name));
    // The relative path only chooses the subfolder: the name replaces its last component.
    folder = (requiredReceiveDirectory() / relative).parent_path();
    create(folder);
    if (copies_.isPending(folder / name)) return std::nullopt;  // that one gets its name first
    return platform::renameIntoPlace(
        arrival.path, [&] { return uniqueDestination(folder, name, platform::nameIsTaken); });
  });
  if (!placed.ok()) return done(placed.error());
  if (placed.value()) {
    unsynced_.insert(folder);
    if (arrival.isReadable) remember(*placed.value());
    return answerAfterSync(*placed.value(), std::move(done));
  }
  copies_.add(arrival.path, folder, name,
              lifetime_.bind([this, isReadable = arrival.isReadable,
                              done = std::move(done)](Result<fs::path> copied) mutable {
                if (!copied.ok()) return done(copied.error());
                if (isReadable) remember(copied.value());
                answerAfterSync(copied.value(), std::move(done));
              }));
}

void ReceiveFolder::publishDirectory(std::string_view relativePath, Placed done) {
  const auto directory = outcomeOf([&] {
    fs::path made = requiredReceiveDirectory() / safeRelativePath(relativePath);
    create(made);
    return made;
  });
  if (!directory.ok()) return done(directory.error());
  answerAfterSync(directory.value(), std::move(done));
}

void ReceiveFolder::remember(const fs::path& placed) {
  struct stat information {};
  if (::lstat(placed.c_str(), &information) != 0 || !S_ISREG(information.st_mode)) return;
  placed_[placed.native()] = {information.st_dev, information.st_ino};
}

std::optional<ReceiveFolder::Identity> ReceiveFolder::placedAt(const fs::path& location) const {
  const auto found = placed_.find(location.native());
  return found != placed_.end() ? std::optional(found->second) : std::nullopt;
}

void ReceiveFolder::answerAfterSync(fs::path placed, Placed done) {
  folderSync_.afterSync(
      std::exchange(unsynced_, {}),
      [placed = std::move(placed), done = std::move(done)]() mutable { done(std::move(placed)); });
}

void ReceiveFolder::locate(std::vector<std::string> names,
                           platform::UniqueFunction<void(std::vector<Found>)> done) {
  copies_.afterPending(lifetime_.bind(
      [this, names = std::move(names), done = std::move(done)]() mutable { done(found(names)); }));
}

std::vector<ReceiveFolder::Found> ReceiveFolder::found(
    const std::vector<std::string>& names) const {
  std::vector<Found> files;
  if (!receiveDirectory_) return files;
  for (const std::string& text : names) {
    if (!platform::pathFrom(text)) continue;
    const std::string name = receivedFileName(text);
    const fs::path location = *receiveDirectory_ / name;
    if (!namesAnItem(name) || !platform::fileExists(location)) continue;
    files.push_back({name, location, platform::fileSize(location).value_or(0)});
  }
  return files;
}

}  // namespace brevanholt
