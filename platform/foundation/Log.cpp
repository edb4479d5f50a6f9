#include "platform/foundation/Log.h"

#include <cstdio>
#include <utility>

namespace brevanholt::platform {
namespace {

LogSink& sink() {
  static LogSink current = [](LogLevel level, std::string_view text) {
    if (level == LogLevel::kDebug) return;
    std::fprintf(stderr, "brevanholt: %.*s\n", static_cast<int>(text.size()), text.data());
  };
  return current;
}

// A name may hold a newline, which must not look like the start of another line.
std::string onOneLine(std::string_view text) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string line;
  line.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7F) {
      line += character;
    } else {
      line += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
    }
  }
  return line;
}

void log(LogLevel level, std::string_view text) {
  sink()(level, onOneLine(text));
}

}  // namespace

void setLogSink(LogSink newSink) {
  sink() = std::move(newSink);
}

void logDebug(std::string_view text) {
  log(LogLevel::kDebug, text);
}
void logInfo(std::string_view text) {
  log(LogLevel::kInfo, text);
}
void logWarning(std::string_view text) {
  log(LogLevel::kWarning, text);
}
void logError(std::string_view text) {
  log(LogLevel::kError, text);
}

}  // namespace brevanholt::platform
