#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace brevanholt::platform {

// Whether something can be reached at `path`, links followed.
[[nodiscard]] bool fileExists(const std::filesystem::path& path);
// Whether the name is taken by anything at all, a dangling link included.
[[nodiscard]] bool nameIsTaken(const std::filesystem::path& path);
// Whether there is a directory at `path`, links followed.
[[nodiscard]] bool isDirectory(const std::filesystem::path& path);
// Nothing where there is no file whose size can be read.
[[nodiscard]] std::optional<std::uint64_t> fileSize(const std::filesystem::path& path);

// Opens a file for reading, links followed. Only regular files: a FIFO or a device would never let
// go of the thread. Throws FileError.
[[nodiscard]] FileDescriptor openRegularFile(const std::filesystem::path& path);

// Creates the directory and those above it; one that exists is fine. Throws FileError.
void createDirectories(const std::filesystem::path& path);

// Removes a directory that is empty, and nothing else. False where it stays.
bool removeEmptyDirectory(const std::filesystem::path& path);

// Makes the entries of a directory outlast a power cut. Throws FileError.
void syncDirectory(const std::filesystem::path& path);

}  // namespace brevanholt::platform
