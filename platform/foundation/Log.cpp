#include "platform/foundation/Log.h"

#include <cstdio>

namespace brevanholt::platform {
namespace {

LogSink& sink() {
  static LogSink current = [](LogLevel level, std::string_view text) {
    if (level == LogLevel::kDebug) return;
    std::fprintf(stderr, "brevanholt: %.*s\n", static_cast<int>(text.size()), text.data());
  };
  return current;
}

}  // namespace

void setLogSink(LogSink newSink) {
  sink() = std::move(newSink);
}

void logDebug(std::string_view text) {
  sink()(LogLevel::kDebug, text);
}
void logInfo(std::string_view text) {
  sink()(LogLevel::kInfo, text);
}
void logWarning(std::string_view text) {
  sink()(LogLevel::kWarning, text);
}
void logError(std::string_view text) {
  sink()(LogLevel::kError, text);
}

}  // namespace brevanholt::platform
