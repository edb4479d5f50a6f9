#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/Result.h"
#include "platform/gtk/LoopSource.h"

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A child process whose output is collected. It gets an input, no environment, and nothing else of
// this process. It ends with this object, and at the latest with its time limit. For the main
// thread.
class CollectedProcess {
 public:
  struct Limits {
    std::chrono::milliseconds time;
    std::size_t output = 0;  // bytes
  };
  struct Outcome {
    int exitStatus = 0;
    Bytes output;
  };
  // The error says how it ended where it did not exit by itself within its limits. May destroy the
  // process.
  using Callback = UniqueFunction<void(Result<Outcome>)>;

  // Calls back once, later. Throws PlatformError where the process cannot be started.
  CollectedProcess(const std::vector<std::string>& command, FileDescriptor input, Limits limits,
                   Callback callback);
  ~CollectedProcess();
  CollectedProcess(const CollectedProcess&) = delete;
  CollectedProcess& operator=(const CollectedProcess&) = delete;

 private:
  void start(const std::vector<std::string>& command, FileDescriptor input);
  void read();
  void exited();
  void finishWhenOver();
  void finish(Result<Outcome> outcome);
  void stop();

  std::size_t outputLimit_;
  Callback callback_;
  FileDescriptor process_;  // until it ended
  FileDescriptor output_;   // until it is over
  std::vector<std::uint8_t> collected_;
  std::optional<siginfo_t> ending_;
  LoopSource onOutput_;
  LoopSource onExit_;
  LoopSource onTimeLimit_;
};

}  // namespace brevanholt::platform
