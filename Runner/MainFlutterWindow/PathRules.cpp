#include "Runner/MainFlutterWindow/PathRules.h"

#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Text.h"
#include "platform/foundation/Uuid.h"

#include <algorithm>

namespace brevanholt {
namespace {

using platform::PlatformError;

constexpr std::size_t kLongestRelativePath = 1024;  // user-perceived characters
constexpr int kLastSuffix = 9999;
constexpr std::string_view kFallbackName = "Received file";

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

}  // namespace

std::string safeFolderName(std::string_view name) {
  std::string folder = platform::trimmed(name);
  if (folder.empty() || isDotOrDotDot(folder) ||
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
  if (!arePiecesSafe(relative) || platform::characterCount(relative) > kLongestRelativePath) {
    throw PlatformError("The received path is invalid.");
  }
  return relative;
}

std::string receivedFileName(std::string_view name) {
  if (name.find('\0') != std::string_view::npos) {
    throw PlatformError("The received path is invalid.");
  }
  const std::size_t end = name.find_last_not_of('/');
  if (end == std::string_view::npos) return std::string(kFallbackName);
  name = name.substr(0, end + 1);
  return std::string(name.substr(name.find_last_of('/') + 1));
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

  const std::string_view extension = pathExtension(name);
  const std::string_view base =
      extension.empty() ? name : name.substr(0, name.size() - extension.size() - 1);
  for (int suffix = 1; suffix <= kLastSuffix; ++suffix) {
    std::string candidate = std::string(base) + " (" + std::to_string(suffix) + ")";
    if (!extension.empty()) candidate.append(".").append(extension);
    if (!isTaken(directory / candidate)) return directory / candidate;
  }
  return directory / (platform::makeUuid() + "-" + std::string(name));
}

}  // namespace brevanholt
