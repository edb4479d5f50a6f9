#include "platform/engine/web/files/Settling.h"

#include "platform/engine/web/files/FileOperations.h"
#include "platform/engine/web/link/EngineArguments.h"

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace brevanholt::platform {
namespace {

// Files that one task settles. New ones have nothing to flush, and only one thread at a time can
// make a file in a folder.
struct Range {
  std::size_t begin = 0;
  std::size_t end = 0;
};

std::vector<Range> tasksOf(const std::vector<WholeFile>& files) {
  std::vector<Range> tasks;
  for (std::size_t at = 0; at < files.size(); ++at) {
    const bool isJoined = at > 0 && files[at].isNew && files[at - 1].isNew;
    if (isJoined) ++tasks.back().end;
    if (!isJoined) tasks.push_back({at, at + 1});
  }
  return tasks;
}

// One call on its way: each task writes its files' outcomes, the last one answers.
struct Round {
  Round(MethodResult owed, std::vector<WholeFile> whole, std::size_t tasks)
      : result(std::move(owed)), files(std::move(whole)), outcomes(files.size()), left(tasks) {}

  void settle(const Range& range) {
    for (std::size_t at = range.begin; at < range.end; ++at) {
      try {
        settleFile(files[at]);
      } catch (const std::exception& error) {
        outcomes[at] = failureValue("file_error", error);
      }
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
      files.push_back(
          {changeableIn(file, access), sizeIn(file, "modified"), flagIn(file, "isNew")});
    }
  } catch (const std::exception& error) {
    return std::move(result).error(engineError("file_error", error));
  }
  if (files.empty()) return std::move(result).success(List());
  const std::vector<Range> tasks = tasksOf(files);
  const auto round = std::make_shared<Round>(std::move(result), std::move(files), tasks.size());
  for (const Range& task : tasks) {
    workers_.async([round, &mainQueue = mainQueue_, task] {
      round->settle(task);
      if (--round->left > 0) return;
      mainQueue.post([round] { std::move(round->result).success(std::move(round->outcomes)); });
    });
  }
}

}  // namespace brevanholt::platform
