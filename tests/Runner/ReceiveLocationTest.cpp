#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/foundation/Uuid.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"
#include "tests/support/SmallDisk.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;

constexpr const char* kBadPath = "The received path is invalid.";

class ReceiveLocationTest : public testing::Test {
 protected:
  void open() {
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), nullptr);
    window_->awakeFromNib();
  }
  void SetUp() override { open(); }

  [[nodiscard]] fs::path received(std::string_view name = "") const {
    return platform_.folders.downloads / "Brevanholt" / name;
  }
  // A scratch file as the UI writes one.
  std::string scratch(const std::string& name, std::string_view content) {
    std::string path = text(platform_.call("temporaryReceivePath", Map{{"name", name}}));
    writeFile(path, content);
    return path;
  }
  Reply publish(const std::string& path, const std::string& name) {
    return platform_.call("publishReceivedFile", Map{{"path", path}, {"name", name}});
  }
  Reply publish(const std::string& path, const std::string& name, const std::string& relative) {
    return platform_.call("publishReceivedFile",
                          Map{{"path", path}, {"name", name}, {"relativePath", relative}});
  }
  static std::string text(const Reply& reply) {
    const auto* value = std::get_if<Value>(&reply);
    const auto* string = value != nullptr ? value->getIf<std::string>() : nullptr;
    return string != nullptr ? *string : "no text";
  }
  static std::string message(const Reply& reply) {
    const auto* error = std::get_if<MethodError>(&reply);
    return error != nullptr ? error->message : "no error";
  }

  CapturedLog log_;
  FakePlatform platform_;
  std::shared_ptr<MainFlutterWindow> window_;
};

TEST_F(ReceiveLocationTest, PreparesAndRenamesTheReceiveFolder) {
  EXPECT_TRUE(fs::is_directory(received()));
  EXPECT_EQ(platform_.call("setReceiveFolderName", Map{{"name", "  Inbox \n"}}), Reply(Value()));
  EXPECT_TRUE(fs::is_directory(platform_.folders.downloads / "Inbox"));
  EXPECT_EQ(platform_.call("setReceiveFolderName", Map{{"name", "a/b"}}),
            failure("The receive folder name is invalid."));

  const std::string path = text(publish(scratch("a.txt", "a"), "a.txt"));
  EXPECT_EQ(path, platform_.folders.downloads / "Inbox/a.txt") << "a refused name changes nothing";
}

TEST_F(ReceiveLocationTest, IsWithoutAFolderUntilOneCanBeMade) {
  writeFile(platform_.folders.downloads / "Taken", "a file");
  EXPECT_EQ(platform_.call("setReceiveFolderName", Map{{"name", "Taken"}}), Reply(Value()));

  const std::string path = scratch("a.txt", "a");
  EXPECT_EQ(publish(path, "a.txt"), failure("No receive folder is selected."));
  EXPECT_EQ(readFile(path), "a");
  EXPECT_EQ(platform_.call("publishReceivedDirectory", Map{{"relativePath", "d"}}),
            failure("No receive folder is selected."));
  EXPECT_EQ(platform_.call("prepareReceiveLocation"), Reply(Value(false)));
  EXPECT_NE(message(platform_.call("openReceiveFolder")).find("Taken"), std::string::npos);

  fs::remove(platform_.folders.downloads / "Taken");
  EXPECT_EQ(platform_.call("prepareReceiveLocation"), Reply(Value(true)));
  EXPECT_EQ(text(publish(path, "a.txt")), platform_.folders.downloads / "Taken/a.txt");
}

TEST_F(ReceiveLocationTest, HandsOutScratchPathsThatStayInTheirArea) {
  const fs::path area = platform_.folders.temporary / "Brevanholt";
  const std::pair<std::string, std::string> cases[] = {{"../../x.bin", "x.bin"},
                                                       {"", "Received file"},
                                                       {"/", "Received file"},
                                                       {"..", ".."},
                                                       {"a\nb\u202Ec", "a\nb\u202Ec"}};
  for (const auto& [name, expected] : cases) {
    const fs::path path = text(platform_.call("temporaryReceivePath", Map{{"name", name}}));
    EXPECT_EQ(path.parent_path(), area);
    const std::string last = path.filename();
    EXPECT_TRUE(isUuid(last.substr(0, 36)));
    EXPECT_EQ(last.substr(36), "-" + expected);
    EXPECT_FALSE(fs::exists(path));
  }
  EXPECT_EQ(platform_.call("temporaryReceivePath", Map{{"name", std::string("a\0b", 3)}}),
            failure(kBadPath));

  // A name that fills its folder's entry leaves no room for the UUID; the file can be received all
  // the same.
  std::string longName;
  while (longName.size() < 250) longName += "é";
  EXPECT_EQ(fs::path(text(publish(scratch(longName, "long"), longName))).filename(), longName);
}

TEST_F(ReceiveLocationTest, PublishesBesideWhatIsThere) {
  EXPECT_EQ(text(publish(scratch("a.txt", "one"), "a.txt")), received("a.txt"));
  const std::string second = scratch("a.txt", "two");
  EXPECT_EQ(text(publish(second, "a.txt")), received("a (1).txt"));
  EXPECT_EQ(readFile(received("a.txt")), "one");
  EXPECT_EQ(readFile(received("a (1).txt")), "two");
  EXPECT_FALSE(fs::exists(second));

  fs::create_symlink("/nowhere", received("link.txt"));
  EXPECT_EQ(text(publish(scratch("link.txt", "x"), "link.txt")), received("link (1).txt"));
  EXPECT_EQ(text(publish(scratch("empty", ""), "empty")), received("empty"));
  EXPECT_EQ(fs::file_size(received("empty")), 0U);
}

TEST_F(ReceiveLocationTest, TakesTheFolderFromThePathAndTheNameFromTheName) {
  EXPECT_EQ(text(publish(scratch("i", "x"), "img.jpg", "photos\\2024/ignored.jpg")),
            received("photos/2024/img.jpg"));
  EXPECT_EQ(text(publish(scratch("i", "x"), "../../evil", "a/b")), received("a/evil"));
  EXPECT_EQ(text(publish(scratch("i", "x"), "..", "a/b")), received("a/.. (1)"));
  EXPECT_EQ(text(platform_.call("publishReceivedFile", Map{{"path", scratch("i", "x")}})),
            received("Received file"));

  const std::string path = scratch("i", "kept");
  for (const char* relative : {"../x", "/x", "a//b", ""}) {
    EXPECT_EQ(publish(path, "x", relative), failure(kBadPath)) << relative;
  }
  EXPECT_EQ(publish(path, ".."), failure(kBadPath)) << "without a path, the name is the path";
  EXPECT_EQ(publish(path, std::string("a\0b", 3), "a/b"), failure(kBadPath));
  EXPECT_EQ(readFile(path), "kept");
}

TEST_F(ReceiveLocationTest, ReportsNamesThatTheDiskCannotHold) {
  const std::string name(256, 'n');
  const std::string path = scratch("n", "kept");
  EXPECT_NE(message(publish(path, name)).find("File name too long"), std::string::npos);
  EXPECT_EQ(readFile(path), "kept");
  EXPECT_NE(message(publish("/nonexistent/scratch", "x")).find("No such file"), std::string::npos);
}

TEST_F(ReceiveLocationTest, MergesPublishedFolders) {
  const auto publishFolder = [this](const char* path) {
    return platform_.call("publishReceivedDirectory", Map{{"relativePath", path}});
  };
  EXPECT_EQ(text(publishFolder("photos/2024")), received("photos/2024"));
  EXPECT_EQ(text(publishFolder("photos/2024")), received("photos/2024"));
  EXPECT_EQ(publishFolder("photos/../.."), failure(kBadPath));

  writeFile(received("file"), "x");
  EXPECT_NE(message(publishFolder("file/inside")), "no error");
  EXPECT_EQ(readFile(received("file")), "x");
}

TEST_F(ReceiveLocationTest, FollowsALinkAndMakesADeletedFolderAgain) {
  fs::remove_all(received());
  EXPECT_EQ(text(publish(scratch("a", "1"), "a")), received("a"));

  fs::remove_all(platform_.folders.downloads / "Brevanholt");
  fs::create_directory(platform_.home / "elsewhere");
  fs::create_directory_symlink(platform_.home / "elsewhere",
                               platform_.folders.downloads / "Brevanholt");
  publish(scratch("b", "2"), "b");
  EXPECT_EQ(readFile(platform_.home / "elsewhere/b"), "2");
}

TEST_F(ReceiveLocationTest, NeverReplacesAFileThatAppearsInBetween) {
  // Another program creates the same names all the while. Whoever comes first keeps a name, and
  // every byte of both is still there in the end.
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
  int published = 0;
  int refused = 0;
  for (int round = 0; round < 30; ++round) {
    const std::string path = scratch("r", "ours");
    const Reply reply = publish(path, "r");
    if (std::holds_alternative<Value>(reply)) {
      ++published;
      EXPECT_FALSE(fs::exists(path));
    } else {
      ++refused;
      EXPECT_NE(message(reply).find("File exists"), std::string::npos);
      EXPECT_EQ(readFile(path), "ours");
    }
  }
  stop = true;
  creator.join();

  int ours = 0;
  int theirs = 0;
  for (const auto& entry : fs::directory_iterator(received())) {
    const std::string content = readFile(entry.path());
    ours += content == "ours" ? 1 : 0;
    theirs += content == "theirs" ? 1 : 0;
  }
  EXPECT_EQ(ours, published);
  EXPECT_EQ(theirs, made);
  EXPECT_EQ(published + refused, 30);
}

TEST_F(ReceiveLocationTest, LocatesByNameAtTheTopLevelInOrder) {
  publish(scratch("b", "22"), "b");
  publish(scratch("a", "1"), "a");
  publish(scratch("c", "3"), "c", "sub/c");
  const auto locate = [this](List names) {
    return platform_.call("locateReceivedFiles", Map{{"names", std::move(names)}});
  };

  EXPECT_EQ(
      locate({"a", 7.0, "missing", "x/b", "c", true}),
      Reply(Value(List{
          Map{{"name", "a"}, {"location", received("a").string()}, {"size", std::int64_t{1}}},
          Map{{"name", "b"}, {"location", received("b").string()}, {"size", std::int64_t{2}}}})));
  EXPECT_EQ(locate({"..", ".", "a/..", std::string("a\0", 2), "/"}), Reply(Value(List{})));
}

TEST_F(ReceiveLocationTest, OpensAndRevealsWhatIsThere) {
  const std::string location = text(publish(scratch("a", "1"), "a"));
  const Map here{{"location", location}};
  const Map gone{{"location", location + "-gone"}};

  EXPECT_EQ(platform_.call("receivedFileExists", here), Reply(Value(true)));
  EXPECT_EQ(platform_.call("receivedFileExists", gone), Reply(Value(false)));
  EXPECT_EQ(platform_.call("openReceivedFile", here), Reply(Value()));
  EXPECT_EQ(platform_.call("revealReceivedFile", here), Reply(Value()));
  EXPECT_EQ(platform_.call("openReceiveFolder"), Reply(Value()));
  EXPECT_EQ(platform_.workspace.opened,
            (std::vector<std::string>{location, platform_.folders.downloads / "Brevanholt"}));
  EXPECT_EQ(platform_.workspace.revealed, std::vector<std::string>{location});
  EXPECT_EQ(platform_.call("openReceivedFile", gone),
            failure("The received file could not be opened."));
  EXPECT_EQ(platform_.call("revealReceivedFile", gone),
            failure("The received file no longer exists."));

  platform_.workspace.refuses = true;
  EXPECT_EQ(platform_.call("openReceivedFile", here),
            failure("The received file could not be opened."));
  EXPECT_EQ(platform_.call("openReceiveFolder"),
            failure("The receive folder could not be opened."));
}

TEST_F(ReceiveLocationTest, ReportsAReadOnlyReceiveFolder) {
  SmallDisk disk;
  BREVANHOLT_NEEDS(disk);
  platform_.folders.downloads = disk.path();
  open();
  disk.makeReadOnly();

  const std::string path = scratch("a", "kept");
  EXPECT_NE(message(publish(path, "a")).find("Read-only file system"), std::string::npos);
  EXPECT_EQ(readFile(path), "kept");
}

// Scratch files on one file system, the receive folder on another.
class TwoDisksTest : public ReceiveLocationTest {
 protected:
  void SetUp() override {
    BREVANHOLT_NEEDS(disk_);
    platform_.folders.downloads = disk_.path();
    open();
  }

  SmallDisk disk_{"1m"};
};

TEST_F(TwoDisksTest, CopiesAndThenRemovesTheSource) {
  const std::string content(300'000, 'x');
  const std::string path = scratch("a.bin", content);
  fs::permissions(path, fs::perms(0640));
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(100));
  const auto written = fs::last_write_time(path);

  EXPECT_EQ(text(publish(path, "a.bin")), received("a.bin"));

  EXPECT_EQ(readFile(received("a.bin")), content);
  EXPECT_EQ(fs::status(received("a.bin")).permissions(), fs::perms(0640));
  EXPECT_EQ(fs::last_write_time(received("a.bin")), written);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(entryCount(received()), 1);
}

TEST_F(TwoDisksTest, LeavesNothingHalfOnAFullDisk) {
  const std::string content(2'000'000, 'x');
  const std::string path = scratch("big", content);

  EXPECT_NE(message(publish(path, "big")).find("No space left"), std::string::npos);

  EXPECT_EQ(entryCount(received()), 0);
  EXPECT_EQ(readFile(path), content);
  EXPECT_EQ(text(publish(scratch("small", "s"), "small")), received("small"));
}

TEST_F(TwoDisksTest, KeepsTheOrderOfCallsBehindACopy) {
  // All of these are made before the copy is through, yet see what it has done.
  auto& messenger = platform_.engine.messenger;
  const auto call = [&messenger](const char* method, Value arguments) {
    return messenger.call("brevanholt/platform", method, std::move(arguments));
  };
  const auto first = call("publishReceivedFile",
                          Map{{"path", scratch("a", std::string(400'000, '1'))}, {"name", "a"}});
  const auto second = call("publishReceivedFile", Map{{"path", scratch("a", "2")}, {"name", "a"}});
  const auto located = call("locateReceivedFiles", Map{{"names", List{"a", "a (1)"}}});
  const auto version = call("appVersion", {});

  EXPECT_FALSE(first->has_value());
  EXPECT_TRUE(version->has_value()) << "what has to do with no folder does not wait";
  ASSERT_TRUE(platform_.mainQueue.runUntil([&] { return located->has_value(); }));
  EXPECT_EQ(text(**first), received("a"));
  EXPECT_EQ(text(**second), received("a (1)"));
  EXPECT_EQ(std::get<Value>(**located).getIf<List>()->size(), 2U);
}

TEST_F(TwoDisksTest, RefusesToCopyWhatIsNoFile) {
  fs::create_directory(platform_.home / "folder");
  ASSERT_EQ(::mkfifo((platform_.home / "fifo").c_str(), 0600), 0);
  for (const char* name : {"folder", "fifo"}) {
    EXPECT_NE(message(publish(platform_.home / name, "x")).find("Invalid cross-device link"),
              std::string::npos);
    EXPECT_TRUE(fs::exists(platform_.home / name));
  }
  EXPECT_EQ(entryCount(received()), 0);
}

}  // namespace
}  // namespace brevanholt
