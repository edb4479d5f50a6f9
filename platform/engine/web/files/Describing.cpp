#include "platform/engine/web/files/Describing.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"
#include "platform/foundation/PlatformError.h"

#include <optional>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

enum Kind : std::uint8_t { kNothing = 0, kFile = 1, kFolder = 2 };

std::optional<struct stat> lookAt(const Reach& reach) {
  struct stat found {};
  try {
    if (Place(reach).look(found)) return found;
  } catch (const PlatformError&) {
    // It is not described; whoever sends it hears why.
  }
  return std::nullopt;
}

// Nothing for what may not be used.
std::optional<Reach> permitted(const Value& path, FileAccess* access) {
  try {
    return readable(path, access);
  } catch (const PlatformError&) {
    return std::nullopt;
  }
}

Kind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return kFile;
  return S_ISDIR(mode) ? kFolder : kNothing;
}

Value describe(const std::vector<std::optional<Reach>>& reaches) {
  std::vector<std::uint8_t> kinds(reaches.size(), kNothing);
  Float64List sizes(reaches.size());
  Float64List modified(reaches.size());
  for (std::size_t at = 0; at < reaches.size(); ++at) {
    const auto found = reaches[at] ? lookAt(*reaches[at]) : std::nullopt;
    if (!found) continue;
    kinds[at] = kindOf(found->st_mode);
    sizes[at] = static_cast<double>(found->st_size);
    modified[at] = static_cast<double>(millisecondsOf(found->st_mtim));
  }
  return Map{{"kinds", Bytes(std::move(kinds))},
             {"sizes", std::move(sizes)},
             {"modified", std::move(modified)}};
}

}  // namespace

void Describing::perform(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<std::optional<Reach>> reaches;
  try {
    for (const Value& path : listIn(argumentsOf(call), "paths")) {
      reaches.push_back(permitted(path, access));
    }
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  thread_.async([reaches = std::move(reaches), &mainQueue = mainQueue_,
                 result = std::move(result)]() mutable {
    mainQueue.post([description = describe(reaches), result = std::move(result)]() mutable {
      std::move(result).success(std::move(description));
    });
  });
}

}  // namespace brevanholt::platform
