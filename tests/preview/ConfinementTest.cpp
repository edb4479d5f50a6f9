#include "preview/Confinement.h"

#include <gtest/gtest.h>

#include <csignal>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace brevanholt::preview {
namespace {

void* memory(std::size_t size) {
  return ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
}

// The number of the first promise that does not hold; zero where all do.
int firstBrokenPromise() {
  const int parent = ::getppid();
  if (!confineThisProcess()) return 1;
  if (::open("/dev/null", O_RDONLY) < 0) return 2;
  if (::open("/dev/null", O_WRONLY) >= 0 || ::open("/dev/null", O_RDWR) >= 0) return 3;
  if (::open("/tmp", O_TMPFILE | O_RDONLY, 0600) >= 0 || ::creat("created", 0600) >= 0) return 4;
  if (::unlink("/nowhere") == 0 || errno != ENOSYS) return 5;
  if (::socket(AF_UNIX, SOCK_STREAM, 0) >= 0) return 6;
  if (::fork() >= 0) return 7;
  if (::execl("/bin/true", "true", nullptr) == 0 || errno != ENOSYS) return 8;
  if (::kill(parent, 0) == 0) return 9;
  if (memory(std::size_t{1} << 30) != MAP_FAILED) return 10;
  const rlimit loose{RLIM_INFINITY, RLIM_INFINITY};
  return ::setrlimit(RLIMIT_AS, &loose) == 0 ? 11 : 0;
}

TEST(ConfinementDeathTest, GivesUpWhatDecodingDoesNotTake) {
  EXPECT_EXIT(::_exit(firstBrokenPromise()), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace brevanholt::preview
