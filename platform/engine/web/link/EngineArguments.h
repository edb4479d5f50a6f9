#pragma once

#include "platform/channel/StandardMethodCodec.h"
#include "platform/engine/FileAccess.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// What the engine's own channels have in common. Their calls come from UI code, whose mistakes are
// answered, not fatal: a missing or mistyped argument throws PlatformError.

[[nodiscard]] std::int64_t sizeIn(const Map& arguments, std::string_view key);
[[nodiscard]] const std::string& textIn(const Map& arguments, std::string_view key);
// Where the host lets the page use an absolute path. `access` may be null, which refuses.
[[nodiscard]] Reach readableIn(const Map& arguments, FileAccess* access,
                               std::string_view key = "path");
[[nodiscard]] Reach readable(const Value& path, FileAccess* access);
[[nodiscard]] Reach changeableIn(const Map& arguments, FileAccess* access,
                                 std::string_view key = "path");
[[nodiscard]] const List& listIn(const Map& arguments, std::string_view key);
// Of a list whose entries are maps.
[[nodiscard]] const Map& mapIn(const Value& entry);
[[nodiscard]] const Bytes& bytesIn(const Map& arguments);
// Null where the argument is missing or null.
[[nodiscard]] const Bytes* optionalBytesIn(const Map& arguments, std::string_view key);
[[nodiscard]] bool flagIn(const Map& arguments, std::string_view key);

// The call's arguments; an empty map where there are none.
[[nodiscard]] const Map& argumentsOf(const MethodCall& call);

// The reply to a failure, with the name of the system's error ("ENOSPC") as details where there is
// one.
[[nodiscard]] MethodError engineError(const char* code, const std::exception& error);
// The same as a value, [code, text, the error's name], for what is one of many in a call.
[[nodiscard]] Value failureValue(const char* code, const std::exception& error);

}  // namespace brevanholt::platform
