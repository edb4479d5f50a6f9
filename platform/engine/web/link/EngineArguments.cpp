#include "platform/engine/web/link/EngineArguments.h"

#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"

#include <cstring>

namespace brevanholt::platform {
namespace {

template <ValueAlternative T>
const T& required(const Map& arguments, std::string_view key, const char* what) {
  const Value* value = arguments.find(key);
  const auto* found = value != nullptr ? value->getIf<T>() : nullptr;
  if (found == nullptr) throw PlatformError("“" + std::string(key) + "” must be " + what + ".");
  return *found;
}

std::filesystem::path absolutePath(const std::string& text) {
  auto path = pathFrom(text);
  if (!path || !path->is_absolute()) throw PlatformError("The path of a file must be absolute.");
  return *std::move(path);
}

FileAccess& expected(FileAccess* access) {
  if (access == nullptr) throw PlatformError("The user interface may not use files yet.");
  return *access;
}

}  // namespace

std::int64_t sizeIn(const Map& arguments, std::string_view key) {
  const Value* value = arguments.find(key);
  const auto number = value != nullptr ? value->integer() : std::nullopt;
  if (!number || *number < 0) throw PlatformError("“" + std::string(key) + "” must be a size.");
  return *number;
}

const std::string& textIn(const Map& arguments, std::string_view key) {
  return required<std::string>(arguments, key, "a text");
}

Reach readableIn(const Map& arguments, FileAccess* access, std::string_view key) {
  return expected(access).toRead(absolutePath(textIn(arguments, key)));
}

Reach readable(const Value& path, FileAccess* access) {
  const auto* text = path.getIf<std::string>();
  if (text == nullptr) throw PlatformError("A path must be a text.");
  return expected(access).toRead(absolutePath(*text));
}

Reach changeableIn(const Map& arguments, FileAccess* access, std::string_view key) {
  return expected(access).toChange(absolutePath(textIn(arguments, key)));
}

const List& listIn(const Map& arguments, std::string_view key) {
  return required<List>(arguments, key, "a list");
}

const Map& mapIn(const Value& entry) {
  const auto* map = entry.getIf<Map>();
  if (map == nullptr) throw PlatformError("An entry of the list must be a map.");
  return *map;
}

const Bytes& bytesIn(const Map& arguments) {
  return required<Bytes>(arguments, "bytes", "bytes");
}

const Bytes* optionalBytesIn(const Map& arguments, std::string_view key) {
  const Value* value = arguments.find(key);
  return value == nullptr || value->isNull() ? nullptr : &required<Bytes>(arguments, key, "bytes");
}

bool flagIn(const Map& arguments, std::string_view key) {
  return required<bool>(arguments, key, "true or false");
}

const Map& argumentsOf(const MethodCall& call) {
  static const Map kNone;
  const auto* arguments = call.arguments.getIf<Map>();
  return arguments != nullptr ? *arguments : kNone;
}

MethodError engineError(const char* code, const std::exception& error) {
  const auto* known = dynamic_cast<const PlatformError*>(&error);
  const int number = known != nullptr ? known->errorNumber() : 0;
  const char* name = number != 0 ? ::strerrorname_np(number) : nullptr;
  return {code, error.what(), name != nullptr ? Value(name) : Value()};
}

Value failureValue(const char* code, const std::exception& error) {
  MethodError failure = engineError(code, error);
  return List{std::move(failure.code), std::move(failure.message), std::move(failure.details)};
}

}  // namespace brevanholt::platform
