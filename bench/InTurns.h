#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "bench/SecondsOf.h"

namespace brevanholt {

// One of several ways to do the same. `once` prepares it, does it, and returns the seconds without
// the preparation.
struct Way {
  std::string name;
  std::function<double()> once;
};

// A way that is a command of the shell.
inline Way shellCommand(
    benchmark::State& state, std::string name, std::string command,
    std::function<void()> prepare = [] {}) {
  return {std::move(name), [&state, command = std::move(command), prepare = std::move(prepare)] {
            prepare();
            return secondsOf([&] {
              if (std::system(command.c_str()) != 0) state.SkipWithError("the command failed");
            });
          }};
}

// Times all ways in each round, because a shared machine is not the same from one second to the
// next. Each round begins with another way, because the first leaves warm caches to the second. The
// benchmark's time is `ours`; "of_NAME" is its ratio to the time of NAME.
inline void inTurns(benchmark::State& state, const std::function<double()>& ours,
                    const std::vector<Way>& others) {
  const std::size_t count = others.size() + 1;
  std::vector<double> sums(count);
  std::size_t first = 0;
  for (auto _ : state) {
    for (std::size_t turn = 0; turn < count; ++turn) {
      const std::size_t way = (first + turn) % count;
      const double seconds = way == 0 ? ours() : others[way - 1].once();
      sums[way] += seconds;
      if (way == 0) state.SetIterationTime(seconds);
    }
    ++first;
  }
  for (std::size_t way = 1; way < count; ++way) {
    state.counters["of_" + others[way - 1].name] = sums[0] / sums[way];
  }
}

}  // namespace brevanholt
