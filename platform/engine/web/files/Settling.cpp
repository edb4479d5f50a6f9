#include "platform/engine/web/files/Settling.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace brevanholt::platform {
namespace {

// One call on its way: each task writes its file's outcome, the last one answers.
struct Round {
  Round(MethodResult owed, std::vector<WholeFile> whole)
      : result(std::move(owed)),
        files(std::move(whole)),
        outcomes(files.size()),
        left(files.size()) {}

  void settle(std::size_t at) {
    try {
      settleFile(files[at]);
    } catch (const std::exception& error) {
      outcomes[at] = failureValue("file_error", error);
    }
  }

  MethodResult result;
  std::vector<WholeFile> files;
  List outcomes;
  std::atomic<std::size_t> left;
};

}  // namespace

void Settling::perform(const MethodCall& call, FileAccess* access, MethodResult result) {
  std::vector<WholeFile> files;
  try {
    for (const Value& one : listIn(argumentsOf(call), "files")) {
      const Map& file = mapIn(one);
      files.push_back({changeableIn(file, access), sizeIn(file, "modified")});
    }
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  if (files.empty()) return std::move(result).success(List());
  const auto round = std::make_shared<Round>(std::move(result), std::move(files));
  for (std::size_t at = 0; at < round->files.size(); ++at) {
    workers_.async([round, &mainQueue = mainQueue_, at] {
      round->settle(at);
      if (--round->left > 0) return;
      mainQueue.post([round] { std::move(round->result).success(std::move(round->outcomes)); });
    });
  }
}

}  // namespace brevanholt::platform
