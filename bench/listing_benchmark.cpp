// Listing a folder of 100,000 files for the UI, beside what `find` takes to print the same of each.

#include "Runner/Intake/ShareEntries.h"
#include "platform/files/FolderListing.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench/InTurns.h"

namespace brevanholt {
namespace {

constexpr int kFolders = 1000;
constexpr int kFilesInEach = 100;

void fill(const std::filesystem::path& folder) {
  for (int number = 0; number < kFolders; ++number) {
    const auto inside = folder / ("folder " + std::to_string(number));
    std::filesystem::create_directories(inside);
    for (int file = 0; file < kFilesInEach; ++file) {
      writeFile(inside / ("file " + std::to_string(file)), "");
    }
  }
}

template <class List>
void compareWithFind(benchmark::State& state, List list) {
  const TemporaryFolder folder;
  fill(folder.path());
  const auto ours = [&] {
    return secondsOf([&] {
      if (list(folder.path()) < std::size_t{kFolders} * kFilesInEach) {
        state.SkipWithError("files are missing");
      }
    });
  };
  inTurns(state, ours,
          {shellCommand(state, "find",
                        "find '" + folder.path().string() + "' -printf '%y %s %P\\n' >/dev/null")});
}

void BM_ListFolder(benchmark::State& state) {
  compareWithFind(state, [](const auto& folder) { return platform::listFolder(folder).size(); });
}
BENCHMARK(BM_ListFolder)->Unit(benchmark::kMillisecond)->Iterations(20)->UseManualTime();

void BM_FolderEntries(benchmark::State& state) {
  compareWithFind(state, [](const auto& folder) { return folderEntries(folder).size(); });
}
BENCHMARK(BM_FolderEntries)->Unit(benchmark::kMillisecond)->Iterations(20)->UseManualTime();

}  // namespace
}  // namespace brevanholt
