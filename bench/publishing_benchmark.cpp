// Publishing through the channel's own handler: many small files within one file system beside
// `mv`, and one large file from one file system to another beside `cp` and `sync`.
//
// BREVANHOLT_OTHER_DISK names a folder on another file system than the temporary folder (TMPDIR).

#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include <unistd.h>

#include "bench/InTurns.h"

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

// All calls are made before the first reply, as a page that does not wait makes them. Each way
// finds the files on the disk already, since a file is flushed before it is published. `sync
// FOLDER` flushes the names in it, as the host does; `sync -f` everything that waits for its file
// system.
void BM_PublishSmallFiles(benchmark::State& state) {
  const TemporaryFolder folder;
  const std::string source = folder / "source";
  const std::string moved = folder / "moved";
  Host host(folder / "Downloads");
  const auto prepare = [&] {
    fs::remove_all(moved);
    fs::create_directory(moved);
    auto files = writeSmallFiles(source, state.range(0));
    ::sync();
    return files;
  };
  const auto ours = [&] {
    const auto files = prepare();
    const double seconds = secondsOf([&] { publishAll(host.platform, files); });
    fs::remove_all(folder / "Downloads/Brevanholt");
    return seconds;
  };
  const auto move = [&](const char* name, const std::string& flush) {
    return shellCommand(state, name, "mv -n '" + source + "'/* '" + moved + "'" + flush, prepare);
  };
  inTurns(state, ours,
          {move("mv", ""), move("mv_and_fsync", " && sync '" + moved + "'"),
           move("mv_and_syncfs", " && sync -f '" + moved + "'")});
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PublishSmallFiles)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(12)
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

void BM_PublishAcrossFileSystems(benchmark::State& state) {
  const TemporaryFolder source(otherDisk());
  const TemporaryFolder target;
  const std::string large = source / "large";
  const std::string copy = target / "copy";
  Host host(target.path());
  const auto prepare = [&] {
    fs::remove(copy);
    writeLargeFile(large);
  };
  const auto ours = [&] {
    prepare();
    const double seconds = secondsOf([&] {
      host.platform.call("publishReceivedFile", Map{{"path", large}, {"name", "large"}});
    });
    fs::remove(target / "Brevanholt/large");
    return seconds;
  };
  const std::string command =
      "cp '" + large + "' '" + copy + "' && sync '" + copy + "' '" + target.path().string() + "'";
  inTurns(state, ours, {shellCommand(state, "cp_and_fsync", command, prepare)});
  state.SetBytesProcessed(state.iterations() * kLargeFile);
}
BENCHMARK(BM_PublishAcrossFileSystems)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(6)
    ->UseManualTime();

}  // namespace
}  // namespace brevanholt
