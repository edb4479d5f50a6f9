#pragma once

#include <optional>
#include <string>

namespace brevanholt::platform {

// The path that a "file" URI names, decoded once (RFC 8089); any bytes that a path can hold.
// Nothing for other URIs, and for files of another host.
[[nodiscard]] std::optional<std::string> pathOfFileUri(const std::string& uri);

[[nodiscard]] std::string fileUriOf(const std::string& absolutePath);

}  // namespace brevanholt::platform
