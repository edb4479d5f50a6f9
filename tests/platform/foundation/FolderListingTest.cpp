#include "platform/foundation/FolderListing.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <sys/stat.h>

namespace brevanholt::platform {

static bool operator==(const FolderItem& left, const FolderItem& right) {
  return left.relativePath == right.relativePath && left.kind == right.kind &&
         left.size == right.size;
}
static void PrintTo(const FolderItem& item, std::ostream* out) {
  *out << item.relativePath << (item.kind == FolderItem::Kind::kDirectory ? "/ " : " ")
       << item.size;
}

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

FolderItem directory(const std::string& path) {
  return {path, FolderItem::Kind::kDirectory, 0};
}
FolderItem file(const std::string& path, std::uint64_t size) {
  return {path, FolderItem::Kind::kFile, size};
}

class FolderListingTest : public testing::Test {
 protected:
  CapturedLog log_;
  TemporaryFolder folder_;
};

TEST_F(FolderListingTest, ListsEachFolderRightBeforeItsItems) {
  for (const char* path : {"a/b/c", "d"}) fs::create_directories(folder_ / path);
  for (const char* path : {"a/1", "a/b/c/2", "d/3"}) writeFile(folder_ / path, "12345");

  const auto items = listFolder(folder_.path());

  EXPECT_THAT(items, UnorderedElementsAre(directory("a"), directory("a/b"), directory("a/b/c"),
                                          directory("d"), file("a/1", 5), file("a/b/c/2", 5),
                                          file("d/3", 5)));
  // Of every folder, all that is in it follows it without a gap.
  for (std::size_t index = 0; index < items.size(); ++index) {
    if (items[index].kind != FolderItem::Kind::kDirectory) continue;
    const auto isInside = [prefix = items[index].relativePath + "/"](const FolderItem& item) {
      return item.relativePath.starts_with(prefix);
    };
    const auto after = items.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    EXPECT_TRUE(std::is_partitioned(after, items.end(), isInside)) << items[index].relativePath;
    EXPECT_TRUE(std::none_of(items.begin(), after, isInside)) << items[index].relativePath;
  }
}

TEST_F(FolderListingTest, LeavesOutHiddenItemsLinksAndDevices) {
  fs::create_directories(folder_ / ".hidden/folder");
  fs::create_directories(folder_ / "open");
  writeFile(folder_ / ".hidden/folder/file", "");
  writeFile(folder_ / ".file", "");
  writeFile(folder_ / "open/.file", "");
  fs::create_symlink(".file", folder_ / "link");
  fs::create_directory_symlink("..", folder_ / "up");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);

  EXPECT_THAT(listFolder(folder_.path()), ElementsAre(directory("open")));
}

TEST_F(FolderListingTest, ListsPackagesAndDoesNotEnterThem) {
  for (const char* name : {"Notes.app", "editor.AppDir", "app", "notes.app.d", "Notes.apple"}) {
    fs::create_directories(folder_ / name / "Contents");
  }
  writeFile(folder_ / "file.app", "x");

  EXPECT_THAT(
      listFolder(folder_.path()),
      UnorderedElementsAre(directory("Notes.app"), directory("editor.AppDir"), directory("app"),
                           directory("app/Contents"), directory("notes.app.d"),
                           directory("notes.app.d/Contents"), directory("Notes.apple"),
                           directory("Notes.apple/Contents"), file("file.app", 1)));
  EXPECT_EQ(log_.count(LogLevel::kInfo, "2 folders in"), 1);
  EXPECT_THAT(listFolder(folder_ / "Notes.app"), ElementsAre(directory("Contents")));
}

TEST_F(FolderListingTest, LeavesOutNamesThatAreNotUtf8AndSaysSoOnce) {
  fs::create_directories(folder_ / "caf\xE9/inside");
  writeFile(folder_ / "caf\xE9/inside/a", "");
  writeFile(folder_ / "caf\xE9.txt", "");
  writeFile(folder_ / "café", "");

  EXPECT_THAT(listFolder(folder_.path()), ElementsAre(file("café", 0)));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "2 items in “" + folder_.path().native() + "”"), 1);
}

TEST_F(FolderListingTest, GoesOnWhereSomethingCannotBeRead) {
  fs::create_directories(folder_ / "closed/inside");
  fs::create_directories(folder_ / "open");
  writeFile(folder_ / "open/a", "");
  fs::permissions(folder_ / "closed", fs::perms::none);

  const auto items = listFolder(folder_.path());

  EXPECT_THAT(items,
              testing::IsSupersetOf({directory("closed"), directory("open"), file("open/a", 0)}));
  EXPECT_THAT(listFolder(folder_ / "gone"), IsEmpty());
  EXPECT_THAT(listFolder(folder_ / "open/a"), IsEmpty());
}

TEST_F(FolderListingTest, EndsWhereAFolderContainsItself) {
  fs::create_directories(folder_ / "a/b/loop");
  writeFile(folder_ / "a/file", "x");
  if (::mount(folder_.path().c_str(), (folder_ / "a/b/loop").c_str(), nullptr, MS_BIND, nullptr) !=
      0) {
    GTEST_SKIP() << "mounting a folder inside itself needs root";
  }
  const auto items = listFolder(folder_.path());
  ::umount2((folder_ / "a/b/loop").c_str(), MNT_DETACH);

  EXPECT_THAT(items, UnorderedElementsAre(directory("a"), directory("a/b"), directory("a/b/loop"),
                                          file("a/file", 1)));
}

TEST_F(FolderListingTest, StopsEnteringFarBelowAndGoesOnBeside) {
  std::string path;
  for (int level = 0; level < 420; ++level) path += "/d";
  fs::create_directories(folder_.path().native() + path);
  writeFile(folder_.path().native() + path + "/deepest", "");
  writeFile(folder_ / "beside", "");

  const auto items = listFolder(folder_.path());

  EXPECT_EQ(items.size(), 401U);  // 400 folders and the file beside them
  EXPECT_THAT(items, testing::Contains(file("beside", 0)));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "they lie too deep"), 1);
}

}  // namespace
}  // namespace brevanholt::platform
