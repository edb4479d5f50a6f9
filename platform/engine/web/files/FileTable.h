#pragma once

#include "platform/channel/StandardMethodCodec.h"
#include "platform/engine/FileAccess.h"
#include "platform/files/FileDescriptor.h"

#include <cstdint>
#include <map>
#include <optional>

namespace brevanholt::platform {

// The engine's file operations, and the files that the page has open. Blocks; for one thread.
//
//   stat {path}                   {kind: "file", "directory" or "other", size, modified}, or null
//   open {path}                   a handle for reading; regular files only
//   create {path}                 a handle for writing; fails where the name is taken
//   edit {path}                   a handle for writing to a file that was created earlier
//   read {handle, offset, length} bytes, fewer than asked only at the file's end
//   write {handle, offset, bytes} null, when all of it is written
//   flush {handle}                null, when it is on the disk
//   close {handle}                null
//   replace {path, bytes}         null: the file holds exactly these bytes, or what it held before
//   list {path}                   the names in a folder
//   move {path, to}               null; fails where the new name is taken
//   space {path}                  bytes that may still be written to a folder's file system
//   remove {path}                 null; files and links only, and nothing there is no error
//
// A failure is the error "file_error" with the system's text, and the error's name ("ENOSPC") as
// details.
class FileTable {
 public:
  // A call, and where the host lets it reach by its "path" and "to".
  struct Permitted {
    MethodCall call;
    std::optional<Reach> path;
    std::optional<Reach> to;
  };

  // Asks for the paths that a call names. Throws PlatformError where one is refused. On the main
  // thread; the rest is for another one.
  [[nodiscard]] static Permitted permitted(MethodCall call, FileAccess* access);

  [[nodiscard]] Reply perform(const Permitted& permitted);
  void closeAll() { open_.clear(); }

 private:
  struct OpenFile {
    FileDescriptor descriptor;
    bool isWritable = false;
  };

  [[nodiscard]] Reply dispatch(const Permitted& permitted, const Map& arguments);
  void expectRoom() const;
  [[nodiscard]] Value add(OpenFile file);
  [[nodiscard]] const OpenFile& at(const Map& arguments) const;

  std::map<std::int64_t, OpenFile> open_;
  std::int64_t lastHandle_ = 0;
};

}  // namespace brevanholt::platform
