#include "platform/linux/storage/InstanceLock.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <glib.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kLongestEnding = 5s;
constexpr auto kPause = 100ms;

// Who holds the lock, as they wrote it into the file.
std::string holder(int file) {
  std::array<char, 256> text{};
  const ssize_t size = ::pread(file, text.data(), text.size(), 0);
  return {text.data(), static_cast<std::size_t>(size > 0 ? size : 0)};
}

void writeHolder(int file) {
  const std::string text =
      "process " + std::to_string(::getpid()) + " on " + std::string(g_get_host_name());
  // The text is only for a message; without it the message is shorter.
  if (::ftruncate(file, 0) != 0 || ::pwrite(file, text.data(), text.size(), 0) < 0) {
    logDebug("the instance lock does not name this process");
  }
}

// 0, or the error number.
int lockWithin(std::chrono::steady_clock::duration limit, int file) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > deadline) return errno;
    std::this_thread::sleep_for(kPause);
  }
  return 0;
}

}  // namespace

InstanceLock::InstanceLock(const std::filesystem::path& configurationFolder) {
  g_mkdir_with_parents(configurationFolder.c_str(), 0700);
  const auto path = configurationFolder / "instance.lock";
  FileDescriptor file(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  const int failure = file ? lockWithin(kLongestEnding, file.get()) : errno;
  if (failure == EWOULDBLOCK) {
    const std::string other = holder(file.get());
    throw PlatformError("Brevanholt already runs in another session of this user" +
                        (other.empty() ? "" : " (" + other + ")") + ". Quit it there first.");
  }
  if (failure != 0) {
    logWarning("other instances of this user are not kept out: " + path.string() + ": " +
               g_strerror(failure));
    return;
  }
  writeHolder(file.get());
  file_ = std::move(file);
}

}  // namespace brevanholt::platform
