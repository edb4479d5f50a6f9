#pragma once

#include "platform/files/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace brevanholt::platform {

// The path that a text from outside names. Nothing for a text with a NUL: the system would stop
// reading there and act on another file than the one that was named.
[[nodiscard]] std::optional<std::filesystem::path> pathFrom(std::string_view text);

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
// A new file, open for writing; the name must be free. Throws FileError.
[[nodiscard]] FileDescriptor createFile(const std::filesystem::path& path, mode_t mode = 0600);
// Writes all of it at the file's position. Throws SystemError.
void writeAll(int descriptor, std::string_view content);
// Sets a file's modification time, in milliseconds since 1970. False, with errno, where that fails.
[[nodiscard]] bool setModified(int descriptor, std::int64_t milliseconds);

// Creates the directory and those above it; one that exists is fine. Returns the directories that
// got a new entry: syncDirectory() makes those entries outlast a power cut. Throws FileError.
std::vector<std::filesystem::path> createDirectories(const std::filesystem::path& path,
                                                     mode_t mode = 0777);

// Creates a directory that only this user may use, and those above it. One that exists must be a
// real directory of this user's, in a place where no other user can replace it; it loses the
// permissions of others. Throws FileError (EPERM for another user's).
void createPrivateDirectory(const std::filesystem::path& path);

// Removes a directory that is empty, and nothing else. False where it stays.
bool removeEmptyDirectory(const std::filesystem::path& path);

// Makes the entries of a directory outlast a power cut. Throws FileError.
void syncDirectory(const std::filesystem::path& path);

}  // namespace brevanholt::platform
