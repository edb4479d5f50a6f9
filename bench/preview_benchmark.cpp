// A photo's preview beside the same work done by a bare gdk-pixbuf program and by vipsthumbnail,
// process start and end included in all three. What the previewer costs the host besides: the
// longest that its main loop was held up, and what its peak memory grew by.

#include "platform/linux/previews/ChildImagePreviewer.h"
#include "platform/linux/storage/InstallLayout.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMaximum = 300;

// As detailed as a photo is.
const fs::path& photo() {
  static const TemporaryFolder folder;
  static const fs::path file = [] {
    const std::string make =
        "convert -size 4000x3000 plasma:tan-steelblue -attenuate 0.3 +noise Gaussian -quality 90 " +
        (folder / "photo.jpg").string();
    if (std::system(make.c_str()) != 0) std::abort();
    return folder / "photo.jpg";
  }();
  return file;
}

long peakMemory() {
  rusage own{};
  ::getrusage(RUSAGE_SELF, &own);
  return own.ru_maxrss;
}

// Runs the main loop, and knows for how long it could do nothing else.
struct Turns {
  double longest = 0;  // milliseconds

  template <class Action>
  auto time(Action action) {
    const auto start = std::chrono::steady_clock::now();
    auto result = action();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    longest = std::max(longest, taken.count());
    return result;
  }
  void runUntil(const bool& isDone) {
    while (!isDone) {
      const bool hasActed = time([] { return g_main_context_iteration(nullptr, FALSE) != FALSE; });
      if (!hasActed) g_usleep(100);
    }
  }
};

void BM_Previewer(benchmark::State& state) {
  ChildImagePreviewer previewer({.child = InstallLayout::ofThisProcess().previewChild});
  const fs::path& file = photo();
  Turns turns;
  const auto preview = [&] {
    bool isDone = false;
    const auto ask = [&] {
      previewer.preview(file, kMaximum, [&](const Result<std::optional<Bytes>>& picture) {
        if (!picture.ok() || !picture.value()) state.SkipWithError("no preview");
        isDone = true;
      });
      return true;
    };
    turns.time(ask);
    turns.runUntil(isDone);
  };
  const long memoryBefore = peakMemory();
  preview();  // which finds out about bubblewrap
  for (auto _ : state) preview();
  state.counters["longest turn, ms"] = turns.longest;
  state.counters["host's peak, KiB more"] = static_cast<double>(peakMemory() - memoryBefore);
}
BENCHMARK(BM_Previewer)->UseRealTime()->Unit(benchmark::kMillisecond);

void runProgram(benchmark::State& state, const std::vector<std::string>& command) {
  using namespace std::chrono_literals;
  for (auto _ : state) {
    bool isDone = false;
    const CollectedProcess program(
        command, FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)), {.time = 1min},
        [&](const Result<CollectedProcess::Outcome>& outcome) {
          if (!outcome.ok() || outcome.value().exitStatus != 0) state.SkipWithError("it failed");
          isDone = true;
        });
    Turns().runUntil(isDone);
  }
}

std::string besidePhoto(const char* name) {
  return photo().parent_path() / name;
}

void BM_BarePixbuf(benchmark::State& state) {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "bare_pixbuf";
  runProgram(state, {program, photo(), std::to_string(kMaximum), besidePhoto("bare.png")});
}
BENCHMARK(BM_BarePixbuf)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_VipsThumbnail(benchmark::State& state) {
  runProgram(state, {"/usr/bin/vipsthumbnail", photo(), "--size", std::to_string(kMaximum), "-o",
                     besidePhoto("vips.png[compression=1]")});
}
BENCHMARK(BM_VipsThumbnail)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace brevanholt::platform
