#pragma once

#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

#include <seccomp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace brevanholt {

// What `action` returns in a process of its own in which the system refuses these calls with these
// error numbers, as some file systems do.
inline std::string withRefusedCalls(std::initializer_list<std::pair<int, int>> calls,
                                    const std::function<std::string()>& action) {
  int ends[2];
  if (::pipe(ends) != 0) throw std::runtime_error("cannot make a pipe");
  const pid_t child = ::fork();
  if (child == 0) {
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    for (const auto& [call, error] : calls) {
      seccomp_rule_add(filter, SCMP_ACT_ERRNO(static_cast<std::uint32_t>(error)), call, 0);
    }
    const std::string outcome = seccomp_load(filter) == 0 ? action() : "no filter";
    static_cast<void>(::write(ends[1], outcome.data(), outcome.size()) < 0);
    ::_exit(0);
  }
  ::close(ends[1]);
  std::string outcome;
  char buffer[4096];
  for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof(buffer))) > 0;) {
    outcome.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  return status == 0 ? outcome : "the process failed";
}

}  // namespace brevanholt
