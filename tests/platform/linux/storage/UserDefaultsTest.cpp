#include "platform/files/FileDescriptor.h"
#include "platform/foundation/PlatformError.h"
#include "platform/linux/storage/KeyFileUserDefaults.h"
#include "platform/services/UserDefaults.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/CutShort.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/UnreliableDisk.h"

#include <gtest/gtest.h>

#include <thread>

#include <fcntl.h>
#include <sys/file.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using StringDictionary = UserDefaults::StringDictionary;

Bytes octets(std::string_view text) {
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::string allBytesBut0() {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) text += static_cast<char>(byte);
  return text;
}

struct FakeKind {
  UserDefaults& now() { return defaults; }

  FakeUserDefaults defaults;
};

// As every run of the program makes them anew.
struct KeyFileKind {
  UserDefaults& now() {
    defaults = std::make_unique<KeyFileUserDefaults>(folder / "config/brevanholt/defaults.ini");
    return *defaults;
  }

  TemporaryFolder folder;
  std::unique_ptr<KeyFileUserDefaults> defaults;
};

template <class Kind>
class UserDefaultsTest : public testing::Test {
 protected:
  CapturedLog log_;
  Kind kind_;
};

using Kinds = testing::Types<FakeKind, KeyFileKind>;
TYPED_TEST_SUITE(UserDefaultsTest, Kinds);

TYPED_TEST(UserDefaultsTest, KeepsDataUntilItIsReplaced) {
  EXPECT_EQ(this->kind_.now().data("key"), std::nullopt);
  for (const std::string& value : {std::string("value"), std::string(), std::string(1, '\0'),
                                   allBytesBut0(), std::string(100'000, 'x')}) {
    this->kind_.now().setData("key", octets(value));
    EXPECT_EQ(this->kind_.now().data("key"), octets(value));
  }
}

TYPED_TEST(UserDefaultsTest, KeepsDictionariesOfAnyText) {
  EXPECT_EQ(this->kind_.now().stringDictionary("key"), StringDictionary());
  const StringDictionary dictionary{{"/home/ada/[x]=;#'\"\\\n\t naïve 🎈", "value"},
                                    {allBytesBut0(), allBytesBut0()},
                                    {std::string("a\0b", 3), std::string("\0", 1)},
                                    {"", ""},
                                    {"[(b'a', b'b')]", "[]"}};
  this->kind_.now().setStringDictionary("key", dictionary);
  EXPECT_EQ(this->kind_.now().stringDictionary("key"), dictionary);
  this->kind_.now().setStringDictionary("key", {});
  EXPECT_EQ(this->kind_.now().stringDictionary("key"), StringDictionary());
}

// Sets one key again and again; false where it was taken back in between.
bool staysSet(UserDefaults& defaults, const std::string& key) {
  bool stays = true;
  for (int round = 0; round < 50; ++round) {
    const Bytes value = octets(std::to_string(round));
    defaults.setData(key, value);
    stays = stays && defaults.data(key) == value;
  }
  return stays;
}

// Whether two keys that two threads set at once are both kept.
bool doNotDisturbEachOther(UserDefaults& one, UserDefaults& other) {
  bool oneStays = false;
  std::thread thread([&] { oneStays = staysSet(one, "one"); });
  const bool otherStays = staysSet(other, "other");
  thread.join();
  return oneStays && otherStays;
}

class KeyFileUserDefaultsTest : public testing::Test {
 protected:
  [[nodiscard]] std::ptrdiff_t filesSetAside() const {
    return std::ranges::count_if(fs::directory_iterator(folder_.path()), [](const auto& entry) {
      return entry.path().filename().string().starts_with("defaults.ini.damaged-");
    });
  }

  CapturedLog log_;
  TemporaryFolder folder_;
  fs::path file_ = folder_ / "defaults.ini";
  KeyFileUserDefaults defaults_{file_};
};

TEST_F(KeyFileUserDefaultsTest, IsForThisUserAlone) {
  const fs::path folder = folder_ / "a/b";
  KeyFileUserDefaults defaults(folder / "defaults.ini");
  defaults.setData("key", octets("value"));
  EXPECT_EQ(fs::status(folder / "defaults.ini").permissions(), fs::perms(0600));
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
  EXPECT_EQ(fs::status(folder_ / "a").permissions(), fs::perms(0700));

  fs::permissions(folder, fs::perms(0755));
  fs::permissions(folder / "defaults.ini", fs::perms(0644));
  EXPECT_EQ(defaults.data("key"), octets("value"));
  EXPECT_EQ(fs::status(folder / "defaults.ini").permissions(), fs::perms(0600));
  defaults.setData("key", octets("other"));
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
}

TEST_F(KeyFileUserDefaultsTest, SetsADamagedFileAsideBeforeItWrites) {
  for (const std::string& damage :
       {std::string("no key file"), std::string(512, '\0'), std::string("[Defaults\nkey=x"),
        std::string("\xff\xfe[x]\n")}) {
    writeFile(file_, damage);
    const std::ptrdiff_t before = filesSetAside();

    EXPECT_EQ(defaults_.data("key"), std::nullopt);
    EXPECT_EQ(defaults_.stringDictionary("key"), StringDictionary());
    EXPECT_EQ(readFile(file_), damage) << "reading changes nothing";
    defaults_.setData("key", octets("value"));

    EXPECT_EQ(defaults_.data("key"), octets("value"));
    EXPECT_EQ(filesSetAside(), before + 1);
    bool isKept = false;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      isKept = isKept || readFile(entry.path()) == damage;
    }
    EXPECT_TRUE(isKept);
    fs::remove(file_);
  }
}

TEST_F(KeyFileUserDefaultsTest, SetsAsideWhatIsNoFile) {
  fs::create_directory(file_);
  writeFile(file_ / "inside", "kept");
  EXPECT_EQ(defaults_.data("key"), std::nullopt);
  defaults_.setData("key", octets("value"));
  EXPECT_EQ(defaults_.data("key"), octets("value"));

  fs::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(defaults_.data("key"), std::nullopt) << "and does not wait for somebody to write";
  EXPECT_EQ(filesSetAside(), 1);
}

TEST_F(KeyFileUserDefaultsTest, TakesADamagedValueForMissing) {
  for (const char* value : {"dmFsdWU", "dmFs dWU=", "dmFsdWU=x", "ä", "dmFsdWV="}) {
    writeFile(file_, std::string("[Defaults]\nkey=") + value + "\n");
    EXPECT_EQ(defaults_.data("key"), std::nullopt) << value;
  }
  for (const char* value :
       {"[", "{b'a': b'b'}", "[b'a']", "[(b'a', 1)]", "[(b'a', b'b')", "b'x'"}) {
    writeFile(file_, std::string("[Defaults]\nkey=") + value + "\n");
    EXPECT_EQ(defaults_.stringDictionary("key"), StringDictionary()) << value;
  }
}

TEST_F(KeyFileUserDefaultsTest, ThrowsRatherThanTakingAFileForMissingThatCannotBeReached) {
  fs::create_symlink(file_, file_);
  EXPECT_THROW(static_cast<void>(defaults_.data("key")), PlatformError);
  EXPECT_THROW(static_cast<void>(defaults_.stringDictionary("key")), PlatformError);
  EXPECT_THROW(defaults_.setData("key", octets("value")), PlatformError);
  EXPECT_TRUE(fs::is_symlink(file_));
}

TEST_F(KeyFileUserDefaultsTest, KeepsALinkAndTheFolderThatItLeadsTo) {
  fs::create_directory(folder_ / "kept");
  fs::permissions(folder_ / "kept", fs::perms(0755));
  fs::create_symlink("kept/settings", file_);
  for (const char* value : {"first", "second"}) {
    defaults_.setData("key", octets(value));
    EXPECT_EQ(defaults_.data("key"), octets(value));
  }
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_TRUE(fs::is_regular_file(folder_ / "kept/settings"));
  EXPECT_EQ(fs::status(folder_ / "kept").permissions(), fs::perms(0755));
}

TEST_F(KeyFileUserDefaultsTest, KeepsWhatOthersWroteAroundItsOwn) {
  writeFile(file_, "# mine\n[Other]\nkey=theirs\n[Defaults]\nkey=YQ==\n\n[Last]\na=b");
  defaults_.setData("key", octets("b"));
  defaults_.setData("new", octets("c"));
  EXPECT_EQ(readFile(file_),
            "# mine\n[Other]\nkey=theirs\n[Defaults]\nnew=Yw==\nkey=Yg==\n\n[Last]\na=b");
}

TEST_F(KeyFileUserDefaultsTest, WaitsNotForEverForAnotherProcess) {
  const FileDescriptor other(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY));
  ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
  EXPECT_THROW(defaults_.setData("key", octets("value")), PlatformError);
  EXPECT_EQ(KeyFileUserDefaults(file_).data("key"), std::nullopt);
}

TEST_F(KeyFileUserDefaultsTest, RemovesWhatKilledProcessesLeft) {
  for (const char* name :
       {"defaults.ini.XK3pQ2", ".defaults.ini.0A0A0A0A-0000-4000-8000-000000000000",
        "defaults.ini.damaged-1", "other.ini.XK3pQ2"}) {
    writeFile(folder_ / name, "x");
  }
  KeyFileUserDefaults next(file_);
  EXPECT_EQ(entryCount(folder_.path()), 2);
}

TEST_F(KeyFileUserDefaultsTest, KeepsTheOldValuesOnAFullDisk) {
  SmallDisk disk;
  BREVANHOLT_NEEDS(disk);
  KeyFileUserDefaults defaults(disk.path() / "defaults.ini");
  defaults.setData("key", octets("old"));

  EXPECT_THROW(defaults.setData("key", octets(std::string(2 << 20, 'x'))), PlatformError);

  EXPECT_EQ(defaults.data("key"), octets("old"));
  EXPECT_EQ(entryCount(disk.path()), 1);
}

TEST_F(KeyFileUserDefaultsTest, KeepsOneKeyWhileAnotherProcessSetsAnother) {
  KeyFileUserDefaults others(file_);
  EXPECT_TRUE(doNotDisturbEachOther(defaults_, others));
}

// What is kept if the process is killed, or the power cut, before the n-th system call of
// setData().
class CutShortTest : public testing::Test {
 protected:
  // Sets "key" anew again and again, cut short one call later each time.
  void cutShortEverywhere(const fs::path& file, const std::function<void()>& afterwards) {
    int oldOnes = 0;
    int newOnes = 0;
    Bytes current = octets("identity 0");
    KeyFileUserDefaults(file).setData("key", current);
    KeyFileUserDefaults(file).setStringDictionary("other", {{"a", "b"}});
    bool isCut = true;
    for (int n = 1; isCut; ++n) {
      const Bytes next = octets("identity " + std::to_string(n));
      isCut = isCutShort(n, [&] { KeyFileUserDefaults(file).setData("key", next); });
      afterwards();

      const KeyFileUserDefaults defaults(file);
      const auto kept = defaults.data("key");
      ASSERT_TRUE(kept == current || kept == next) << "before system call " << n;
      ASSERT_EQ(defaults.stringDictionary("other"), (StringDictionary{{"a", "b"}})) << n;
      ++(kept == next ? newOnes : oldOnes);
      ASSERT_TRUE(isCut || kept == next) << "setData() returned, so it is kept";
      current = *kept;
    }
    EXPECT_GT(oldOnes, 10);
    EXPECT_GT(newOnes, 1);
  }

  CapturedLog log_;
};

TEST_F(CutShortTest, LeavesTheOldValueOrTheNewOneWhenKilled) {
  const TemporaryFolder folder;
  cutShortEverywhere(folder / "defaults.ini", [] {});
}

TEST_F(CutShortTest, LeavesTheOldValueOrTheNewOneWhenThePowerGoes) {
  UnreliableDisk disk;
  BREVANHOLT_NEEDS(disk);
  KeyFileUserDefaults(disk.path() / "brevanholt/defaults.ini").setData("first", octets("value"));
  disk.cutPower();
  EXPECT_EQ(KeyFileUserDefaults(disk.path() / "brevanholt/defaults.ini").data("first"),
            octets("value"))
      << "a new folder lasts too";
  cutShortEverywhere(disk.path() / "brevanholt/defaults.ini", [&disk] { disk.cutPower(); });
}

}  // namespace
}  // namespace brevanholt::platform
