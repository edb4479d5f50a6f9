#include "tests/Runner/HostTest.h"
#include "tests/support/SmallDisk.h"

#include <map>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;
using Files = std::map<std::string, std::string>;

// The content of every file below a folder, by its path from there.
Files filesIn(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(folder)] = readFile(entry);
  }
  return files;
}

class MigrationTest : public HostTest {
 protected:
  void SetUp() override { platform_.folders.workingDirectory = "/home/ada"; }

  // Below the receive folder.
  [[nodiscard]] fs::path received(std::string_view name = "") const {
    return platform_.folders.downloads / "Brevanholt" / name;
  }
  void put(std::string_view name, std::string_view content) const {
    fs::create_directories(received(name).parent_path());
    writeFile(received(name), content);
  }
  // Every run prepares the receive folder, and each preparation migrates.
  void prepare() {
    restart();
    EXPECT_EQ(call("prepareReceiveLocation"), Reply(Value(true)));
  }
  // Prepares, and expects that this changes nothing.
  void expectUntouched(const char* why) {
    SCOPED_TRACE(why);
    const Files before = filesIn(platform_.home.path());
    prepare();
    EXPECT_EQ(filesIn(platform_.home.path()), before);
  }
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

  EXPECT_EQ(filesIn(received()), (Files{{"a.txt", "here"},
                                        {"a (1).txt", "legacy"},
                                        {".hidden", "hidden"},
                                        {"photos/2024/b.jpg", "deep"},
                                        {"home (1)/c", "named as the way there"}}));
  EXPECT_EQ(fs::read_symlink(received("link")), "/nowhere");
  EXPECT_FALSE(fs::exists(received("home")));

  // With a suffix this name would be longer than a file system takes.
  put(std::string(254, 'n'), "here");
  put("home/ada/" + std::string(254, 'n'), "legacy");
  prepare();
  EXPECT_EQ(readFile(received(std::string(254, 'n'))), "here");
  EXPECT_EQ(readFile(received(std::string(251, 'n') + " (1)")), "legacy");
}

TEST_F(MigrationTest, PrunesOnlyWhatIsEmpty) {
  put("home/ada/.DS_Store", "settings");
  put("home/.DS_Store", "settings");
  prepare();
  EXPECT_EQ(entryCount(received()), 0);

  put("home/ada/a", "a");
  put("home/bob", "stays");
  prepare();
  EXPECT_EQ(filesIn(received()), (Files{{"a", "a"}, {"home/bob", "stays"}}));
  EXPECT_FALSE(fs::exists(received("home/ada")));

  put("home/ada/.DS_Store/inside", "no settings");
  expectUntouched("what only has the settings' name");
}

TEST_F(MigrationTest, LeavesWhatNoEarlierBuildMade) {
  put("home/ada", "a file");
  expectUntouched("no folder");
  fs::remove(received("home/ada"));

  put("home/ada/a", "a");
  for (const char* root : {"/", "//", ""}) {
    platform_.folders.workingDirectory = root;
    expectUntouched("started at the root");
  }
  for (const char* started : {"", "home"}) {
    platform_.folders.workingDirectory = received(started);
    expectUntouched("started in the receive folder");
  }
  put(received("home/b").relative_path().string(), "b");
  prepare();
  EXPECT_EQ(filesIn(received()), (Files{{"home/ada/a", "a"}, {"b", "b"}}));
}

TEST_F(MigrationTest, TakesNothingFromBehindALink) {
  fs::create_directories(platform_.home / "elsewhere/ada");
  writeFile(platform_.home / "elsewhere/ada/a", "not ours");
  put("Sorted/ada/b", "sorted by the user");

  for (const fs::path& target : {fs::path(platform_.home / "elsewhere"), fs::path("Sorted")}) {
    fs::create_directory_symlink(target, received("home"));
    expectUntouched(target.c_str());
    fs::remove(received("home"));
  }
  fs::create_directory(received("home"));
  fs::create_directory_symlink(platform_.home / "elsewhere/ada", received("home/ada"));
  expectUntouched("a link at the end of the way");
  platform_.folders.workingDirectory = "/../../elsewhere/ada";
  expectUntouched("a way out");
}

TEST_F(MigrationTest, CopiesItemsFromAnotherFileSystem) {
  SmallDisk disk("1m", received());
  BREVANHOLT_NEEDS(disk);
  put("a", "here");
  writeFile(disk.path() / "a", "legacy");
  fs::create_directory(disk.path() / "folder");
  writeFile(disk.path() / "folder/b", "deep");
  platform_.folders.workingDirectory = "/" + disk.path().filename().string();
  prepare();
  call("locateReceivedFiles", Map{{"names", List{}}});  // behind the copies
  EXPECT_EQ(filesIn(received()), (Files{{"a", "here"}, {"a (1)", "legacy"}, {"folder/b", "deep"}}));
  EXPECT_EQ(entryCount(disk.path()), 0);
}

TEST_F(MigrationTest, LogsOnceWhatCannotBeMoved) {
  SmallDisk disk;
  BREVANHOLT_NEEDS(disk);
  platform_.folders.downloads = disk.path();
  put("home/ada/b", "b");
  disk.makeReadOnly();
  for (int run = 0; run < 3; ++run) {
    prepare();
    EXPECT_EQ(readFile(received("home/ada/b")), "b");
    EXPECT_EQ(log_.count(LogLevel::kWarning, "stays in its folder"), 1);
  }
}

}  // namespace
}  // namespace brevanholt
