#include "Shared/BrevanholtNativeShareStore.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Refusal.h"
#include "tests/support/Swapping.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include <sys/stat.h>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using platform::LogLevel;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::SizeIs;
using Share = BrevanholtNativeShareStore::Share;

constexpr const char* kShare = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr const char* kOther = "7c9e6679-7425-40de-944b-e07fc1f90ae7";
constexpr const char* kThird = "11111111-2222-3333-4444-555555555555";
constexpr const char* kBadLocation = "The native share location is invalid.";

// Each item's path, or its text in quotation marks.
std::vector<std::string> words(const BrevanholtNativeShareStore::Items& items) {
  std::vector<std::string> words;
  for (const auto& [path, text] : items) words.push_back(path ? *path : "“" + *text + "”");
  return words;
}

class NativeShareStoreTest : public testing::Test {
 protected:
  NativeShareStoreTest() { fs::create_directories(outside_); }

  // Stages a share and returns its folder.
  fs::path stage(const std::string& name, const std::string& manifest = R"({"items": []})") const {
    fs::path share = inbox_ / name;
    fs::create_directories(share);
    writeFile(share / "share.json", manifest);
    return share;
  }
  std::string refusal(const std::string& identifier = kShare) const {
    return refusalOf([&] { return store_.consumeIdentifier(identifier); });
  }

  platform::CapturedLog log_;
  TemporaryFolder home_;
  fs::path downloads_ = fs::canonical(home_.path()) / "Downloads";
  fs::path inbox_ = downloads_ / ".NativeShareInbox";
  fs::path share_ = inbox_ / kShare;
  fs::path outside_ = home_ / "outside" / kShare;
  BrevanholtNativeShareStore store_{downloads_};
};

TEST_F(NativeShareStoreTest, TakesAShareOnceAndLeavesItsFiles) {
  stage(kShare, R"({"version": 7, "items": [{"text": "naïve"}, {"path": ")" +
                    (home_ / "link/.NativeShareInbox" / kShare / "a").native() +
                    R"(", "text": "not this"},
      {}, {"path": null, "text": null}, {"path": null, "text": "", "more": [[1]]}]})");
  writeFile(share_ / "a", "staged");
  fs::create_directory_symlink(downloads_, home_ / "link");

  EXPECT_THAT(words(BrevanholtNativeShareStore(home_ / "link").consumeIdentifier(kShare).items),
              ElementsAre("“naïve”", share_ / "a", "“”"));

  EXPECT_EQ(readFile(share_ / "a"), "staged");
  EXPECT_THAT(refusal(), HasSubstr("No such file"));
}

TEST_F(NativeShareStoreTest, FindsATakenShareUntilItIsDelivered) {
  stage(kShare,
        R"({"items": [{"text": "first"}, {"path": ")" + (share_ / "a").native() + R"("}]})");
  EXPECT_THAT(store_.consumePending(), SizeIs(1));
  stage(kShare, R"({"items": [{"text": "second"}]})");
  const Share second = store_.consumeIdentifier(kShare);
  BrevanholtNativeShareStore::delivered(second);

  const auto left = BrevanholtNativeShareStore(downloads_).undelivered();
  ASSERT_THAT(left, SizeIs(1));
  EXPECT_THAT(words(left.front().items), ElementsAre("“first”", share_ / "a"));
  EXPECT_TRUE(store_.consumePending().empty()) << "it is not pending any more";
  BrevanholtNativeShareStore::delivered(left.front());
  EXPECT_TRUE(store_.undelivered().empty());
}

TEST_F(NativeShareStoreTest, BoundsTheWorkThatPathsTake) {
  const std::string longest =
      share_.native() + std::string(PATH_MAX - share_.native().size() - 1, '/');
  stage(kShare,
        R"({"items": [{"path": ")" + longest + R"(a"}, {"path": ")" + longest.substr(1) + "a\"}]}");
  EXPECT_TRUE(store_.consumeIdentifier(kShare).items.empty());

  std::string items = "{}";
  for (int count = 0; count < 60'000; ++count)
    items += R"(,{"path": "/proc/./a"},{"path": "/proc/a"})";
  stage(kShare, R"({"items": [)" + items + "]}");
  EXPECT_THAT(refusal(), HasSubstr("too many paths"));
  EXPECT_TRUE(fs::exists(share_ / "share.json"));
}

TEST_F(NativeShareStoreTest, DropsWhatLiesOutsideItsShare) {
  fs::create_directories(share_ / "folder");
  writeFile(outside_ / "secret", "secret");
  fs::create_symlink(outside_ / "secret", share_ / "link");
  fs::create_directory_symlink(outside_, share_ / "linked");
  fs::create_symlink(outside_ / "later", share_ / "dangling");
  fs::create_symlink(share_ / "loop", share_ / "loop");
  fs::create_symlink("folder/../a", share_ / "inside");
  std::string items = R"({"path": ""}, {"path": "folder"})";
  for (const std::string& path :
       {""s, "/"s, "/a"s, "/link"s, "/linked/secret"s, "/dangling"s, "/loop"s, "/gone/../link"s,
        "/gone/../linked/secret"s, "/folder/.."s, "/../x"s, "/../../../outside/"s + kShare,
        "-evil/x"s, "/a\\u0000b"s, "/inside"s, "/folder/"s, "/folder/../gone"s}) {
    items += R"(, {"path": ")" + share_.native() + path + "\"}";
  }
  stage(kShare, R"({"items": [)" + items + "]}");

  EXPECT_THAT(words(store_.consumeIdentifier(kShare).items),
              ElementsAre(share_ / "a", share_ / "a", share_ / "folder", share_ / "gone"));
}

TEST_F(NativeShareStoreTest, RefusesWhatIsNoShareOfTheInbox) {
  for (const std::string& identifier : {""s, "../"s + kShare, kShare + "/"s, "0F8FAD5B"s}) {
    EXPECT_EQ(refusal(identifier), "The native share identifier is invalid.") << identifier;
  }
  EXPECT_FALSE(fs::exists(downloads_)) << "nothing was touched";

  const fs::path nested = stage("folder/"s + kShare);
  fs::create_directory_symlink(outside_, inbox_ / kOther);
  for (const fs::path& directory : {nested, inbox_, inbox_ / "folder", outside_, inbox_ / kOther,
                                    share_ / "..", fs::path(kShare)}) {
    EXPECT_EQ(refusalOf([&] { return store_.consumeDirectory(directory); }), kBadLocation)
        << directory;
  }
}

TEST_F(NativeShareStoreTest, LeavesAManifestThatIsMalformed) {
  for (const std::string& manifest :
       {""s, "secret"s, "[]"s, "{}"s, R"({"items": {}})"s, R"({"items": ["secret"]})"s,
        R"({"items": [{"path": 1}]})"s, R"({"items": []} secret)"s,
        "{\"items\": [{\"text\": \"secret \xC3\x28\"}]}"s, "{\"items\": []}\0"s,
        R"({"items": [{"text": "\ud800 secret"}]})"s, std::string(std::size_t{1} << 20, '[')}) {
    stage(kShare, manifest);
    EXPECT_THAT(refusal(),
                testing::AllOf(testing::StartsWith("The native share's manifest cannot be used: "),
                               testing::Not(HasSubstr("secret"))))
        << manifest.substr(0, 60);
    EXPECT_EQ(readFile(share_ / "share.json"), manifest);
  }
}

TEST_F(NativeShareStoreTest, IgnoresValuesOfUnknownKeysThatFollowTheGrammar) {
  const auto isRefused = [this](const std::string& more) {
    stage(kShare, R"({"more": [)" + more + R"(], "items": [{"x": )" + more + "}]}");
    return refusal() != "not refused";
  };
  for (const char* value : {"1e999", "-0.5E-9999", "123456789012345678901234567890", "\"\\ud800\"",
                            "{\"\\udc00\": [null, true, [], {}, {\"a\": false}]}"}) {
    EXPECT_FALSE(isRefused(value)) << value;
  }
  for (const char* value :
       {"01",          "1.",        ".5",       "+1",    "1e",         "-",
        "0x1",         "NaN",       "nul",      "nulls", "tru e",      "\"\\x\"",
        "\"\\u12g4\"", "\"\t\"",    "\"",       "'a'",   "[1,]",       "[,1]",
        "[1 2]",       "{\"a\"}",   "{\"a\":}", "{1:2}", "{\"a\":1,}", "{\"\\x\":1}",
        "[1}",         "{\"a\":1]", "]",        "",      "1,,2",       "/**/1"}) {
    EXPECT_TRUE(isRefused(value)) << value;
  }
}

TEST_F(NativeShareStoreTest, NeverWaitsForAManifestThatIsNoFileOrHasNoEnd) {
  const fs::path manifest = share_ / "share.json";
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"Is a directory", [&] { fs::create_directory(manifest); }},
      {"Invalid argument", [&] { ASSERT_EQ(::mkfifo(manifest.c_str(), 0600), 0); }},
      {"Too many levels", [&] { fs::create_symlink("/dev/zero", manifest); }},
      {"File too large", [&] { fs::resize_file(stage(kShare) / "share.json", 2UL << 30); }}};
  for (const auto& [why, make] : cases) {
    fs::create_directories(share_);
    make();
    EXPECT_THAT(refusal(), HasSubstr(why));
    fs::remove_all(share_);
  }
}

TEST_F(NativeShareStoreTest, TakesWhatIsPendingAndReportsTheRestAndAMissingInbox) {
  stage(kShare, R"({"items": [{"text": "one"}]})");
  stage(kOther);
  stage(kThird, "{}");
  const fs::path stray = stage("stray");
  stage("."s + kShare);

  EXPECT_THAT(store_.consumePending(),
              testing::UnorderedElementsAre(Field(&Share::items, SizeIs(1)),
                                            Field(&Share::items, SizeIs(0))));
  EXPECT_EQ(log_.count(LogLevel::kWarning, stray.native() + ": " + kBadLocation), 1);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "could not import"), 2);

  const BrevanholtNativeShareStore nowhere("");
  EXPECT_TRUE(nowhere.consumePending().empty());
  nowhere.discardStagedItems({share_ / "a"});
}

TEST_F(NativeShareStoreTest, DiscardsWholeSharesAndNothingElse) {
  const fs::path stray = stage("stray");
  const fs::path other = stage(kOther);
  const fs::path received = downloads_ / "Brevanholt/a";
  for (const fs::path& file : {share_ / "deep/er/a", received, outside_ / "precious"}) {
    fs::create_directories(file.parent_path());
    writeFile(file, "");
  }
  fs::create_directory_symlink(outside_, share_ / "linked");
  fs::create_directory_symlink(outside_, inbox_ / kThird);

  store_.discardStagedItems({share_ / "deep/er/a", share_ / "gone", share_, received, stray / "a",
                             inbox_ / kThird / "precious", inbox_, other / "..", "", "a",
                             other / std::string("a\0", 2)});

  EXPECT_FALSE(fs::exists(share_));
  for (const fs::path& kept : {other, stray, received, outside_ / "precious"}) {
    EXPECT_TRUE(fs::exists(kept)) << kept;
  }
}

TEST_F(NativeShareStoreTest, NeverFollowsALinkThatTakesAFoldersPlace) {
  writeFile(outside_ / "share.json", R"({"items": [{"text": "stolen"}]})");
  const auto race = [this](int rounds, const fs::path& folder, const fs::path& link, auto action) {
    for (int round = 0; round < rounds; ++round) {
      stage(kShare);
      fs::create_directories(share_ / "folder/deep");
      fs::create_directory_symlink(outside_, link);
      {
        const Swapping swapping(folder, link);
        action();
      }
      fs::remove_all(inbox_);
    }
  };
  race(30, share_ / "folder", share_ / "link", [&] { store_.discardStagedItems({share_}); });
  race(300, share_, inbox_ / ".link", [&] {
    // Refused if the link was there first.
    refusalOf([&] { EXPECT_TRUE(store_.consumeIdentifier(kShare).items.empty()); });
  });
  EXPECT_TRUE(fs::exists(outside_ / "share.json"));
}

}  // namespace
}  // namespace brevanholt
