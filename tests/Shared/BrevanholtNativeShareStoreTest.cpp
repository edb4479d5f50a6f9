#include "Shared/BrevanholtNativeShareStore.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Swapping.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using platform::FileError;
using platform::LogLevel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Items = BrevanholtNativeShareStore::Items;

constexpr const char* kShare = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr const char* kOther = "7c9e6679-7425-40de-944b-e07fc1f90ae7";

BrevanholtNativeShareItem file(const fs::path& path) {
  return {.path = path.native(), .text = std::nullopt};
}
BrevanholtNativeShareItem text(const std::string& text) {
  return {.path = std::nullopt, .text = text};
}

std::string quoted(const fs::path& path) {
  return '"' + path.native() + '"';
}

class NativeShareStoreTest : public testing::Test {
 protected:
  // Stages a share and returns its folder.
  fs::path stage(const std::string& name, const std::string& manifest) const {
    fs::path share = inbox_ / name;
    fs::create_directories(share);
    writeFile(share / "share.json", manifest);
    return share;
  }
  fs::path stagePaths(const std::string& name, const std::vector<fs::path>& paths) const {
    std::string items;
    for (const fs::path& path : paths) items += "{\"path\": " + quoted(path) + "},";
    if (!items.empty()) items.pop_back();
    return stage(name, "{\"items\": [" + items + "]}");
  }
  // What a call says that fails as a StoreError.
  template <class Call>
  static std::string storeError(Call call) {
    try {
      call();
    } catch (const StoreError& error) {
      return error.message();
    }
    return "no store error";
  }
  template <class Call>
  static int fileError(Call call) {
    try {
      call();
    } catch (const FileError& error) {
      return error.errorNumber();
    }
    return 0;
  }
  std::string locationError(const fs::path& directory) const {
    EXPECT_FALSE(store_.isDirectChildOfInbox(directory)) << directory;
    return storeError([&] { return store_.consumeDirectory(directory); });
  }

  platform::CapturedLog log_;
  TemporaryFolder home_;
  fs::path downloads_ = fs::canonical(home_.path()) / "Downloads";
  fs::path inbox_ = downloads_ / ".NativeShareInbox";
  BrevanholtNativeShareStore store_{downloads_};
};

TEST_F(NativeShareStoreTest, RefusesWhatIsNoUuidBeforeItTouchesAFile) {
  for (const char* identifier : {"abc", "", "../0F8FAD5B-D9CB-469F-A165-70867728950E",
                                 "0F8FAD5B-D9CB-469F-A165-70867728950E/", "0F8FAD5BD9CB469FA165",
                                 "0F8FAD5B/D9CB-469F-A165-70867728950E"}) {
    EXPECT_EQ(storeError([&] { return store_.consumeIdentifier(identifier); }),
              "The native share identifier is invalid.")
        << identifier;
  }
  EXPECT_FALSE(fs::exists(downloads_));
}

TEST_F(NativeShareStoreTest, TakesAShareOnceAndLeavesItsFiles) {
  const fs::path staged = inbox_ / kShare / "a.txt";
  stage(kShare, R"({"version": 7, "items": [
      {"text": "naïve"}, {"path": )" +
                    quoted(staged) + R"(, "text": "not this"},
      {}, {"path": null, "text": null}, {"path": null, "text": "", "more": [[1]]}]})");
  writeFile(staged, "staged");

  EXPECT_THAT(store_.consumeIdentifier(kShare), ElementsAre(text("naïve"), file(staged), text("")));

  EXPECT_FALSE(fs::exists(inbox_ / kShare / "share.json"));
  EXPECT_EQ(readFile(staged), "staged");
  EXPECT_EQ(fileError([&] { return store_.consumeIdentifier(kShare); }), ENOENT);
}

TEST_F(NativeShareStoreTest, TakesEmptySharesAndIdentifiersOfEitherCase) {
  for (const char* name : {kShare, kOther}) {
    const fs::path share = stage(name, R"({"items": []})");
    EXPECT_THAT(store_.consumeIdentifier(name), IsEmpty());
    EXPECT_EQ(entryCount(share), 0);
  }
  stage(kOther, R"({"items": []})");
  EXPECT_EQ(
      fileError([&] { return store_.consumeIdentifier("7C9E6679-7425-40DE-944B-E07FC1F90AE7"); }),
      ENOENT);
}

TEST_F(NativeShareStoreTest, FollowsALinkedDownloadsFolder) {
  fs::create_directory_symlink(downloads_, home_ / "link");
  const BrevanholtNativeShareStore linked(home_ / "link");
  const fs::path staged =
      stagePaths(kShare, {home_ / "link/.NativeShareInbox" / kShare / "a"}) / "a";

  EXPECT_EQ(linked.inboxDirectory(), inbox_);
  EXPECT_THAT(linked.consumeIdentifier(kShare), ElementsAre(file(staged)));
}

TEST_F(NativeShareStoreTest, DropsWhatLiesOutsideItsShare) {
  const fs::path share = inbox_ / kShare;
  const fs::path outside = home_ / "outside";
  fs::create_directories(share / "folder");
  fs::create_directories(outside);
  writeFile(outside / "secret", "secret");
  fs::create_symlink(outside / "secret", share / "link");
  fs::create_directory_symlink(outside, share / "linked");
  fs::create_symlink(outside / "later", share / "dangling");
  fs::create_symlink(share / "loop", share / "loop");
  fs::create_symlink("folder/../a", share / "inside");
  stagePaths(kShare, {share / "a",
                      share / "link",
                      share / "linked/secret",
                      share / "dangling",
                      share / "loop",
                      share / "gone/../link",
                      share / "gone/../linked/secret",
                      share,
                      share / "",
                      share / "folder/..",
                      share / "../x",
                      outside / "secret",
                      "/",
                      "",
                      "folder",
                      inbox_ / kOther / "x",
                      inbox_ / (std::string(kShare) + "-evil/x"),
                      share / "inside",
                      share / "folder/",
                      share / "folder/../gone"});

  EXPECT_THAT(store_.consumeIdentifier(kShare),
              ElementsAre(file(share / "a"), file(share / "a"), file(share / "folder"),
                          file(share / "gone")));
}

TEST_F(NativeShareStoreTest, DropsAPathThatHoldsANul) {
  const fs::path share = inbox_ / kShare;
  stage(kShare, R"({"items": [{"path": ")" + share.native() + R"(/a\u0000b"}, {"text": "x"}]})");

  EXPECT_THAT(store_.consumeIdentifier(kShare), ElementsAre(text("x")));
}

TEST_F(NativeShareStoreTest, RefusesFoldersThatAreNoSharesOfTheInbox) {
  constexpr const char* kMessage = "The native share location is invalid.";
  const fs::path nested = stage("folder/" + std::string(kShare), R"({"items": []})");
  const fs::path outside = home_ / kShare;
  fs::create_directories(outside);
  fs::create_directory_symlink(outside, inbox_ / kOther);
  for (const fs::path& directory : {nested, inbox_, inbox_ / "folder", outside, inbox_ / kOther,
                                    inbox_ / kShare / "..", fs::path(kShare)}) {
    EXPECT_EQ(locationError(directory), kMessage) << directory;
  }
  EXPECT_EQ(storeError([&] { return store_.consumeIdentifier(kOther); }), kMessage);
  EXPECT_TRUE(store_.isDirectChildOfInbox(inbox_ / kShare));
  EXPECT_TRUE(store_.isDirectChildOfInbox(inbox_ / "folder/.." / kShare / ""));
}

TEST_F(NativeShareStoreTest, LeavesAManifestThatIsMalformed) {
  const std::string deep(std::size_t{1} << 20, '[');
  for (const std::string& manifest :
       {std::string(), std::string("secret"), std::string("[]"), std::string("null"),
        std::string("{}"), std::string(R"({"items": {}})"), std::string(R"({"items": ["secret"]})"),
        std::string(R"({"items": [{"path": 1}]})"), std::string(R"({"items": [{"text": []}]})"),
        std::string(R"({"items": [{"text": "secret)"), std::string(R"({"items": []} secret)"),
        std::string("{\"items\": [{\"text\": \"secret \xC3\x28\"}]}"), "{\"items\": " + deep,
        std::string(R"({"items": [{"more": 1e999}]})")}) {
    const fs::path share = stage(kShare, manifest);
    const std::string message = storeError([&] { return store_.consumeIdentifier(kShare); });
    EXPECT_THAT(message, testing::StartsWith("The native share's manifest cannot be used: "))
        << manifest.substr(0, 60);
    EXPECT_EQ(message.find("secret"), std::string::npos) << message;
    EXPECT_EQ(readFile(share / "share.json"), manifest);
  }
}

TEST_F(NativeShareStoreTest, NeverWaitsForAManifestThatIsNoFileOrHasNoEnd) {
  const fs::path manifest = inbox_ / kShare / "share.json";
  const auto consume = [&] { return store_.consumeIdentifier(kShare); };
  fs::create_directories(manifest);
  EXPECT_EQ(fileError(consume), EISDIR);

  fs::remove(manifest);
  ASSERT_EQ(::mkfifo(manifest.c_str(), 0600), 0);
  EXPECT_EQ(fileError(consume), EINVAL);

  fs::remove(manifest);
  fs::create_symlink("/dev/zero", manifest);
  EXPECT_EQ(fileError(consume), ELOOP);

  fs::remove(manifest);
  writeFile(manifest, "[");
  fs::resize_file(manifest, std::uintmax_t{2} << 30);
  EXPECT_EQ(fileError(consume), EFBIG);

  fs::remove_all(inbox_ / kShare);
  writeFile(inbox_ / kShare, "no folder");
  EXPECT_EQ(fileError(consume), ENOTDIR);
}

TEST_F(NativeShareStoreTest, TakesWhatIsPendingAndReportsTheRestOnEveryPass) {
  stage(kShare, R"({"items": [{"text": "one"}]})");
  stage(kOther, R"({"items": []})");
  const fs::path broken = stage("11111111-2222-3333-4444-555555555555", "{}");
  fs::create_directories(inbox_ / "stray");
  fs::create_directories(inbox_ / (std::string(".") + kShare));

  EXPECT_THAT(store_.consumePending(), UnorderedElementsAre(Items{text("one")}, Items{}));

  const std::string stray = "Brevanholt could not import native share at " +
                            (inbox_ / "stray").native() + ": The native share location is invalid.";
  EXPECT_EQ(log_.count(LogLevel::kWarning, stray), 1);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "could not import native share at " + broken.native()),
            1);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "could not import"), 2);
  fs::remove_all(inbox_ / kShare);
  fs::remove_all(inbox_ / kOther);
  EXPECT_THAT(store_.consumePending(), IsEmpty());
  EXPECT_EQ(log_.count(LogLevel::kWarning, "could not import"), 4);
}

TEST_F(NativeShareStoreTest, LivesWithoutAnInbox) {
  writeFile(downloads_, "in the way");
  EXPECT_THAT(store_.consumePending(), IsEmpty());
  EXPECT_EQ(log_.count(LogLevel::kWarning, "Brevanholt could not read pending native shares: "), 1);
  EXPECT_FALSE(store_.isDirectChildOfInbox(inbox_ / kShare));
  store_.discardStagedItems({(inbox_ / kShare / "a").native()});

  const BrevanholtNativeShareStore nowhere{fs::path()};
  constexpr const char* kMessage = "Brevanholt's Downloads staging area is unavailable.";
  EXPECT_EQ(storeError([&] { return nowhere.inboxDirectory(); }), kMessage);
  EXPECT_EQ(storeError([&] { return nowhere.consumeIdentifier(kShare); }), kMessage);
  EXPECT_EQ(storeError([&] { return nowhere.consumeDirectory(inbox_ / kShare); }),
            "The native share location is invalid.");
}

TEST_F(NativeShareStoreTest, DiscardsWholeSharesAndNothingElse) {
  const fs::path share = stage(kShare, "{}");
  const fs::path other = stage(kOther, "{}");
  const fs::path stray = stage("stray", "{}");
  const fs::path received = downloads_ / "Brevanholt/a";
  const fs::path outside = home_ / kShare;
  for (const fs::path& file : {share / "deep/er/a", received, outside / "precious"}) {
    fs::create_directories(file.parent_path());
    writeFile(file, "");
  }
  fs::create_directory_symlink(outside, share / "linked");
  fs::create_directory_symlink(outside, inbox_ / "11111111-2222-3333-4444-555555555555");

  store_.discardStagedItems({(share / "deep/er/a").native(), (share / "gone").native(),
                             share.native(), received.native(), (stray / "a").native(),
                             (inbox_ / "11111111-2222-3333-4444-555555555555/precious").native(),
                             inbox_.native(), (other / "..").native(), "", "a",
                             (other / "a").native() + std::string(1, '\0')});

  EXPECT_FALSE(fs::exists(share));
  for (const fs::path& kept : {other, stray, received, outside / "precious"}) {
    EXPECT_TRUE(fs::exists(kept)) << kept;
  }
}

TEST_F(NativeShareStoreTest, NeverFollowsALinkThatTakesAFoldersPlace) {
  const fs::path outside = home_ / "outside";
  fs::create_directories(outside);
  writeFile(outside / "share.json", R"({"items": [{"text": "stolen"}]})");
  const fs::path share = inbox_ / kShare;

  for (int round = 0; round < 30; ++round) {
    fs::create_directories(share / "folder/deep");
    fs::create_directory_symlink(outside, share / "link");
    {
      const Swapping swapping(share / "folder", share / "link");
      store_.discardStagedItems({share.native()});
    }
    fs::remove_all(share);
  }
  for (int round = 0; round < 300; ++round) {
    stage(kShare, R"({"items": []})");
    fs::create_directory_symlink(outside, inbox_ / ".link");
    {
      const Swapping swapping(share, inbox_ / ".link");
      try {
        EXPECT_THAT(store_.consumeIdentifier(kShare), IsEmpty());
      } catch (const platform::PlatformError&) {
        SUCCEED() << "the link was there first";
      }
    }
    fs::remove_all(share);
    fs::remove_all(inbox_ / ".link");
  }

  EXPECT_TRUE(fs::exists(outside / "share.json"));
}

}  // namespace
}  // namespace brevanholt
