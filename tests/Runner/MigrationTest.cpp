#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"
#include "tests/support/SmallDisk.h"

#include <gtest/gtest.h>

#include <map>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;

// The content of every file below a folder, by its path from there.
std::map<std::string, std::string> filesIn(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(folder)] = readFile(entry);
  }
  return files;
}

class MigrationTest : public testing::Test {
 protected:
  MigrationTest() {
    fs::create_directories(received());
    platform_.folders.workingDirectory = "/home/ada";
  }

  // Below the receive folder.
  [[nodiscard]] fs::path received(std::string_view name = "") const {
    return platform_.folders.downloads / "Brevanholt" / name;
  }
  void put(std::string_view name, std::string_view content) const {
    fs::create_directories(received(name).parent_path());
    writeFile(received(name), content);
  }
  // Every preparation of the receive folder migrates; this is the first.
  void prepare() {
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), nullptr);
    window_->awakeFromNib();
    EXPECT_EQ(platform_.call("prepareReceiveLocation"), Reply(Value(true)));
  }
  // Prepares, and expects that this changes nothing.
  void expectUntouched() {
    const auto before = filesIn(platform_.home.path());
    prepare();
    EXPECT_EQ(filesIn(platform_.home.path()), before);
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(MigrationTest, MovesItemsUpBesideWhatIsThere) {
  put("a.txt", "here");
  put("home/ada/a.txt", "legacy");
  put("home/ada/.hidden", "hidden");
  put("home/ada/photos/2024/b.jpg", "deep");
  put("home/ada/home/c", "named as the way there");
  put("home/ada/.DS_Store", "settings");
  fs::create_symlink("/nowhere", received("home/ada/link"));

  prepare();

  EXPECT_EQ(filesIn(received()),
            (std::map<std::string, std::string>{{"a.txt", "here"},
                                                {"a (1).txt", "legacy"},
                                                {".hidden", "hidden"},
                                                {"photos/2024/b.jpg", "deep"},
                                                {"home (1)/c", "named as the way there"}}));
  EXPECT_EQ(fs::read_symlink(received("link")), "/nowhere");
  EXPECT_FALSE(fs::exists(received("home")));
}

TEST_F(MigrationTest, RunsWithEveryPreparation) {
  prepare();
  put("home/ada/1", "one");
  platform_.call("prepareReceiveLocation");
  put("home/ada/2", "two");
  platform_.call("openReceiveFolder");
  fs::create_directories(platform_.folders.downloads / "Inbox/home/ada/3");
  platform_.call("setReceiveFolderName", Map{{"name", "Inbox"}});

  EXPECT_EQ(filesIn(received()), (std::map<std::string, std::string>{{"1", "one"}, {"2", "two"}}));
  EXPECT_TRUE(fs::exists(platform_.folders.downloads / "Inbox/3"));
}

TEST_F(MigrationTest, PrunesOnlyWhatIsEmpty) {
  put("home/ada/.DS_Store", "settings");
  put("home/.DS_Store", "settings");
  prepare();
  EXPECT_TRUE(fs::is_directory(received()));
  EXPECT_EQ(entryCount(received()), 0);

  put("home/ada/a", "a");
  put("home/bob", "stays");
  prepare();
  EXPECT_EQ(filesIn(received()),
            (std::map<std::string, std::string>{{"a", "a"}, {"home/bob", "stays"}}));
  EXPECT_FALSE(fs::exists(received("home/ada")));

  put("home/ada/.DS_Store/inside", "no settings");
  expectUntouched();
}

TEST_F(MigrationTest, LeavesEverythingAtTheRoot) {
  put("home/ada/a", "a");
  for (const char* root : {"/", "//", ""}) {
    platform_.folders.workingDirectory = root;
    expectUntouched();
  }
}

TEST_F(MigrationTest, LeavesTheWorkingDirectoryItselfAlone) {
  put("here/a", "a");
  platform_.folders.workingDirectory = received("here");
  expectUntouched();
  platform_.folders.workingDirectory = received();
  expectUntouched();

  platform_.folders.workingDirectory = received("here");
  put(received("here/b").relative_path().string(), "b");
  prepare();
  EXPECT_EQ(filesIn(received()), (std::map<std::string, std::string>{{"here/a", "a"}, {"b", "b"}}));
}

TEST_F(MigrationTest, TakesNothingFromBehindALink) {
  fs::create_directories(platform_.home / "elsewhere/ada");
  writeFile(platform_.home / "elsewhere/ada/a", "not ours");
  put("Sorted/ada/b", "sorted by the user");

  fs::create_directory_symlink(platform_.home / "elsewhere", received("home"));
  expectUntouched();
  fs::remove(received("home"));
  fs::create_directory_symlink("Sorted", received("home"));
  expectUntouched();
  fs::remove(received("home"));
  fs::create_directory(received("home"));
  fs::create_directory_symlink(platform_.home / "elsewhere/ada", received("home/ada"));
  expectUntouched();

  platform_.folders.workingDirectory = "/../../elsewhere/ada";
  expectUntouched();
}

TEST_F(MigrationTest, FollowsALinkToTheReceiveFolder) {
  fs::remove(received());
  fs::create_directories(platform_.home / "disk");
  fs::create_directory_symlink(platform_.home / "disk", platform_.folders.downloads / "Brevanholt");
  put("home/ada/a", "a");
  prepare();
  EXPECT_EQ(filesIn(platform_.home / "disk"), (std::map<std::string, std::string>{{"a", "a"}}));
  EXPECT_TRUE(fs::is_symlink(platform_.folders.downloads / "Brevanholt"));
}

TEST_F(MigrationTest, IsNotStoppedByWhatIsNoFolder) {
  put("home/ada", "a file");
  expectUntouched();
}

TEST_F(MigrationTest, LeavesItemsThatCannotBeMovedAndMovesTheOthers) {
  // With a suffix this name would be too long for its folder's entry.
  const std::string longName(254, 'n');
  put(longName, "here");
  put("home/ada/" + longName, "legacy");
  put("home/ada/a", "a");
  prepare();
  EXPECT_EQ(filesIn(received()),
            (std::map<std::string, std::string>{
                {longName, "here"}, {"home/ada/" + longName, "legacy"}, {"a", "a"}}));
}

TEST_F(MigrationTest, LeavesAReadOnlyFolderAsItIs) {
  SmallDisk disk;
  BREVANHOLT_NEEDS(disk);
  platform_.folders.downloads = disk.path();
  put("home/ada/a", "a");
  disk.makeReadOnly();
  prepare();
  EXPECT_EQ(filesIn(received()), (std::map<std::string, std::string>{{"home/ada/a", "a"}}));
}

TEST_F(MigrationTest, LeavesItemsOnAnotherFileSystemWhereTheyAre) {
  SmallDisk disk("1m", received());
  BREVANHOLT_NEEDS(disk);
  writeFile(disk.path() / "a", "a");
  platform_.folders.workingDirectory = "/" + disk.path().filename().string();
  expectUntouched();
  EXPECT_EQ(readFile(disk.path() / "a"), "a");
}

}  // namespace
}  // namespace brevanholt
