// Listing a folder of 100,000 files for the UI, beside what `find` takes to print the same of each.

#include "Runner/Intake/ShareEntries.h"
#include "platform/foundation/FolderListing.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/SecondsOf.h"

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

// In turns with `find`, since a machine is not the same from one second to the next.
template <class List>
void compareWithFind(benchmark::State& state, List list) {
  const TemporaryFolder folder;
  fill(folder.path());
  const std::string find = "find '" + folder.path().string() + "' -printf '%y %s %P\\n' >/dev/null";
  double listing = 0;
  double finding = 0;
  for (auto _ : state) {
    finding += secondsOf([&] {
      if (std::system(find.c_str()) != 0) state.SkipWithError("find failed");
    });
    const double seconds = secondsOf([&] {
      if (list(folder.path()) < std::size_t{kFolders} * kFilesInEach) {
        state.SkipWithError("files are missing");
      }
    });
    listing += seconds;
    state.SetIterationTime(seconds);
  }
  state.counters["of_find"] = listing / finding;
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
