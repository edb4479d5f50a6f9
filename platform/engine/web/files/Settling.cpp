#include "platform/engine/web/files/Settling.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace brevanholt::platform {
namespace {

// One call on its way: each file's task writes its own outcome, the last one answers.
struct Round {
  Round(MethodResult owed, std::size_t count)
      : result(std::move(owed)), outcomes(count), left(count) {}

  MethodResult result;
  List outcomes;
  std::atomic<std::size_t> left;
};

Value settled(const Reach& reach, std::int64_t modified) {
  try {
    settleFile(reach, modified);
    return {};
  } catch (const std::exception& error) {
    MethodError failure = engineError("file_error", error);
    return List{std::move(failure.code), std::move(failure.message), std::move(failure.details)};
  }
}

}  // namespace

void Settling::perform(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<std::pair<Reach, std::int64_t>> files;
  try {
    for (const Value& one : listIn(argumentsOf(call), "files")) {
      files.emplace_back(changeableIn(mapIn(one), access), sizeIn(mapIn(one), "modified"));
    }
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  if (files.empty()) return std::move(result).success(List());
  const auto round = std::make_shared<Round>(std::move(result), files.size());
  for (std::size_t at = 0; at < files.size(); ++at) {
    workers_.async([round, &mainQueue = mainQueue_, at, file = std::move(files[at])] {
      round->outcomes[at] = settled(file.first, file.second);
      if (--round->left > 0) return;
      mainQueue.post([round] { std::move(round->result).success(std::move(round->outcomes)); });
    });
  }
}

}  // namespace brevanholt::platform
