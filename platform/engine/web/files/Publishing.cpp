#include "platform/engine/web/files/Publishing.h"

#include "platform/engine/web/link/EngineArguments.h"

#include <utility>
#include <vector>

namespace brevanholt::platform {
namespace {

ReceivedFile receivedFileIn(const Map& file, FileAccess* access) {
  const Value* path = file.find("path");
  if (path != nullptr && path->isNull()) {
    return {.path = std::nullopt,
            .relativePath = textIn(file, "relativePath"),
            .modified = sizeIn(file, "modified")};
  }
  return {.path = changeableIn(file, access).path(), .relativePath = textIn(file, "relativePath")};
}

}  // namespace

void publishFiles(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<ReceivedFile> files;
  try {
    for (const Value& one : listIn(argumentsOf(call), "files")) {
      files.push_back(receivedFileIn(mapIn(one), access));
    }
    if (access == nullptr) throw PlatformError("The user interface may not use files yet.");
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  access->publish(std::move(files), [result = std::move(result)](auto published) mutable {
    List places;
    for (const auto& place : published) {
      places.push_back(place.ok() ? Value(place.value().string())
                                  : failureValue("file_error", place.error()));
    }
    std::move(result).success(std::move(places));
  });
}

}  // namespace brevanholt::platform
