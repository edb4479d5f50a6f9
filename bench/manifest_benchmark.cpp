// Taking a share whose manifest is as large as a manifest may be, beside what `python3 -m
// json.tool` takes to read and write the same file. What is refused counts as much as what is read.

#include "Shared/BrevanholtNativeShareStore.h"
#include "platform/foundation/Log.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "bench/InTurns.h"

namespace brevanholt {
namespace {

namespace fs = std::filesystem;

constexpr const char* kShare = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr std::size_t kLargest = std::size_t{16} << 20;

// `start`, then as many pieces as fit, then `end`.
std::string filled(std::string start, const std::function<std::string(std::size_t)>& piece,
                   const std::string& end) {
  for (std::size_t number = 0;; ++number) {
    const std::string next = piece(number);
    if (start.size() + next.size() + end.size() > kLargest) return start + end;
    start += next;
  }
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

// Items separated by commas, as many as fit.
std::string itemsOf(const std::function<std::string(std::size_t)>& item) {
  return filled(R"({"items": [)",
                [&](std::size_t number) { return (number == 0 ? "" : ",") + item(number); }, "]}");
}

std::string onePathOf(std::size_t components) {
  return R"({"items": [{"path": ")" + repeated("/a", components) + "\"}]}";
}

// The manifests; each is made for a share folder.
using Make = std::string (*)(const fs::path& share);

std::string longPath(const fs::path&) {
  return onePathOf(60'000);
}
std::string longestPath(const fs::path&) {
  return onePathOf(kLargest / 2 - 20);
}
std::string emptyItems(const fs::path&) {
  return itemsOf([](std::size_t) { return "{}"; });
}
std::string unknownValues(const fs::path&) {
  return filled(R"({"items": [], "more": [0)", [](std::size_t) { return ",[]"; }, "]}");
}
std::string texts(const fs::path&) {
  return itemsOf([](std::size_t) { return R"({"text": ")" + repeated("text ", 20) + "\"}"; });
}
std::string stagedFiles(const fs::path& share) {
  return itemsOf([&](std::size_t number) {
    return R"({"path": ")" + (share / "folder/a picture ").native() + std::to_string(number) +
           ".jpeg\"}";
  });
}
// Each path leads through 600 folders, and in another way than the one before.
std::string deepFiles(const fs::path& share) {
  const std::string folders = repeated("/d", 600);
  fs::create_directories(share.native() + folders);
  return itemsOf([&](std::size_t number) {
    return R"({"path": ")" + share.native() + folders +
           repeated(number % 2 == 0 ? "/../d" : "/.", 100 + number % 100) + "/a\"}";
  });
}

void BM_TakeShare(benchmark::State& state, Make make) {
  platform::setLogSink([](platform::LogLevel, std::string_view) {});
  const TemporaryFolder downloads;
  const fs::path share = downloads / ".NativeShareInbox" / kShare;
  fs::create_directories(share / "folder");
  const std::string manifest = make(share);
  const fs::path copy = downloads / "copy.json";
  writeFile(copy, manifest);
  const auto ours = [&] {
    writeFile(share / "share.json", manifest);
    return secondsOf([&] {
      const auto shares = BrevanholtNativeShareStore(downloads.path()).consumePending();
      benchmark::DoNotOptimize(shares.data());
    });
  };
  inTurns(state, ours,
          {shellCommand(state, "json_tool",
                        "python3 -m json.tool '" + copy.string() + "' >/dev/null")});
  state.counters["refused"] = fs::exists(share / "share.json") ? 1 : 0;
}

// NOLINTBEGIN(bugprone-macro-parentheses)
#define BREVANHOLT_MANIFEST(make)              \
  BENCHMARK_CAPTURE(BM_TakeShare, make, &make) \
      ->Unit(benchmark::kMillisecond)          \
      ->Iterations(4)                          \
      ->UseManualTime()
// NOLINTEND(bugprone-macro-parentheses)
BREVANHOLT_MANIFEST(longPath);
BREVANHOLT_MANIFEST(longestPath);
BREVANHOLT_MANIFEST(emptyItems);
BREVANHOLT_MANIFEST(unknownValues);
BREVANHOLT_MANIFEST(texts);
BREVANHOLT_MANIFEST(stagedFiles);
BREVANHOLT_MANIFEST(deepFiles);

}  // namespace
}  // namespace brevanholt
