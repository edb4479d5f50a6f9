#pragma once

#include "platform/foundation/Log.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace brevanholt::platform {

// Captures the log while it exists.
class CapturedLog {
 public:
  CapturedLog() {
    setLogSink([this](LogLevel level, std::string_view text) {
      const std::lock_guard lock(mutex_);
      lines_.push_back({level, std::string(text)});
    });
  }
  ~CapturedLog() {
    setLogSink([](LogLevel, std::string_view) {});
  }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  // How many lines of that level contain the text.
  [[nodiscard]] std::ptrdiff_t count(LogLevel level, std::string_view text) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::count_if(lines_, [&](const Line& line) {
      return line.level == level && line.text.find(text) != std::string::npos;
    });
  }

 private:
  struct Line {
    LogLevel level;
    std::string text;
  };
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

}  // namespace brevanholt::platform
