#include "platform/engine/web/files/FileTable.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"
#include "platform/files/Files.h"
#include "platform/files/ReplaceFile.h"
#include "platform/foundation/PlatformError.h"

#include <algorithm>
#include <array>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kMostOpenFiles = 256;
constexpr std::int64_t kLongestRead = 16 << 20;

enum class Use { kNone, kRead, kChange };

Use useOf(std::string_view method) {
  constexpr std::array<std::string_view, 4> kReads{"stat", "open", "list", "space"};
  constexpr std::array<std::string_view, 5> kChanges{"create", "edit", "replace", "move", "remove"};
  if (std::ranges::find(kReads, method) != kReads.end()) return Use::kRead;
  return std::ranges::find(kChanges, method) != kChanges.end() ? Use::kChange : Use::kNone;
}

std::string_view textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

FileTable::Permitted FileTable::permitted(MethodCall call, FileAccess* access) {
  Permitted permitted{.call = std::move(call), .path = std::nullopt, .to = std::nullopt};
  const Map& arguments = argumentsOf(permitted.call);
  const Use use = useOf(permitted.call.method);
  if (use == Use::kRead) permitted.path = readableIn(arguments, access);
  if (use == Use::kChange) permitted.path = changeableIn(arguments, access);
  if (permitted.call.method == "move") permitted.to = changeableIn(arguments, access, "to");
  return permitted;
}

Reply FileTable::perform(const Permitted& permitted) {
  try {
    return dispatch(permitted, argumentsOf(permitted.call));
  } catch (const std::exception& error) {
    return engineError("file_error", error);
  }
}

Reply FileTable::dispatch(const Permitted& permitted, const Map& arguments) {
  const MethodCall& call = permitted.call;
  const auto path = [&] { return Place(permitted.path.value()); };
  if (call.method == "stat") return statFile(permitted.path.value());
  if (call.method == "open") {
    expectRoom();
    return add({path().openToRead(), false});
  }
  if (call.method == "create") {
    expectRoom();
    return add({path().create(), true});
  }
  if (call.method == "edit") {
    expectRoom();
    return add({path().openToWrite(), true});
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
  if (call.method == "space") return freeSpace(path());
  if (call.method == "close") return open_.erase(sizeIn(arguments, "handle")), Value();
  if (call.method == "replace") {
    const Place place = path();
    return replaceFile(place.folder(), place.name(), textOf(bytesIn(arguments))), Value();
  }
  if (call.method == "list") return listNames(path());
  if (call.method == "move") {
    return moveFile(path(), Place(permitted.to.value())), Value();
  }
  if (call.method == "remove") return path().remove(), Value();
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
