#pragma once

#include <csignal>
#include <functional>
#include <stdexcept>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brevanholt {

// Runs `action` in a process of its own that is killed where it is about to make its n-th system
// call, counted from one. False when the action was through before that.
inline bool isCutShort(int n, const std::function<void()>& action) {
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    action();
    ::raise(SIGSTOP);
    ::_exit(0);
  }
  constexpr int kSystemCall = SIGTRAP | 0x80;
  int status = 0;
  ::waitpid(child, &status, 0);
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  // The process stops before and after each call.
  int stops = 0;
  while (stops < 2 * n - 1) {
    ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    ::waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) throw std::runtime_error("the action ended its process");
    if (WSTOPSIG(status) != kSystemCall) break;  // it is through
    ++stops;
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, &status, 0);
  return stops == 2 * n - 1;
}

}  // namespace brevanholt
