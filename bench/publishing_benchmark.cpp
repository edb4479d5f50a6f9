// Publishing through the channel's own handler: many small files within one file system beside `mv`
// and one `sync`, and one large file from one file system to another beside `cp` and `sync`.
//
// BREVANHOLT_OTHER_DISK names a folder on another file system than the temporary folder (TMPDIR).

#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include <unistd.h>

#include "bench/SecondsOf.h"

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;

constexpr std::int64_t kLargeFile = std::int64_t{1} << 30;

struct Host {
  explicit Host(const fs::path& downloads) {
    platform.folders.downloads = downloads;
    window = std::make_shared<MainFlutterWindow>(platform.services(), nullptr);
    window->awakeFromNib();
  }

  FakePlatform platform;
  std::shared_ptr<MainFlutterWindow> window;
};

fs::path otherDisk() {
  const char* named = std::getenv("BREVANHOLT_OTHER_DISK");
  return named != nullptr ? named : "/dev/shm";
}

void writeLargeFile(const fs::path& path) {
  const std::string block(1 << 20, 'x');
  std::ofstream file(path, std::ios::binary);
  for (std::int64_t written = 0; written < kLargeFile; written += 1 << 20) file << block;
}

std::vector<fs::path> writeSmallFiles(const fs::path& folder, std::int64_t count) {
  fs::create_directories(folder);
  std::vector<fs::path> files;
  for (std::int64_t index = 0; index < count; ++index) {
    files.push_back(folder / std::to_string(index));
    writeFile(files.back(), "small");
  }
  return files;
}

void publishAll(FakePlatform& platform, const std::vector<fs::path>& files) {
  std::vector<std::shared_ptr<std::optional<Reply>>> replies;
  replies.reserve(files.size());
  for (const fs::path& file : files) {
    replies.push_back(platform.engine.messenger.call(
        "brevanholt/platform", "publishReceivedFile",
        Map{{"path", file.string()}, {"name", file.filename().string()}}));
  }
  for (const auto& reply : replies) platform.mainQueue.runUntil([&] { return reply->has_value(); });
}

// All calls are made before the first reply, as a page that does not wait makes them. In turns with
// one `mv` of all of them and one sync of their file system.
void BM_PublishSmallFiles(benchmark::State& state) {
  const TemporaryFolder folder;
  Host host(folder / "Downloads");
  const fs::path moved = folder / "moved";
  const std::string command = "mv -n '" + (folder / "source").string() + "'/* '" + moved.string() +
                              "' && sync -f '" + moved.string() + "'";
  double publishing = 0;
  double moving = 0;
  for (auto _ : state) {
    writeSmallFiles(folder / "source", state.range(0));
    fs::create_directory(moved);
    ::sync();
    moving += secondsOf([&] {
      if (std::system(command.c_str()) != 0) state.SkipWithError("mv failed");
    });
    const auto files = writeSmallFiles(folder / "source", state.range(0));
    ::sync();
    const double seconds = secondsOf([&] { publishAll(host.platform, files); });
    publishing += seconds;
    state.SetIterationTime(seconds);
    fs::remove_all(moved);
    fs::remove_all(folder / "Downloads/Brevanholt");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["of_mv_and_sync"] = publishing / moving;
}
BENCHMARK(BM_PublishSmallFiles)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10)
    ->UseManualTime();

void BM_ProbeTakenNames(benchmark::State& state) {
  const TemporaryFolder folder;
  Host host(folder.path());
  const fs::path received = folder / "Brevanholt";
  writeFile(received / "x", "");
  for (int suffix = 1; suffix < 9999; ++suffix) {
    writeFile(received / ("x (" + std::to_string(suffix) + ")"), "");
  }
  for (auto _ : state) {
    state.PauseTiming();
    writeFile(host.platform.home / "scratch", "");
    state.ResumeTiming();
    host.platform.call("publishReceivedFile",
                       Map{{"path", (host.platform.home / "scratch").string()}, {"name", "x"}});
    state.PauseTiming();
    fs::remove(received / "x (9999)");
    state.ResumeTiming();
  }
}
BENCHMARK(BM_ProbeTakenNames)->Unit(benchmark::kMillisecond);

// One after the other in each round, since a disk is not the same from one minute to the next.
void BM_PublishAcrossFileSystems(benchmark::State& state) {
  const TemporaryFolder source(otherDisk());
  const TemporaryFolder target;
  Host host(target.path());
  const std::string copy = target / "copy";
  const std::string command = "cp '" + (source / "large").string() + "' '" + copy + "' && sync '" +
                              copy + "' '" + target.path().string() + "'";
  double publishing = 0;
  double copying = 0;
  for (auto _ : state) {
    writeLargeFile(source / "large");
    copying += secondsOf([&] {
      if (std::system(command.c_str()) != 0) state.SkipWithError("cp failed");
    });
    fs::remove(copy);
    const double seconds = secondsOf([&] {
      host.platform.call("publishReceivedFile",
                         Map{{"path", (source / "large").string()}, {"name", "large"}});
    });
    publishing += seconds;
    state.SetIterationTime(seconds);
    fs::remove(target / "Brevanholt/large");
  }
  state.SetBytesProcessed(state.iterations() * kLargeFile);
  state.counters["of_cp_and_sync"] = publishing / copying;
}
BENCHMARK(BM_PublishAcrossFileSystems)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(6)
    ->UseManualTime();

}  // namespace
}  // namespace brevanholt
