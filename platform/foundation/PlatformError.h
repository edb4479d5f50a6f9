#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <utility>

namespace brevanholt::platform {

// A failure in words that the UI may show.
class PlatformError : public std::exception {
 public:
  explicit PlatformError(std::string message, int errorNumber = 0)
      : message_(std::move(message)), errorNumber_(errorNumber) {}
  [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }
  [[nodiscard]] const std::string& message() const { return message_; }
  // The system's; 0 where no system call failed.
  [[nodiscard]] int errorNumber() const { return errorNumber_; }

 private:
  std::string message_;
  int errorNumber_;
};

// A system call that failed: "Could not <action>: <the system's text>".
class SystemError : public PlatformError {
 public:
  SystemError(std::string_view action, int errorNumber);
};

// A system call that failed on a path: "Could not <action> “<path>”: <the system's text>".
class FileError : public SystemError {
 public:
  FileError(std::string_view action, const std::filesystem::path& path, int errorNumber);
};

}  // namespace brevanholt::platform
