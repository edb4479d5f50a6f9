#include "Runner/MainFlutterWindow/PageFiles.h"

#include "platform/files/Place.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <string_view>

namespace brevanholt {

using platform::Reach;

namespace {

constexpr std::size_t kMostLogged = 100;

// Nothing where the path is not the folder or in it.
std::optional<Reach> within(const std::filesystem::path& folder,
                            const std::filesystem::path& path) {
  std::string_view rest = path.native();
  if (!rest.starts_with(folder.native())) return std::nullopt;
  rest.remove_prefix(folder.native().size());
  if (rest.empty()) return Reach{.root = folder, .below = {}};
  if (!rest.starts_with('/')) return std::nullopt;
  return Reach{.root = folder, .below = rest.substr(1)};
}

// Without a slash at the end. Nothing for a path that could lead elsewhere than its text says.
std::optional<std::filesystem::path> plain(const std::filesystem::path& path) {
  std::string text = path.native();
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  if (!text.starts_with('/')) return std::nullopt;
  for (std::size_t at = 0; at != std::string::npos; at = text.find('/', at + 1)) {
    const std::string_view name =
        std::string_view(text).substr(at + 1, text.find('/', at + 1) - at - 1);
    if (name.empty() || name == "." || name == "..") return std::nullopt;
  }
  return text;
}

}  // namespace

Reach PageFiles::toRead(const Path& path) {
  const auto named = plain(path);
  if (!named) refuse(path, "it is not plain");
  if (auto own = inOwnFolder(*named)) return std::move(*own);
  if (const auto item = picked_.openItemOf(*named)) return within(*item, *named).value();
  if (const auto identity = received_.placedAt(*named)) {
    return {.root = *named, .below = {}, .identity = identity};
  }
  refuse(path, "it was not handed to the user interface");
}

Reach PageFiles::toChange(const Path& path) {
  const auto named = plain(path);
  if (!named) refuse(path, "it is not plain");
  auto own = inOwnFolder(*named);
  if (!own || own->below.empty()) refuse(path, "it is outside of the user interface's own folders");
  return std::move(*own);
}

void PageFiles::publish(std::vector<platform::ReceivedFile> files, Published done) {
  std::vector<ReceiveFolder::Arrival> arrivals;
  arrivals.reserve(files.size());
  for (platform::ReceivedFile& file : files) {
    const bool isReadable = !file.path || isOwn(*file.path);
    arrivals.push_back({.path = std::move(file.path),
                        .name = file.relativePath,
                        .relativePath = std::move(file.relativePath),
                        .isReadable = isReadable,
                        .modified = file.modified});
  }
  received_.publishFiles(arrivals, std::move(done));
}

bool PageFiles::isOwn(const Path& path) const {
  const auto named = plain(path);
  const auto own = named ? inOwnFolder(*named) : std::nullopt;
  if (!own || own->below.empty()) return false;
  try {
    (void)platform::Place(*own);
    return true;
  } catch (const platform::PlatformError&) {
    return false;
  }
}

std::optional<Reach> PageFiles::inOwnFolder(const Path& path) const {
  for (const Path& folder : own_) {
    if (auto reach = within(folder, path)) return reach;
  }
  return received_.scratchArea() ? within(*received_.scratchArea(), path) : std::nullopt;
}

void PageFiles::refuse(const Path& path, const char* why) {
  const std::string text = "“" + path.string() + "” may not be used: " + why + ".";
  if (logged_.size() < kMostLogged && logged_.insert(path.native()).second) {
    platform::logWarning("the user interface asked for a file: " + text);
  }
  throw platform::PlatformError(text);
}

}  // namespace brevanholt
