#include "Runner/Intake/ShareEntries.h"

#include "platform/files/Files.h"
#include "platform/files/FolderListing.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Utf8.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::FolderItem;
using platform::List;
using platform::Map;

namespace {

constexpr const char* kFallbackName = "Received file";

Map folderEntry(std::string path, std::string_view relativePath, FolderItem::Kind kind,
                std::uint64_t size) {
  const bool isDirectory = kind == FolderItem::Kind::kDirectory;
  return {{"path", std::move(path)},
          {"name", relativePath.substr(relativePath.rfind('/') + 1)},
          {"size", static_cast<std::int64_t>(size)},
          {"relativePath", relativePath},
          {"kind", isDirectory ? "directory" : "file"}};
}

}  // namespace

fs::path withoutTrailingSlash(const fs::path& path) {
  const std::size_t last = path.native().find_last_not_of('/');
  return last == std::string::npos ? path.root_path() : fs::path(path.native().substr(0, last + 1));
}

bool canBeNamed(const fs::path& path) {
  return platform::isValidUtf8(path.native());
}

void eraseUnnameable(std::vector<fs::path>& paths) {
  std::erase_if(paths, [](const fs::path& path) {
    if (canBeNamed(path)) return false;
    platform::logWarning("“" + platform::repairedUtf8(path.native()) +
                         "” is left out: its name is not UTF-8");
    return true;
  });
}

Map pickedFileEntry(const fs::path& file) {
  return {{"path", file.native()}, {"name", file.filename().native()}, {"size", std::int64_t{0}}};
}

List folderEntries(const fs::path& folder, const std::stop_token& stop) {
  const std::string name = folder.filename().empty() ? kFallbackName : folder.filename().native();
  const std::string& path = folder.native();
  const std::string prefix = path.ends_with('/') ? path : path + '/';
  const auto items = platform::listFolder(folder, stop);
  List entries;
  entries.reserve(items.size() + 1);
  entries.push_back(folderEntry(path, name, FolderItem::Kind::kDirectory, 0));
  for (const FolderItem& item : items) {
    entries.push_back(folderEntry(prefix + item.relativePath, name + '/' + item.relativePath,
                                  item.kind, item.size));
  }
  return entries;
}

List shareEntries(const fs::path& location, const std::stop_token& stop) {
  if (platform::isDirectory(location)) return folderEntries(location, stop);
  const auto size = static_cast<std::int64_t>(platform::fileSize(location).value_or(0));
  return {Map{{"path", location.native()},
              {"name", location.filename().native()},
              {"size", size},
              {"kind", "file"}}};
}

Map textEntry(const std::string& text) {
  return {{"path", ""},
          {"name", "Shared text"},
          {"size", static_cast<std::int64_t>(text.size())},
          {"kind", "text"},
          {"text", text}};
}

}  // namespace brevanholt
