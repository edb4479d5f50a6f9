#include "platform/engine/web/FileTable.h"

#include "platform/engine/web/FileOperations.h"
#include "platform/foundation/PlatformError.h"

#include <algorithm>
#include <cstring>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostOpenFiles = 256;
constexpr std::int64_t kLongestRead = 16 << 20;

MethodError fileError(const std::exception& error) {
  const auto* ofTheSystem = dynamic_cast<const FileError*>(&error);
  const char* name =
      ofTheSystem != nullptr ? ::strerrorname_np(ofTheSystem->errorNumber()) : nullptr;
  return {"file_error", error.what(), name != nullptr ? Value(name) : Value()};
}

std::string pathIn(const Map& arguments) {
  const Value* value = arguments.find("path");
  const auto* path = value != nullptr ? value->getIf<std::string>() : nullptr;
  if (path == nullptr || !path->starts_with('/') || path->find('\0') != std::string::npos) {
    throw PlatformError("The path of a file must be absolute.");
  }
  return *path;
}

std::int64_t sizeIn(const Map& arguments, std::string_view key) {
  const Value* value = arguments.find(key);
  const auto number = value != nullptr ? value->integer() : std::nullopt;
  if (!number || *number < 0) {
    throw PlatformError("The " + std::string(key) + " of a file operation must be a size.");
  }
  return *number;
}

Bytes bytesIn(const Map& arguments) {
  const Value* value = arguments.find("bytes");
  const auto* bytes = value != nullptr ? value->getIf<Bytes>() : nullptr;
  if (bytes == nullptr) throw PlatformError("Only bytes can be written.");
  return *bytes;
}

}  // namespace

Reply FileTable::perform(const MethodCall& call) {
  static const Map kNoArguments;
  const auto* arguments = call.arguments.getIf<Map>();
  try {
    return dispatch(call, arguments != nullptr ? *arguments : kNoArguments);
  } catch (const std::exception& error) {
    return fileError(error);
  }
}

Reply FileTable::dispatch(const MethodCall& call, const Map& arguments) {
  if (call.method == "stat") return statFile(pathIn(arguments));
  if (call.method == "open") return add({openFileForReading(pathIn(arguments)), false});
  if (call.method == "create") return add({createFile(pathIn(arguments)), true});
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
  if (call.method == "close") return open_.erase(sizeIn(arguments, "handle")), Value();
  if (call.method == "remove") return removeFile(pathIn(arguments)), Value();
  return NotImplemented{};
}

Value FileTable::add(OpenFile file) {
  if (open_.size() >= kMostOpenFiles) throw PlatformError("Too many files are open.");
  open_.emplace(++lastHandle_, std::move(file));
  return lastHandle_;
}

const FileTable::OpenFile& FileTable::at(const Map& arguments) const {
  const auto found = open_.find(sizeIn(arguments, "handle"));
  if (found == open_.end()) throw PlatformError("The file is not open.");
  return found->second;
}

}  // namespace brevanholt::platform
