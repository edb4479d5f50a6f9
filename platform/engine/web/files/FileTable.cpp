#include "platform/engine/web/files/FileTable.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/ReplaceFile.h"

#include <algorithm>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostOpenFiles = 256;
constexpr std::int64_t kLongestRead = 16 << 20;

std::string_view textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

Reply FileTable::perform(const MethodCall& call) {
  try {
    return dispatch(call, argumentsOf(call));
  } catch (const std::exception& error) {
    return engineError("file_error", error);
  }
}

Reply FileTable::dispatch(const MethodCall& call, const Map& arguments) {
  if (call.method == "stat") return statFile(pathIn(arguments));
  if (call.method == "open") {
    expectRoom();
    return add({openRegularFile(pathIn(arguments)), false});
  }
  if (call.method == "create") {
    expectRoom();
    return add({createFile(pathIn(arguments)), true});
  }
  if (call.method == "edit") {
    expectRoom();
    return add({editFile(pathIn(arguments)), true});
  }
  if (call.method == "read") {
    const std::int64_t length = std::min(sizeIn(arguments, "length"), kLongestRead);
    return readRange(at(arguments).descriptor.get(), sizeIn(arguments, "offset"),
                     static_cast<std::size_t>(length));
  }
  if (call.method == "write") {
    if (!at(arguments).isWritable) throw PlatformError("The file is open for reading only.");
    writeAt(at(arguments).descriptor.get(), sizeIn(arguments, "offset"), bytesIn(arguments));
    return Value();
  }
  if (call.method == "flush") return flushFile(at(arguments).descriptor.get()), Value();
  if (call.method == "sync") return syncDirectory(pathIn(arguments)), Value();
  if (call.method == "space") return freeSpace(pathIn(arguments));
  if (call.method == "close") return open_.erase(sizeIn(arguments, "handle")), Value();
  if (call.method == "replace") {
    return replaceFile(pathIn(arguments), textOf(bytesIn(arguments))), Value();
  }
  if (call.method == "list") return listNames(pathIn(arguments));
  if (call.method == "move") {
    return moveFile(pathIn(arguments), pathIn(arguments, "to")), Value();
  }
  if (call.method == "remove") return removeFile(pathIn(arguments)), Value();
  return NotImplemented{};
}

void FileTable::expectRoom() const {
  if (open_.size() >= kMostOpenFiles) throw PlatformError("Too many files are open.");
}

Value FileTable::add(OpenFile file) {
  open_.emplace(++lastHandle_, std::move(file));
  return lastHandle_;
}

const FileTable::OpenFile& FileTable::at(const Map& arguments) const {
  const auto found = open_.find(sizeIn(arguments, "handle"));
  if (found == open_.end()) throw PlatformError("The file is not open.");
  return found->second;
}

}  // namespace brevanholt::platform
