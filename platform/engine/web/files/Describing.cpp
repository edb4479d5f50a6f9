#include "platform/engine/web/files/Describing.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"
#include "platform/foundation/PlatformError.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

enum Kind : std::uint8_t { kNothing = 0, kFile = 1, kFolder = 2 };

// Names in one folder: files mostly come folder by folder.
struct Names {
  std::string folder;
  std::optional<Reach> first;  // nothing for what may not be used
  std::vector<std::string> names;

  // Whether another name in the folder may be used as the first may: both are below one root.
  [[nodiscard]] bool takes(std::string_view otherFolder, std::string_view name) const {
    return first && !first->below.empty() && !names.front().empty() && folder == otherFolder &&
           !name.empty() && name != "." && name != ".." &&
           name.find('\0') == std::string_view::npos;
  }
};

using Found = std::vector<std::optional<struct stat>>;

// Nothing where `look` throws: the page reports an item without a description as unreadable.
template <class Look>
auto unlessItFails(Look look) -> std::optional<decltype(look())> {
  try {
    return look();
  } catch (const PlatformError&) {
    return std::nullopt;
  }
}

void lookAt(const Names& one, Found& found) {
  const auto place = one.first ? unlessItFails([&] { return Place(*one.first); }) : std::nullopt;
  for (const std::string& name : one.names) {
    const bool isFirst = &name == &one.names.front();
    struct stat information {};
    const auto isThere = unlessItFails([&] {
      return place && (isFirst ? place->look(information) : place->lookBeside(name, information));
    });
    found.push_back(isThere.value_or(false) ? std::optional(information) : std::nullopt);
  }
}

std::vector<Names> inFolders(const List& paths, FileAccess* access) {
  std::vector<Names> all;
  for (const Value& path : paths) {
    const auto* text = path.getIf<std::string>();
    const std::string_view whole = text != nullptr ? *text : std::string_view();
    const std::size_t cut = whole.rfind('/') + 1;  // 0 where there is none
    const std::string_view folder = whole.substr(0, cut);
    const std::string_view name = whole.substr(cut);
    if (all.empty() || !all.back().takes(folder, name)) {
      all.push_back({.folder = std::string(folder),
                     .first = unlessItFails([&] { return readable(path, access); }),
                     .names = {}});
    }
    all.back().names.emplace_back(name);
  }
  return all;
}

Kind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return kFile;
  return S_ISDIR(mode) ? kFolder : kNothing;
}

Value describe(const std::vector<Names>& all) {
  Found found;
  for (const Names& one : all) lookAt(one, found);
  std::vector<std::uint8_t> kinds(found.size(), kNothing);
  Float64List sizes(found.size());
  Float64List modified(found.size());
  for (std::size_t at = 0; at < found.size(); ++at) {
    if (!found[at]) continue;
    kinds[at] = kindOf(found[at]->st_mode);
    sizes[at] = static_cast<double>(found[at]->st_size);
    modified[at] = static_cast<double>(millisecondsOf(found[at]->st_mtim));
  }
  return Map{{"kinds", Bytes(std::move(kinds))},
             {"sizes", std::move(sizes)},
             {"modified", std::move(modified)}};
}

}  // namespace

void Describing::perform(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<Names> all;
  try {
    all = inFolders(listIn(argumentsOf(call), "paths"), access);
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  thread_.async(
      [all = std::move(all), &mainQueue = mainQueue_, result = std::move(result)]() mutable {
        mainQueue.post([description = describe(all), result = std::move(result)]() mutable {
          std::move(result).success(std::move(description));
        });
      });
}

}  // namespace brevanholt::platform
