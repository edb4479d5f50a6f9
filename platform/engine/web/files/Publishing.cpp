#include "platform/engine/web/files/Publishing.h"

#include "platform/engine/web/link/EngineArguments.h"

#include <memory>
#include <utility>
#include <vector>

namespace brevanholt::platform {
namespace {

// One call on its way; the last file that is in its place, or is not, answers.
struct Round {
  Round(MethodResult owed, std::size_t count)
      : result(std::move(owed)), outcomes(count), left(count) {}

  void end(std::size_t at, Value outcome) {
    outcomes[at] = std::move(outcome);
    if (--left == 0) std::move(result).success(std::move(outcomes));
  }

  MethodResult result;
  List outcomes;
  std::size_t left;
};

}  // namespace

void publishFiles(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<std::pair<std::filesystem::path, std::string>> files;
  try {
    for (const Value& one : listIn(argumentsOf(call), "files")) {
      const Map& file = mapIn(one);
      files.emplace_back(changeableIn(file, access).path(), textIn(file, "relativePath"));
    }
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  if (files.empty()) return std::move(result).success(List());
  const auto round = std::make_shared<Round>(std::move(result), files.size());
  for (std::size_t at = 0; at < files.size(); ++at) {
    const auto& [path, relativePath] = files[at];
    access->publish(path, relativePath, [round, at](Result<std::filesystem::path> placed) {
      round->end(at, placed.ok() ? Value(placed.value().string())
                                 : failureValue("file_error", placed.error()));
    });
  }
}

}  // namespace brevanholt::platform
