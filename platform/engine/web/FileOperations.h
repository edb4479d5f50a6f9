#pragma once

#include "platform/channel/Value.h"
#include "platform/foundation/FileDescriptor.h"

#include <cstdint>
#include <filesystem>

namespace brevanholt::platform {

// The blocking halves of the engine's file operations. All throw FileError.

// {"kind": "file", "directory" or "other", "size", "modified" (milliseconds since 1970)}, or null
// where there is nothing. Links are followed.
[[nodiscard]] Value statFile(const std::filesystem::path& path);

// A new file that only this user may read; fails where the name is taken.
[[nodiscard]] FileDescriptor createFile(const std::filesystem::path& path);

// At most `length` bytes; fewer only at the end of the file.
[[nodiscard]] Bytes readRange(int descriptor, std::int64_t offset, std::size_t length);
void writeAt(int descriptor, std::int64_t offset, const Bytes& bytes);
void flushFile(int descriptor);

// Writes a whole file beside the one it replaces, and puts it in its place once it is on the disk.
void replaceFile(const std::filesystem::path& path, const Bytes& bytes);

// Removes a file or a link, never a folder. Nothing there is no error.
void removeFile(const std::filesystem::path& path);

}  // namespace brevanholt::platform
