#include "platform/foundation/Uuid.h"
#include "tests/Runner/HostTest.h"
#include "tests/support/SmallDisk.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;
using testing::HasSubstr;

constexpr const char* kNoFolder = "No receive folder is selected.";
constexpr const char* kBadPath = "The received path is invalid.";

class ReceiveLocationTest : public HostTest {
 protected:
  [[nodiscard]] fs::path received(std::string_view name = "") const {
    return platform_.folders.downloads / "Brevanholt" / name;
  }
  // A scratch file as the UI writes one.
  std::string scratch(const std::string& name, std::string_view content) {
    std::string path = wordsOf(call("temporaryReceivePath", Map{{"name", name}}));
    writeFile(path, content);
    return path;
  }
  // Where the published file or folder is, or why it is not published.
  std::string publish(const std::string& path, const std::string& name,
                      const std::optional<std::string>& relativePath = {}) {
    Map arguments{{"path", path}, {"name", name}};
    if (relativePath) arguments.add("relativePath", *relativePath);
    return wordsOf(call("publishReceivedFile", std::move(arguments)));
  }
  std::string publishFolder(const std::string& path) {
    return wordsOf(call("publishReceivedDirectory", Map{{"relativePath", path}}));
  }
  Reply locate(List names) { return call("locateReceivedFiles", Map{{"names", std::move(names)}}); }
};

TEST_F(ReceiveLocationTest, IsWithoutAFolderUntilOneCanBeMade) {
  writeFile(platform_.folders.downloads / "Taken", "a file");
  EXPECT_EQ(call("setReceiveFolderName", Map{{"name", "Taken"}}), Reply(Value()));
  EXPECT_EQ(call("setReceiveFolderName", Map{{"name", "a/b"}}),
            failure("The receive folder name is invalid."));

  const std::string path = scratch("a.txt", "a");
  EXPECT_EQ(publish(path, "a.txt"), kNoFolder);
  EXPECT_EQ(readFile(path), "a");
  EXPECT_EQ(publishFolder("d"), kNoFolder);
  EXPECT_EQ(locate({"a"}), Reply(Value(List{})));
  EXPECT_EQ(call("prepareReceiveLocation"), Reply(Value(false)));
  EXPECT_THAT(wordsOf(call("openReceiveFolder")), HasSubstr("Taken"));

  fs::remove(platform_.folders.downloads / "Taken");
  EXPECT_EQ(call("prepareReceiveLocation"), Reply(Value(true)));
  EXPECT_EQ(publish(path, "a.txt"), platform_.folders.downloads / "Taken/a.txt");
}

TEST_F(ReceiveLocationTest, HandsOutScratchPathsThatStayInTheirArea) {
  const std::pair<std::string, std::string> cases[] = {
      {"../../x.bin", "x.bin"}, {"/", "Received file"}, {"..", ".."}};
  for (const auto& [name, expected] : cases) {
    const fs::path path = wordsOf(call("temporaryReceivePath", Map{{"name", name}}));
    EXPECT_EQ(path.parent_path(), platform_.folders.temporary / "Brevanholt");
    const std::string last = path.filename();
    EXPECT_TRUE(isUuid(last.substr(0, 36)));
    EXPECT_EQ(last.substr(36), "-" + expected);
  }
  // A name of the greatest length has no room for a UUID or a number. Its file can be received,
  // even twice.
  std::string longName;
  while (longName.size() < 250) longName += "é";
  EXPECT_EQ(publish(scratch(longName, "long"), longName), received(longName));
  const std::string again = publish(scratch(longName, "long"), longName);
  EXPECT_EQ(fs::path(again).filename(), longName + " (1)");
}

TEST_F(ReceiveLocationTest, WritesScratchFilesWhereNobodyElseCanChangeThem) {
  const auto area = [this] {
    return fs::path(wordsOf(call("temporaryReceivePath", Map{{"name", "x"}}))).parent_path();
  };
  const fs::path preferred = platform_.folders.temporary / "Brevanholt";
  const fs::path own = platform_.folders.caches / "Brevanholt";
  fs::create_directories(preferred);
  fs::permissions(preferred, fs::perms(0777));
  EXPECT_EQ(area(), preferred);
  EXPECT_EQ(fs::status(preferred).permissions(), fs::perms(0700));

  restart();
  fs::permissions(platform_.folders.temporary, fs::perms(0777));
  EXPECT_EQ(area(), own) << "others may put another folder in its stead";
  EXPECT_EQ(log_.count(LogLevel::kWarning, "received files are written to"), 1);
  fs::permissions(platform_.folders.temporary, fs::perms(01777));
  restart();
  EXPECT_EQ(area(), preferred) << "the sticky bit keeps them from it";

  fs::remove(preferred);
  fs::create_directory(platform_.home / "theirs");
  fs::create_directory_symlink(platform_.home / "theirs", preferred);
  EXPECT_EQ(area(), own) << "a link, however late";
  restart();
  EXPECT_EQ(area(), own) << "a link";
  if (::geteuid() != 0) return;
  fs::remove(preferred);
  fs::create_directory(preferred);
  ASSERT_EQ(::chown(preferred.c_str(), 65534, 65534), 0);
  restart();
  EXPECT_EQ(area(), own) << "another user's";
}

TEST_F(ReceiveLocationTest, TakesTextWithANulForNoPath) {
  const std::string path = scratch("i", "kept");
  const std::string named = path + std::string("\0x", 2);
  EXPECT_EQ(publish(named, "x"), kBadPath);
  EXPECT_EQ(readFile(path), "kept");
  EXPECT_EQ(call("setReceiveFolderName", Map{{"name", std::string("..\0x", 4)}}),
            failure("The receive folder name is invalid."));
  EXPECT_EQ(call("receivedFileExists", Map{{"location", named}}), Reply(Value(false)));
  EXPECT_EQ(call("openReceivedFile", Map{{"location", named}}),
            failure("The received file could not be opened."));
  EXPECT_EQ(call("revealReceivedFile", Map{{"location", named}}),
            failure("The received file no longer exists."));
}

TEST_F(ReceiveLocationTest, PublishesInTheFolderOfThePathAndBesideWhatIsThere) {
  fs::create_symlink("/nowhere", received("link.txt"));
  EXPECT_EQ(publishFolder("a"), received("a"));
  EXPECT_EQ(publish(scratch("i", "x"), "img.jpg", "photos\\2024/ignored.jpg"),
            received("photos/2024/img.jpg"));
  EXPECT_EQ(publish(scratch("i", "evil"), "../../evil", "a/b"), received("a/evil"));
  EXPECT_EQ(publishFolder("a"), received("a")) << "merged";
  EXPECT_EQ(readFile(received("a/evil")), "evil");
  EXPECT_EQ(publish(scratch("i", "x"), "..", "a/b"), received("a/.. (1)"));
  EXPECT_EQ(publish(scratch("i", "x"), "link.txt"), received("link (1).txt"));

  fs::remove_all(received());
  EXPECT_EQ(publish(scratch("a", "1"), "a"), received("a")) << "made again";
}

TEST_F(ReceiveLocationTest, KeepsTheScratchFileOfWhatItRefuses) {
  const std::string path = scratch("i", "kept");
  writeFile(received("file"), "x");
  const std::pair<std::string, const char*> cases[] = {
      {publish(path, "x", "../x"), kBadPath},
      {publish(path, "x", "/x"), kBadPath},
      {publish(path, "x", ""), kBadPath},
      {publish(path, ".."), kBadPath},
      {publish(path, std::string("a\0b", 3), "a/b"), kBadPath},
      {publish(path, std::string(256, 'n')), "File name too long"},
      {publish("/nonexistent/scratch", "x"), "No such file"},
      {publishFolder("photos/../.."), kBadPath},
      {publishFolder("file/inside"), "Not a directory"}};
  for (const auto& [words, why] : cases) EXPECT_THAT(words, HasSubstr(why));
  EXPECT_EQ(readFile(path), "kept");
  EXPECT_EQ(readFile(received("file")), "x");
  EXPECT_EQ(entryCount(received()), 1);
}

TEST_F(ReceiveLocationTest, NeverReplacesAFileThatAppearsInBetween) {
  // Another program creates files of the same names meanwhile. Nothing is overwritten: every byte
  // of both is there at the end.
  std::atomic<bool> stop = false;
  std::atomic<int> made = 0;
  std::thread creator([&] {
    for (int number = 0; !stop; number = (number + 1) % 40) {
      const std::string name = number == 0 ? "r" : "r (" + std::to_string(number) + ")";
      FILE* file = std::fopen(received(name).c_str(), "wx");
      if (file == nullptr) continue;
      std::fputs("theirs", file);
      std::fclose(file);
      ++made;
    }
  });
  constexpr int kPublished = 30;
  for (int round = 0; round < kPublished; ++round) {
    const std::string path = scratch("r", "ours");
    EXPECT_EQ(readFile(publish(path, "r")), "ours");
  }
  stop = true;
  creator.join();

  const auto count = [this](std::string_view content) {
    return std::ranges::count_if(
        fs::directory_iterator(received()),
        [&](const fs::path& file) { return readFile(file) == content; },
        &fs::directory_entry::path);
  };
  EXPECT_EQ(count("ours"), kPublished);
  EXPECT_EQ(count("theirs"), made);
}

TEST_F(ReceiveLocationTest, LocatesByNameAtTheTopLevelInOrder) {
  publish(scratch("b", "22"), "b");
  publish(scratch("a", "1"), "a");
  publish(scratch("c", "3"), "c", "sub/c");
  const auto found = [this](const char* name, std::int64_t size) {
    return Map{{"name", name}, {"location", received(name).string()}, {"size", size}};
  };
  EXPECT_EQ(locate({"a", 7.0, "missing", "x/b", "c", true}),
            Reply(Value(List{found("a", 1), found("b", 2)})));
  EXPECT_EQ(locate({"..", ".", "a/..", std::string("a\0", 2), "/"}), Reply(Value(List{})));
}

// Scratch files on one file system, the receive folder on another.
class TwoDisksTest : public ReceiveLocationTest {
 protected:
  void SetUp() override {
    BREVANHOLT_NEEDS(disk_);
    platform_.folders.downloads = disk_.path();
    restart();
  }

  SmallDisk disk_{"1m"};
  TemporaryFolder other_;
};

TEST_F(TwoDisksTest, CopiesAndThenRemovesTheSource) {
  const std::string content(300'000, 'x');
  const std::string path = scratch("a.bin", content);
  fs::permissions(path, fs::perms(0640));
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(100));
  const auto written = fs::last_write_time(path);

  EXPECT_EQ(publish(path, "a.bin"), received("a.bin"));

  EXPECT_EQ(readFile(received("a.bin")), content);
  EXPECT_EQ(fs::status(received("a.bin")).permissions(), fs::perms(0640));
  EXPECT_EQ(fs::last_write_time(received("a.bin")), written);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(entryCount(received()), 1);
}

TEST_F(TwoDisksTest, LeavesNothingHalfOnAFullOrReadOnlyDisk) {
  const std::string content(2'000'000, 'x');
  const std::string big = scratch("big", content);
  EXPECT_THAT(publish(big, "big"), HasSubstr("No space left"));
  EXPECT_EQ(readFile(big), content);
  EXPECT_EQ(entryCount(received()), 0);
  EXPECT_EQ(publish(scratch("small", "s"), "small"), received("small"));

  disk_.makeReadOnly();
  EXPECT_THAT(publish(big, "big"), HasSubstr("Read-only file system"));
  EXPECT_EQ(readFile(big), content);
}

TEST_F(TwoDisksTest, KeepsTheOrderOfCallsBehindACopy) {
  // These calls are made before the copy ends, and see its result.
  const std::string large = scratch("a", std::string(400'000, '1'));
  const auto first = begin("publishReceivedFile", Map{{"path", large}, {"name", "a"}});
  const auto second = begin("publishReceivedFile", Map{{"path", scratch("a", "2")}, {"name", "a"}});
  const auto located = begin("locateReceivedFiles", Map{{"names", List{"a", "a (1)"}}});
  const auto version = begin("appVersion");

  EXPECT_FALSE(first->has_value());
  EXPECT_TRUE(version->has_value()) << "what has to do with no folder does not wait";
  ASSERT_TRUE(platform_.mainQueue.runUntil([&] { return *first && *second && *located; }));
  EXPECT_EQ(wordsOf(**first), received("a"));
  EXPECT_EQ(wordsOf(**second), received("a (1)"));
  EXPECT_EQ(std::get<Value>(**located).getIf<List>()->size(), 2U);
}

TEST_F(TwoDisksTest, CancelsACopyWhenTheProgramEnds) {
  platform_.folders.downloads = other_ / "Downloads";
  platform_.folders.temporary = disk_.path();
  restart();
  const std::string path = scratch("huge", "");
  fs::resize_file(path, std::uintmax_t{8} << 30);
  const auto reply = begin("publishReceivedFile", Map{{"path", path}, {"name", "huge"}});
  window_.reset();
  EXPECT_FALSE(reply->has_value());
  EXPECT_EQ(fs::file_size(path), std::uintmax_t{8} << 30);
  EXPECT_EQ(entryCount(received()), 0);
}

}  // namespace
}  // namespace brevanholt
