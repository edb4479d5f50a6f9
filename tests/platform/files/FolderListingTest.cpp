#include "platform/files/FolderListing.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <sys/mount.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// "folder/" and "folder/file: 5".
std::vector<std::string> listed(const fs::path& folder) {
  std::vector<std::string> lines;
  for (const auto& [path, kind, size] : listFolder(folder)) {
    const bool isFolder = kind == FolderItem::Kind::kDirectory;
    lines.push_back(path + (isFolder ? "/" : ": " + std::to_string(size)));
  }
  return lines;
}

class FolderListingTest : public testing::Test {
 protected:
  // Files of five bytes, with the folders that they lie in.
  void make(const std::vector<std::string>& files) {
    for (const std::string& path : files) {
      fs::create_directories((folder_ / path).parent_path());
      writeFile(folder_ / path, "12345");
    }
  }

  CapturedLog log_;
  TemporaryFolder folder_;
};

TEST_F(FolderListingTest, ListsEachFolderRightBeforeItsItems) {
  make({"a/1", "a/b/c/2", "d/3"});

  const auto items = listed(folder_.path());

  EXPECT_THAT(items,
              UnorderedElementsAre("a/", "a/b/", "a/b/c/", "d/", "a/1: 5", "a/b/c/2: 5", "d/3: 5"));
  // The entries of a folder follow it directly.
  for (auto folder = items.begin(); folder != items.end(); ++folder) {
    if (!folder->ends_with('/')) continue;
    const auto isInside = [&](const std::string& item) { return item.starts_with(*folder); };
    EXPECT_TRUE(std::is_partitioned(folder, items.end(), isInside)) << *folder;
    EXPECT_TRUE(std::none_of(items.begin(), folder, isInside)) << *folder;
  }
}

TEST_F(FolderListingTest, LeavesOutHiddenItemsLinksDevicesAndNamesThatAreNotUtf8) {
  make({".hidden/file", ".file", "open/.file", "caf\xE9/inside/a", "caf\xE9.txt", "café"});
  fs::create_symlink("café", folder_ / "link");
  fs::create_directory_symlink("..", folder_ / "up");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);

  EXPECT_THAT(listed(folder_.path()), UnorderedElementsAre("open/", "café: 5"));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "2 items in “" + folder_.path().native() + "”"), 1);
}

TEST_F(FolderListingTest, ListsPackagesAndDoesNotEnterThem) {
  make({"Notes.app/Contents/a", "my.bundle/a", "Foo.AppDir/Contents/a", "file.app"});

  EXPECT_THAT(
      listed(folder_.path()),
      UnorderedElementsAre("Notes.app/", "my.bundle/", "my.bundle/a: 5", "Foo.AppDir/",
                           "Foo.AppDir/Contents/", "Foo.AppDir/Contents/a: 5", "file.app: 5"));
  EXPECT_EQ(log_.count(LogLevel::kInfo, "1 folders in"), 1);
  EXPECT_THAT(listed(folder_ / "Notes.app"), ElementsAre("Contents/", "Contents/a: 5"));
}

TEST_F(FolderListingTest, GoesOnWhereSomethingCannotBeReadOrLiesTooDeep) {
  std::string path;
  for (int level = 0; level < 420; ++level) path += "d/";
  make({path + "deepest", "closed/a", "beside"});
  fs::permissions(folder_ / "closed", fs::perms::none);

  const auto items = listed(folder_.path());

  EXPECT_EQ(std::ranges::count_if(items, [](const auto& item) { return item[0] == 'd'; }), 400);
  EXPECT_THAT(items, testing::IsSupersetOf({"closed/", "beside: 5"}));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "they lie too deep"), 1);
  EXPECT_THAT(listed(folder_ / "gone"), IsEmpty());
  EXPECT_THAT(listed(folder_ / "beside"), IsEmpty());
}

TEST_F(FolderListingTest, EndsWhereAFolderContainsItself) {
  fs::create_directories(folder_ / "a/b/loop");
  const std::string loop = folder_ / "a/b/loop";
  if (::mount(folder_.path().c_str(), loop.c_str(), nullptr, MS_BIND, nullptr) != 0) {
    GTEST_SKIP() << "mounting a folder inside itself needs root";
  }
  const auto items = listed(folder_.path());
  ::umount2(loop.c_str(), MNT_DETACH);
  EXPECT_THAT(items, UnorderedElementsAre("a/", "a/b/", "a/b/loop/"));
}

}  // namespace
}  // namespace brevanholt::platform
