// A photo's preview beside the same work done by a bare gdk-pixbuf program and by vipsthumbnail,
// process start and end included in all three, and the most memory that each has. What the
// previewer costs the host besides: the longest that its main loop was held up, and what its peak
// memory grew by.

#include "platform/linux/previews/ChildImagePreviewer.h"
#include "platform/linux/storage/InstallLayout.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <functional>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

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

// In KiB, of this process or of the largest of its children that have ended.
long peakMemory(int whose) {
  rusage usage{};
  ::getrusage(whose, &usage);
  return usage.ru_maxrss;
}

// The peak memory, in MB, of the largest process that `work` starts. `work` runs in a process of
// its own, because the system keeps one number for all children.
double peakOfChildren(const std::function<void()>& work) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) std::abort();
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  const pid_t worker = ::fork();
  if (worker == 0) {
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    work();
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
    const long peak = peakMemory(RUSAGE_CHILDREN);
    const bool isTold = ::write(writer.get(), &peak, sizeof peak) == sizeof peak;
    ::_exit(isTold ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  writer.reset();
  long peak = 0;
  if (::read(reader.get(), &peak, sizeof peak) != sizeof peak) std::abort();
  ::waitpid(worker, nullptr, 0);
  return static_cast<double>(peak) * 1024 / 1e6;
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
  const auto maximum = static_cast<int>(state.range(0));
  Turns turns;
  const auto preview = [&] {
    bool isDone = false;
    const auto ask = [&] {
      previewer.preview(file, maximum, [&](const Result<std::optional<Bytes>>& picture) {
        if (!picture.ok() || !picture.value()) state.SkipWithError("no preview");
        isDone = true;
      });
      return true;
    };
    turns.time(ask);
    turns.runUntil(isDone);
  };
  state.counters["child's peak, MB"] = peakOfChildren(preview);
  const long memoryBefore = peakMemory(RUSAGE_SELF);
  preview();  // which finds out about bubblewrap
  for (auto _ : state) preview();
  state.counters["longest turn, ms"] = turns.longest;
  state.counters["host's peak, KiB more"] =
      static_cast<double>(peakMemory(RUSAGE_SELF) - memoryBefore);
}

void runProgram(benchmark::State& state, const std::vector<std::string>& command) {
  using namespace std::chrono_literals;
  const auto run = [&] {
    bool isDone = false;
    const CollectedProcess program(
        command, FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)), {.time = 1min},
        [&](const Result<CollectedProcess::Outcome>& outcome) {
          if (!outcome.ok() || outcome.value().exitStatus != 0) state.SkipWithError("it failed");
          isDone = true;
        });
    Turns().runUntil(isDone);
  };
  state.counters["child's peak, MB"] = peakOfChildren(run);
  for (auto _ : state) run();
}

std::string besidePhoto(const char* name) {
  return photo().parent_path() / name;
}

void BM_BarePixbuf(benchmark::State& state) {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "bare_pixbuf";
  runProgram(state, {program, photo(), std::to_string(state.range(0)), besidePhoto("bare.png")});
}

void BM_VipsThumbnail(benchmark::State& state) {
  runProgram(state, {"/usr/bin/vipsthumbnail", photo(), "--size", std::to_string(state.range(0)),
                     "-o", besidePhoto("vips.png[compression=1]")});
}

void inBothSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(300)->Arg(1200)->UseRealTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_Previewer)->Apply(inBothSizes);
BENCHMARK(BM_BarePixbuf)->Apply(inBothSizes);
BENCHMARK(BM_VipsThumbnail)->Apply(inBothSizes);

}  // namespace
}  // namespace brevanholt::platform
