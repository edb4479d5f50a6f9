#include "Runner/ReceiveFolder/PathRules.h"

#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Text.h"
#include "platform/foundation/Uuid.h"

#include <algorithm>

namespace brevanholt {
namespace {

using platform::PlatformError;

constexpr std::size_t kLongestRelativePath = 1024;  // user-perceived characters
constexpr std::size_t kLongestFileName = 255;       // bytes; NAME_MAX of common file systems
constexpr int kLastSuffix = 9999;
constexpr std::string_view kFallbackName = "Received file";
constexpr const char* kInvalidPath = "The received path is invalid.";

bool isDotOrDotDot(std::string_view name) {
  return name == "." || name == "..";
}

bool isSafePiece(std::string_view piece) {
  return !piece.empty() && !isDotOrDotDot(piece) && piece.find(':') == std::string_view::npos &&
         std::ranges::none_of(piece, [](unsigned char byte) { return byte < 0x20; });
}

bool arePiecesSafe(std::string_view path) {
  for (;;) {
    const std::size_t slash = path.find('/');
    if (!isSafePiece(path.substr(0, slash))) return false;
    if (slash == std::string_view::npos) return true;
    path.remove_prefix(slash + 1);
  }
}

// "UUID-name". A name that would become too long loses its end.
std::string withUuid(std::string_view name) {
  const std::string prefix = platform::makeUuid() + "-";
  return prefix + std::string(platform::fittedTo(kLongestFileName - prefix.size(), name));
}

// "name (1).extension". A name that would become too long loses the end of its stem.
std::string numbered(std::string_view name, int number) {
  std::string end = " (" + std::to_string(number) + ")";
  const std::string_view extension = pathExtension(name);
  const std::size_t stemSize = extension.empty() ? name.size() : name.size() - extension.size() - 1;
  if (stemSize < name.size()) end.append(".").append(extension);
  if (end.size() >= kLongestFileName) return numbered(name.substr(0, stemSize), number);
  return std::string(platform::fittedTo(kLongestFileName - end.size(), name.substr(0, stemSize))) +
         end;
}

}  // namespace

std::string safeFolderName(std::string_view name) {
  std::string folder = platform::trimmed(name);
  if (folder.empty() || isDotOrDotDot(folder) || !platform::pathFrom(folder) ||
      folder.find_first_of("/\\:") != std::string::npos) {
    throw PlatformError("The receive folder name is invalid.");
  }
  return folder;
}

std::string safeRelativePath(std::string_view path) {
  std::string slashed(path);
  std::ranges::replace(slashed, '\\', '/');
  std::string relative = platform::trimmed(slashed);
  // An empty path and an absolute one have an empty first piece.
  // There are no more characters than bytes, and counting them takes longer than placing the file.
  if (!arePiecesSafe(relative) || (relative.size() > kLongestRelativePath &&
                                   platform::characterCount(relative) > kLongestRelativePath)) {
    throw PlatformError(kInvalidPath);
  }
  return relative;
}

std::string receivedFileName(std::string_view name) {
  if (!platform::pathFrom(name)) throw PlatformError(kInvalidPath);
  const std::size_t end = name.find_last_not_of('/');
  if (end == std::string_view::npos) return std::string(kFallbackName);
  name = name.substr(0, end + 1);
  return std::string(name.substr(name.find_last_of('/') + 1));
}

std::string scratchFileName(std::string_view name) {
  return withUuid(receivedFileName(name));
}

std::string_view pathExtension(std::string_view name) {
  const std::size_t dot = name.find_last_of('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::filesystem::path uniqueDestination(
    const std::filesystem::path& directory, std::string_view name,
    const std::function<bool(const std::filesystem::path&)>& isTaken) {
  std::filesystem::path first = directory / name;
  if (!isTaken(first)) return first;

  for (int suffix = 1; suffix <= kLastSuffix; ++suffix) {
    std::filesystem::path candidate = directory / numbered(name, suffix);
    if (!isTaken(candidate)) return candidate;
  }
  return directory / withUuid(name);
}

}  // namespace brevanholt
