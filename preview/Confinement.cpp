#include "preview/Confinement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <memory>

#include <fcntl.h>
#include <malloc.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace brevanholt::preview {
namespace {

constexpr rlim_t kMemory = rlim_t{1} << 30;
constexpr rlim_t kProcessorSeconds = 10;

struct ReleaseFilter {
  void operator()(void* filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, ReleaseFilter>;

// Calls that decoders, the C library, GLib and fontconfig need, with any arguments. All others fail
// with ENOSYS, as on a kernel without them, which libraries are prepared for.
constexpr std::array kHarmlessCalls{
    // Input and output on what is open.
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev),
    SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(fstat), SCMP_SYS(fstatfs), SCMP_SYS(fcntl),
    SCMP_SYS(getdents64), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(eventfd2), SCMP_SYS(pipe2),
    // Looking for files.
    SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(newfstatat), SCMP_SYS(statx), SCMP_SYS(statfs),
    SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(readlink), SCMP_SYS(readlinkat),
    SCMP_SYS(getcwd),
    // Memory.
    SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mprotect), SCMP_SYS(mremap), SCMP_SYS(madvise),
    SCMP_SYS(brk),
    // Threads and time.
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(gettid),
    SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity), SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep), SCMP_SYS(gettimeofday), SCMP_SYS(restart_syscall),
    // About the process itself.
    SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
    SCMP_SYS(getpid), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid), SCMP_SYS(getegid),
    SCMP_SYS(uname), SCMP_SYS(sysinfo), SCMP_SYS(getrandom), SCMP_SYS(exit), SCMP_SYS(exit_group)};

// A limit that is tighter already stays.
bool limit(__rlimit_resource resource, rlim_t most) {
  rlimit current{};
  if (::getrlimit(resource, &current) != 0) return false;
  const rlim_t value = std::min(most, current.rlim_max);
  const rlimit lowered{.rlim_cur = value, .rlim_max = value};
  return ::setrlimit(resource, &lowered) == 0;
}

template <class... Conditions>
bool allow(const Filter& filter, int call, Conditions... conditions) {
  return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, sizeof...(conditions),
                          conditions...) == 0;
}

// Where `mask` of the call's argument with that index is `value`.
scmp_arg_cmp where(unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
  return {.arg = argument, .op = SCMP_CMP_MASKED_EQ, .datum_a = mask, .datum_b = value};
}

bool filterSystemCalls() {
  const Filter filter(seccomp_init(SCMP_ACT_ERRNO(ENOSYS)));
  if (!filter) return false;
  // On an architecture that lacks a call there is nothing to allow.
  for (const int call : kHarmlessCalls) allow(filter, call);

  constexpr scmp_datum_t kWhole = ~scmp_datum_t{0};
  constexpr scmp_datum_t kWriting = O_ACCMODE | O_CREAT | O_TRUNC;
  const auto self = static_cast<scmp_datum_t>(::getpid());
  return allow(filter, SCMP_SYS(open), where(1, kWriting, O_RDONLY)) &&
         allow(filter, SCMP_SYS(openat), where(2, kWriting, O_RDONLY)) &&
         allow(filter, SCMP_SYS(clone), where(0, CLONE_THREAD, CLONE_THREAD)) &&
         allow(filter, SCMP_SYS(prlimit64), where(2, kWhole, 0)) &&
         allow(filter, SCMP_SYS(tgkill), where(0, kWhole, self)) && seccomp_load(filter.get()) == 0;
}

}  // namespace

bool confineThisProcess() {
  // A pool for every thread would each take 64 MiB of the address space.
  ::mallopt(M_ARENA_MAX, 1);
  return ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && limit(RLIMIT_AS, kMemory) &&
         limit(RLIMIT_CPU, kProcessorSeconds) && limit(RLIMIT_CORE, 0) && filterSystemCalls();
}

}  // namespace brevanholt::preview
