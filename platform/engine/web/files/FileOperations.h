#pragma once

#include "platform/channel/Value.h"
#include "platform/files/Place.h"

#include <cstdint>
#include <ctime>

namespace brevanholt::platform {

// The blocking halves of the engine's file operations. All throw FileError.

// Milliseconds since 1970.
[[nodiscard]] std::int64_t millisecondsOf(const timespec& time);

// {"kind": "file", "directory" or "other", "size", "modified" (milliseconds since 1970)}, or null
// where there is nothing.
[[nodiscard]] Value statFile(const Reach& reach);

// At most `length` bytes; fewer only at the end of the file.
[[nodiscard]] Bytes readRange(int descriptor, std::int64_t offset, std::size_t length);
void writeAt(int descriptor, std::int64_t offset, const Bytes& bytes);
void flushFile(int descriptor);

struct WholeFile {
  Reach reach;
  std::int64_t modified = 0;  // milliseconds since 1970
};

// Flushes a file that is whole, gives it its modification time and the permissions of a file that
// this user makes (0666 less the umask). An empty file has nothing to flush but its name, which its
// folder's flush saves.
void settleFile(const WholeFile& whole);

// What this user may still write to the file system of a folder, in bytes.
[[nodiscard]] std::int64_t freeSpace(const Place& folder);

// The names in a folder, hidden ones included, without order; none where there is no folder.
[[nodiscard]] Value listNames(const Place& folder);

// Renames within one file system; fails where the new name is taken.
void moveFile(const Place& from, const Place& to);

}  // namespace brevanholt::platform
