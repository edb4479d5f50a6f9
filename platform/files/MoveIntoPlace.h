#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>

namespace brevanholt::platform {

// Chooses a free path for an item. Called again when another program took that path in between.
using ChooseDestination = std::function<std::filesystem::path()>;

// An empty file that was modified then, in milliseconds since 1970, at the first chosen name that
// is still free. Throws FileError. Before it outlasts a power cut, its folder must be synced.
[[nodiscard]] std::filesystem::path makeInPlace(const ChooseDestination& choose,
                                                std::int64_t modified);

// The two ways of moving an item (a file, a folder with all that is in it, a link, a FIFO) to a
// name that must be free. Both return where the item is now. Neither replaces anything, and after
// any failure (a FileError; EEXIST when every name is taken again) the source is where it was.

// Within one file system, at once. Nothing, and nothing done, when source and destination are on
// different ones. Before the entry outlasts a power cut, the destination's folder must be synced.
[[nodiscard]] std::optional<std::filesystem::path> renameIntoPlace(
    const std::filesystem::path& source, const ChooseDestination& choose);

// To another file system. The data is on the disk before the name appears, and the name before the
// source goes. Takes as long as copying takes, and ends soon after `stop` is requested, with a
// PlatformError. Every destination that is chosen must be in the same folder.
std::filesystem::path copyIntoPlace(const std::filesystem::path& source,
                                    const ChooseDestination& choose, const std::stop_token& stop);

// Removes what killed copies left in a folder and below it. What a running copy writes just now,
// in this process or another, stays.
void removePartialCopies(const std::filesystem::path& folder, const std::stop_token& stop);

}  // namespace brevanholt::platform
