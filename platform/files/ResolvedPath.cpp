#include "platform/files/ResolvedPath.h"

#include "platform/foundation/PlatformError.h"

#include <array>
#include <climits>

#include <fcntl.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as path_resolution(7) has it
constexpr int kReference = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

void dropLastComponent(std::string& path) {
  const std::size_t slash = path.rfind('/');
  path.resize(slash == std::string::npos ? 0 : slash);
}

fs::path orRoot(const std::string& path) {
  return path.empty() ? "/" : path;
}

}  // namespace

std::optional<fs::path> resolvedPath(const fs::path& path) {
  return PathResolver().resolve(path.native());
}

std::optional<fs::path> PathResolver::resolve(const std::string& path) {
  if (!path.starts_with('/') || path.find('\0') != std::string::npos || path.size() >= PATH_MAX) {
    return std::nullopt;
  }
  const std::size_t slash = path.rfind('/');
  std::string folder = path.substr(0, slash);
  if (!lastPlace_ || folder != lastFolder_) {
    lastPlace_.reset();
    Place place = root();
    if (!walk(place, folder)) return std::nullopt;
    lastPlace_ = std::move(place);
    lastFolder_ = std::move(folder);
  }
  const Place& parent = *lastPlace_;
  const std::string name = path.substr(slash + 1);
  if (name.empty() || name == ".") return orRoot(parent.path);
  if (name != "..") {
    const auto target = linkAt(parent, name);
    if (!target) return parent.path + '/' + name;
  }
  Place place = root();
  if (!walk(place, path)) return std::nullopt;
  return orRoot(place.path);
}

PathResolver::Place PathResolver::root() {
  return {.folder = FileDescriptor(::open("/", kReference)), .path = "", .linksLeft = kMostLinks};
}

bool PathResolver::walk(Place& place, std::string_view path) {
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string name(path.substr(0, slash));
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      countLookup();
      ascend(place);
    } else if (!descend(place, name)) {
      return false;
    }
  }
  return true;
}

bool PathResolver::descend(Place& place, const std::string& name) {
  if (place.missing == 0) {
    countLookup();
    FileDescriptor folder(::openat(place.folder.get(), name.c_str(), kReference));
    if (folder) {
      place.folder = std::move(folder);
    } else if (const auto target = linkAt(place, name)) {
      return follow(place, *target);
    } else {
      ++place.missing;
    }
  } else {
    ++place.missing;
  }
  place.path += '/' + name;
  return true;
}

bool PathResolver::follow(Place& place, const std::string& target) {
  if (--place.linksLeft < 0) return false;
  if (target.starts_with('/')) {
    const int linksLeft = place.linksLeft;
    place = root();
    place.linksLeft = linksLeft;
  }
  return walk(place, target);
}

void PathResolver::ascend(Place& place) {
  dropLastComponent(place.path);
  if (place.missing > 0) {
    --place.missing;
  } else {
    place.folder = FileDescriptor(::openat(place.folder.get(), "..", kReference));
  }
}

std::optional<std::string> PathResolver::linkAt(const Place& place, const std::string& name) {
  if (place.missing > 0) return std::nullopt;
  countLookup();
  std::array<char, PATH_MAX> target;
  const ssize_t length =
      ::readlinkat(place.folder.get(), name.c_str(), target.data(), target.size());
  if (length < 0) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

void PathResolver::countLookup() {
  if (lookupsLeft_ == 0) throw PlatformError("There are too many paths to look up.");
  --lookupsLeft_;
}

}  // namespace brevanholt::platform
