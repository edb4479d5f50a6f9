#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

enum class LogLevel { kDebug, kInfo, kWarning, kError };
using LogSink = std::function<void(LogLevel, std::string_view)>;

// Where log lines go; standard error until it is set. Set it before threads start.
void setLogSink(LogSink sink);

// Each is one line: control characters in the text are shown as "\x0a". Safe on any thread. Key
// material and contents of files are never logged.
void logDebug(std::string_view text);
void logInfo(std::string_view text);
void logWarning(std::string_view text);
void logError(std::string_view text);

}  // namespace brevanholt::platform
