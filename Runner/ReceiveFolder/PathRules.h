#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace brevanholt {

// The rules that every name and path passes before the file system is touched. A peer chooses most
// of them: an accepted one stays inside its folder.

// The receive folder's name as the user typed it, trimmed. Throws PlatformError "The receive folder
// name is invalid.".
[[nodiscard]] std::string safeFolderName(std::string_view name);

// A path below the receive folder, trimmed, its components joined by "/". Throws PlatformError "The
// received path is invalid.".
[[nodiscard]] std::string safeRelativePath(std::string_view path);

// The last component of a name read as a path, or "Received file" where there is none. Throws
// PlatformError "The received path is invalid." for one that no path can hold.
[[nodiscard]] std::string receivedFileName(std::string_view name);

// The name of a scratch file for a received file of that name: a fresh UUID, "-" and what
// receivedFileName() gives, shortened to what a file's name may have. Throws as that does.
[[nodiscard]] std::string scratchFileName(std::string_view name);

// What follows the last "." of a file name, or nothing. A leading "." begins no extension.
[[nodiscard]] std::string_view pathExtension(std::string_view name);

// The first of "name", "name (1)", ... "name (9999)" that is not taken in the directory; after
// those, an unprobed name that begins with a fresh UUID. What is added to a name of 255 bytes takes
// the place of the end of its stem.
[[nodiscard]] std::filesystem::path uniqueDestination(
    const std::filesystem::path& directory, std::string_view name,
    const std::function<bool(const std::filesystem::path&)>& isTaken);

}  // namespace brevanholt
