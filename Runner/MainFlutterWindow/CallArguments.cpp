#include "Runner/MainFlutterWindow/CallArguments.h"

#include "platform/files/Files.h"
#include "platform/foundation/Log.h"

#include <cstdlib>

namespace brevanholt {

const platform::Map& CallArguments::map() const {
  const auto* map = call_.arguments.getIf<platform::Map>();
  if (map == nullptr || !map->hasOnlyStringKeys()) preconditionFailure(call_.method, "arguments");
  return *map;
}

std::optional<std::filesystem::path> CallArguments::path(std::string_view key) const {
  return platform::pathFrom(required<std::string>(key));
}

void preconditionFailure(std::string_view method, std::string_view key) {
  platform::logError("fatal: method \"" + std::string(method) + "\" was called without a valid \"" +
                     std::string(key) + "\"");
  std::abort();
}

}  // namespace brevanholt
