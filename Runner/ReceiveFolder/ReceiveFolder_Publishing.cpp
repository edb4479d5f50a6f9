#include "Runner/ReceiveFolder/PathRules.h"
#include "Runner/ReceiveFolder/ReceiveFolder.h"
#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"

#include <memory>
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

// One call of publishFiles(). The last of its parts to end replies.
struct ReceiveFolder::Round {
  platform::UniqueFunction<void(Places)> done;
  Places places;
  std::size_t left = 1;  // the call itself, and each copy

  void end() {
    if (--left == 0) done(std::move(places));
  }
};

void ReceiveFolder::publishFile(const Arrival& arrival, Placed done) {
  publishFiles({arrival}, [done = std::move(done)](Places places) mutable {
    done(std::move(places.front()));
  });
}

void ReceiveFolder::publishFiles(const std::vector<Arrival>& arrivals,
                                 platform::UniqueFunction<void(Places)> done) {
  const auto round = std::make_shared<Round>(
      Round{.done = std::move(done), .places = Places(arrivals.size(), Path())});
  bool isAnythingPlaced = false;
  Path made;  // files mostly come folder by folder
  for (std::size_t at = 0; at < arrivals.size(); ++at) {
    const Arrival& arrival = arrivals[at];
    Destination destination;
    const auto placed = outcomeOf([&] {
      destination = destinationOf(arrival);
      if (made.native() != destination.folder.native()) create(destination.folder);
      made = destination.folder;
      return place(arrival, destination);
    });
    if (!placed.ok()) {
      round->places[at] = placed.error();
    } else if (placed.value()) {
      round->places[at] = *placed.value();
      isAnythingPlaced = true;
    } else {
      ++round->left;
      copies_.add(arrival.path.value(), destination.folder, destination.name,
                  lifetime_.bind(
                      [this, round, at, isReadable = arrival.isReadable](Result<fs::path> copied) {
                        if (copied.ok() && isReadable) remember(copied.value());
                        round->places[at] = std::move(copied);
                        afterSync([round] { round->end(); });
                      }));
    }
  }
  if (!isAnythingPlaced) return round->end();
  afterSync([round] { round->end(); });
}

// The relative path only chooses the subfolder: the name replaces its last component.
ReceiveFolder::Destination ReceiveFolder::destinationOf(const Arrival& arrival) const {
  std::string name = receivedFileName(arrival.name);
  const std::string relative = safeRelativePath(arrival.relativePath.value_or(name));
  return {.folder = (requiredReceiveDirectory() / relative).parent_path(), .name = std::move(name)};
}

// Nothing, and nothing done, where it has to be copied.
std::optional<fs::path> ReceiveFolder::place(const Arrival& arrival,
                                             const Destination& destination) {
  const fs::path& folder = destination.folder;
  const std::string& name = destination.name;
  const auto choose = [&] { return uniqueDestination(folder, name, platform::nameIsTaken); };
  std::optional<fs::path> placed;
  if (!arrival.path) {
    placed = platform::makeInPlace(choose, arrival.modified);
  } else if (!copies_.isPending(folder / name)) {  // else it waits for that copy
    placed = platform::renameIntoPlace(*arrival.path, choose);
  }
  if (!placed) return placed;
  unsynced_.insert(folder);
  if (arrival.isReadable) remember(*placed);
  return placed;
}

void ReceiveFolder::publishDirectory(std::string_view relativePath, Placed done) {
  const auto directory = outcomeOf([&] {
    fs::path made = requiredReceiveDirectory() / safeRelativePath(relativePath);
    create(made);
    return made;
  });
  if (!directory.ok()) return done(directory.error());
  afterSync(
      [made = directory.value(), done = std::move(done)]() mutable { done(std::move(made)); });
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

void ReceiveFolder::afterSync(platform::UniqueFunction<void()> done) {
  folderSync_.afterSync(std::exchange(unsynced_, {}), std::move(done));
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
