#include "platform/linux/previews/CollectedProcess.h"

#include <glib-unix.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {  // missing in this header of glibc 2.36
#include <sys/pidfd.h>
}

namespace brevanholt::platform {
namespace {

constexpr std::size_t kReadSize = 64 << 10;

// The descriptors and signals of the child.
class SpawnSettings {
 public:
  SpawnSettings(int input, int output) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    ::posix_spawnattr_init(&attributes_);
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  // Zero, or the error number.
  int spawn(const std::vector<std::string>& command, pid_t& process) const {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
      arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    char locale[] = "LC_ALL=C.UTF-8";
    char* const environment[] = {locale, nullptr};
    return ::posix_spawn(&process, arguments[0], &actions_, &attributes_, arguments.data(),
                         environment);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

PlatformError spawnError(const std::vector<std::string>& command, int errorNumber) {
  return PlatformError("could not start " + command.front() + ": " + std::strerror(errorNumber));
}

// Takes note of how a process ended, once its descriptor says that it did.
siginfo_t reap(int process) {
  siginfo_t information{};
  ::waitid(P_PIDFD, static_cast<id_t>(process), &information, WEXITED);
  return information;
}

// Ends a process, and lets it go without waiting for that.
void endProcess(FileDescriptor process) {
  ::pidfd_send_signal(process.get(), SIGKILL, nullptr, 0);
  g_unix_fd_add(
      process.release(), G_IO_IN,
      [](int descriptor, GIOCondition, gpointer) -> gboolean {
        reap(FileDescriptor(descriptor).get());
        return G_SOURCE_REMOVE;
      },
      nullptr);
}

}  // namespace

CollectedProcess::CollectedProcess(const std::vector<std::string>& command, FileDescriptor input,
                                   Limits limits, Callback callback)
    : outputLimit_(limits.output), callback_(std::move(callback)) {
  start(command, std::move(input));
  onOutput_ = LoopSource::whenReadable(output_.get(), [this] { read(); });
  onExit_ = LoopSource::whenReadable(process_.get(), [this] { exited(); });
  onTimeLimit_ =
      LoopSource::after(limits.time, [this] { finish(PlatformError("it took too long")); });
}

CollectedProcess::~CollectedProcess() {
  stop();
}

void CollectedProcess::start(const std::vector<std::string>& command, FileDescriptor input) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw spawnError(command, errno);
  output_ = FileDescriptor(pipe[0]);
  const FileDescriptor childOutput(pipe[1]);
  ::fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  pid_t process = 0;
  const int error = SpawnSettings(input.get(), childOutput.get()).spawn(command, process);
  if (error != 0) throw spawnError(command, error);
  process_ = FileDescriptor(::pidfd_open(process, 0));
  if (process_) return;
  const int reason = errno;
  ::kill(process, SIGKILL);
  while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
  throw spawnError(command, reason);
}

void CollectedProcess::read() {
  std::array<std::uint8_t, kReadSize> piece{};
  const ssize_t count = ::read(output_.get(), piece.data(), piece.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) {
    onOutput_.stop();
    output_.reset();
    return finishWhenOver();
  }
  if (collected_.size() + static_cast<std::size_t>(count) > outputLimit_) {
    return finish(PlatformError("it answered too much"));
  }
  collected_.insert(collected_.end(), piece.begin(), piece.begin() + count);
}

void CollectedProcess::exited() {
  onExit_.stop();
  ending_ = reap(process_.get());
  process_.reset();
  finishWhenOver();
}

void CollectedProcess::finishWhenOver() {
  if (output_ || !ending_) return;
  if (ending_->si_code != CLD_EXITED) {
    return finish(PlatformError("signal " + std::to_string(ending_->si_status) + " ended it"));
  }
  finish(Outcome{.exitStatus = ending_->si_status, .output = std::move(collected_)});
}

void CollectedProcess::finish(Result<Outcome> outcome) {
  stop();
  auto callback = std::exchange(callback_, nullptr);
  callback(std::move(outcome));
}

void CollectedProcess::stop() {
  onOutput_.stop();
  onExit_.stop();
  onTimeLimit_.stop();
  if (process_) endProcess(std::move(process_));
}

}  // namespace brevanholt::platform
