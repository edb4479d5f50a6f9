#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/foundation/PlatformError.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/RefusedCalls.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::pair<int, int> kNoNoReplace{SCMP_SYS(renameat2), EINVAL};
const std::pair<int, int> kNoLinks{SCMP_SYS(link), EPERM};

class MoveIntoPlaceTest : public testing::Test {
 protected:
  // "x", or the first free one of "x1", "x2" and so on.
  fs::path freeName() const {
    fs::path path = folder_ / "to/x";
    for (int number = 1; nameIsTaken(path); ++number) {
      path = folder_ / ("to/x" + std::to_string(number));
    }
    return path;
  }
  // The name that the item has got, or why it has none.
  std::string move(const fs::path& source) const {
    try {
      const auto moved = renameIntoPlace(source, [this] { return freeName(); });
      return moved ? moved->filename() : "another file system";
    } catch (const PlatformError& error) {
      return error.message();
    }
  }
  std::string copy(const fs::path& source, const std::stop_token& stop = {}) const {
    try {
      return copyIntoPlace(
                 source, [this] { return freeName(); }, stop)
          .filename();
    } catch (const PlatformError& error) {
      return error.message();
    }
  }
  fs::path put(std::string_view name, std::string_view content = "content") const {
    writeFile(folder_ / name, content);
    return folder_ / name;
  }

  void SetUp() override { fs::create_directory(folder_ / "to"); }

  CapturedLog log_;
  TemporaryFolder folder_;
};

TEST_F(MoveIntoPlaceTest, TakesTheNextNameWhenSomebodyTakesTheChosenOne) {
  int asked = 0;
  const auto moved = renameIntoPlace(put("a"), [&] {
    fs::path name = freeName();
    if (++asked < 3) writeFile(name, "theirs");
    return name;
  });
  EXPECT_EQ(moved, folder_ / "to/x2");
  EXPECT_EQ(readFile(folder_ / "to/x"), "theirs");
  fs::path taken = put("taken");
  EXPECT_THROW(static_cast<void>(renameIntoPlace(put("b"), [&] { return taken; })), FileError);
  EXPECT_EQ(readFile(folder_ / "b"), "content");
}

TEST_F(MoveIntoPlaceTest, ServesFileSystemsWithoutExclusiveRenames) {
  for (const auto& calls : {std::initializer_list<std::pair<int, int>>{kNoNoReplace},
                            std::initializer_list<std::pair<int, int>>{kNoNoReplace, kNoLinks}}) {
    put("to/x", "theirs");
    EXPECT_EQ(withRefusedCalls(calls, [&] { return move(put("a")); }), "x1");
    fs::create_directory(folder_ / "d");
    EXPECT_EQ(withRefusedCalls(calls, [&] { return move(folder_ / "d"); }), "x2");
    EXPECT_EQ(withRefusedCalls(calls, [&] { return copy(put("b")); }), "x3");
    EXPECT_EQ(readFile(folder_ / "to/x"), "theirs");
    EXPECT_EQ(entryCount(folder_ / "to"), 4);
    EXPECT_EQ(entryCount(folder_.path()), 1) << "no second names";
    fs::remove_all(folder_ / "to");
    fs::create_directory(folder_ / "to");
  }
}

TEST_F(MoveIntoPlaceTest, LeavesOneNameWhenTheSourceCannotGo) {
  constexpr uid_t kNobody = 65534;
  if (::geteuid() != 0) GTEST_SKIP() << "acting as another user takes root";
  const fs::path source = put("a");
  ASSERT_EQ(::chown(source.c_str(), kNobody, kNobody), 0);
  fs::permissions(folder_.path(), fs::perms(0755));
  fs::permissions(folder_ / "to", fs::perms(0777));
  const std::string outcome = withRefusedCalls({kNoNoReplace}, [&]() -> std::string {
    return ::setuid(kNobody) == 0 ? move(source) : "still root";
  });
  EXPECT_THAT(outcome, HasSubstr("Permission denied"));
  EXPECT_EQ(readFile(source), "content");
  EXPECT_EQ(entryCount(folder_ / "to"), 0);
}

TEST_F(MoveIntoPlaceTest, MovesEveryKindOfItemAlikeOnBothWays) {
  for (const bool copies : {false, true}) {
    SCOPED_TRACE(copies ? "copied" : "renamed");
    const auto moved = [&](const fs::path& source) {
      fs::path place = folder_ / "to" / (copies ? copy(source) : move(source));
      EXPECT_FALSE(nameIsTaken(source)) << source;
      return place;
    };
    fs::create_symlink("/nowhere", folder_ / "link");
    EXPECT_EQ(fs::read_symlink(moved(folder_ / "link")), "/nowhere");
    ASSERT_EQ(::mkfifo((folder_ / "fifo").c_str(), 0600), 0);
    EXPECT_TRUE(fs::is_fifo(moved(folder_ / "fifo")));
    fs::create_directories(folder_ / "tree/a/empty");
    put("tree/a/file");
    fs::permissions(folder_ / "tree/a", fs::perms(0750));
    const fs::path tree = moved(folder_ / "tree");
    EXPECT_EQ(readFile(tree / "a/file"), "content");
    EXPECT_TRUE(fs::is_directory(tree / "a/empty"));
    EXPECT_EQ(fs::status(tree / "a").permissions(), fs::perms(0750));
    EXPECT_THAT(copies ? copy(folder_ / "gone") : move(folder_ / "gone"),
                HasSubstr((folder_ / "gone").string() + "”: No such file"));
  }
}

TEST_F(MoveIntoPlaceTest, CopiesWhereThereAreNoPermissions) {
  EXPECT_EQ(withRefusedCalls({{SCMP_SYS(fchmod), EPERM}}, [&] { return copy(put("a")); }), "x");
}

TEST_F(MoveIntoPlaceTest, EndsACopySoonAndLeavesNothingOfIt) {
  fs::resize_file(put("a"), std::uintmax_t{8} << 30);
  std::stop_source stop;
  std::thread canceller([&] {
    while (entryCount(folder_ / "to") == 0) std::this_thread::yield();
    stop.request_stop();
  });
  const std::string outcome = copy(folder_ / "a", stop.get_token());
  canceller.join();
  EXPECT_EQ(outcome, "The copy was cancelled.");
  EXPECT_EQ(entryCount(folder_ / "to"), 0);
  EXPECT_EQ(fileSize(folder_ / "a"), std::uintmax_t{8} << 30);
}

TEST_F(MoveIntoPlaceTest, RemovesWhatKilledCopiesLeftAndNothingElse) {
  const std::string abandoned = ".0A0A0A0A-0000-4000-8000-000000000000.partial";
  fs::create_directories(folder_ / "to/deep");
  fs::create_directories(folder_ / ("to/" + abandoned));
  put("to/" + abandoned + "/half");
  put("to/deep/" + abandoned);
  put("to/deep/.mine.partial");
  put("to/0A0A0A0A-0000-4000-8000-000000000000.partial");

  removePartialCopies(folder_ / "to", {});
  EXPECT_EQ(entryCount(folder_ / "to"), 2);
  EXPECT_EQ(entryCount(folder_ / "to/deep"), 1);

  // A copy under way is not taken for a leftover.
  fs::resize_file(put("a"), std::uintmax_t{8} << 30);
  std::stop_source stop;
  std::string outcome;
  std::thread copier([&] { outcome = copy(folder_ / "a", stop.get_token()); });
  while (entryCount(folder_ / "to") == 2) std::this_thread::yield();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  while (std::chrono::steady_clock::now() < deadline) removePartialCopies(folder_ / "to", {});
  const bool stays = entryCount(folder_ / "to") == 3;
  stop.request_stop();
  copier.join();
  EXPECT_TRUE(stays);
}

}  // namespace
}  // namespace brevanholt::platform
