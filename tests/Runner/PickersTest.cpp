#include "platform/foundation/Base64.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"
#include "tests/support/RunningHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevanholt {
namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kKey = "pickedFileBookmarks";

Map picked(const std::string& path) {
  return {{"path", path}, {"name", path.substr(path.rfind('/') + 1)}, {"size", std::int64_t{0}}};
}

class PickersTest : public testing::Test {
 protected:
  Reply pick(const char* method, OpenPanel::Locations chosen) {
    const auto answer = host_.begin(method);
    host_.platform.openPanel.answer(std::move(chosen));
    return host_.finish(answer);
  }
  Reply call(const char* method, List paths) {
    return host_.call(method, Map{{"paths", std::move(paths)}});
  }
  auto stored() { return host_.platform.userDefaults.stringDictionary(kKey); }
  void store(const UserDefaults::StringDictionary& bookmarks) {
    host_.platform.userDefaults.setStringDictionary(kKey, bookmarks);
  }
  static std::string bookmarkOf(const std::string& path) { return toBase64("bookmark of " + path); }

  CapturedLog log_;
  RunningHost host_;
  FakeSecurityScopes& scopes_ = host_.platform.securityScopes;
};

TEST_F(PickersTest, AnswersWithTheFilesAndKeepsThem) {
  const Reply reply = pick("pickFiles", {"/x/b.txt", "/x/ä 1%.txt"});

  EXPECT_EQ(reply, Reply(Value(List{picked("/x/b.txt"), picked("/x/ä 1%.txt")})));
  EXPECT_THAT(stored(), ElementsAre(Pair("/x/b.txt", bookmarkOf("/x/b.txt")),
                                    Pair("/x/ä 1%.txt", bookmarkOf("/x/ä 1%.txt"))));
  EXPECT_EQ(scopes_.held["/x/b.txt"], 1);
}

TEST_F(PickersTest, HoldsOneScopeForAFileThatIsPickedTwice) {
  pick("pickFiles", {"/x/a"});
  pick("pickFiles", {"/x/a"});
  EXPECT_EQ(scopes_.held["/x/a"], 1);
  EXPECT_EQ(stored().size(), 1U);

  EXPECT_EQ(call("releasePickedFiles", {"/x/a"}), Reply(Value()));
  EXPECT_EQ(scopes_.held["/x/a"], 0);
}

TEST_F(PickersTest, AnswersWithNothingWhenCancelled) {
  EXPECT_EQ(pick("pickFiles", {}), Reply(Value(List{})));
  EXPECT_EQ(pick("pickFolder", {}), Reply(Value(List{})));
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PickersTest, AnswersWithAFolderAndAllThatIsInIt) {
  const std::filesystem::path photos = host_.platform.home / "Photos";
  std::filesystem::create_directories(photos / "trip");
  writeFile(photos / "trip/b.jpg", "12");
  writeFile(photos / "trip/.hidden", "");

  const Reply reply = pick("pickFolder", {photos});

  EXPECT_EQ(reply,
            Reply(Value(List{inFolder(photos, "Photos", 0, "directory"),
                             inFolder(photos / "trip", "Photos/trip", 0, "directory"),
                             inFolder(photos / "trip/b.jpg", "Photos/trip/b.jpg", 2, "file")})));
  EXPECT_THAT(stored(), ElementsAre(Pair(photos.native(), bookmarkOf(photos.native()))));
  EXPECT_EQ(scopes_.held.size(), 1U);
}

TEST_F(PickersTest, AnswersInTheOrderOfTheCalls) {
  const auto folder = host_.begin("pickFolder");
  const auto files = host_.begin("pickFiles");
  ASSERT_EQ(host_.platform.openPanel.open.size(), 2U);
  EXPECT_EQ(host_.platform.openPanel.open.front().first, OpenPanel::Choice::kFolder);
  host_.platform.openPanel.answer({host_.platform.home.path()});
  host_.platform.openPanel.answer({"/x/a"});

  ASSERT_TRUE(host_.platform.mainQueue.runUntil([&] { return folder->has_value(); }));
  EXPECT_FALSE(files->has_value());
  EXPECT_EQ(host_.finish(files), Reply(Value(List{picked("/x/a")})));
}

TEST_F(PickersTest, LeavesOutNamesThatAreNotUtf8) {
  EXPECT_EQ(pick("pickFiles", {"/x/caf\xE9", "/x/a"}), Reply(Value(List{picked("/x/a")})));
  EXPECT_EQ(pick("pickFolder", {"/x/caf\xE9"}), Reply(Value(List{})));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "its name is not UTF-8"), 2);
  EXPECT_EQ(stored().size(), 1U);
}

TEST_F(PickersTest, RestoresAfterARestartWhatIsOrLiesInABookmark) {
  pick("pickFiles", {"/home/u/Pictures", "/home/u/Pictures/a.jpg", "/home/u/b"});
  host_.restart();
  EXPECT_EQ(scopes_.held["/home/u/b"], 0);

  EXPECT_EQ(call("restorePickedFiles", {"/home/u/PicturesOld/a.jpg", "/home/u"}), Reply(Value()));
  EXPECT_EQ(scopes_.held["/home/u/Pictures"], 0);

  call("restorePickedFiles", {"/home/u/Pictures/c/d.jpg"});
  call("restorePickedFiles", {"/home/u/Pictures/a.jpg"});
  EXPECT_EQ(scopes_.held["/home/u/Pictures"], 1);
  EXPECT_EQ(scopes_.held["/home/u/Pictures/a.jpg"], 1);
  EXPECT_EQ(scopes_.begun["/home/u/Pictures"], 2);  // once in each run
  EXPECT_EQ(scopes_.held["/home/u/b"], 0);
}

TEST_F(PickersTest, SkipsBookmarksThatLeadNowhereAndLeavesThemStored) {
  scopes_.gone = "/gone";
  const UserDefaults::StringDictionary bookmarks{
      {"/bad", "not base64!"}, {"/alien", toBase64("something")}, {"/gone", bookmarkOf("/gone")}};
  store(bookmarks);

  EXPECT_EQ(call("restorePickedFiles", {"/bad", "/alien", "/gone/a"}), Reply(Value()));
  EXPECT_THAT(scopes_.begun, IsEmpty());
  EXPECT_EQ(stored(), bookmarks);

  EXPECT_EQ(pick("pickFiles", {"/gone", "/a"}), Reply(Value(List{picked("/gone"), picked("/a")})));
  EXPECT_TRUE(stored().contains("/a"));
}

TEST_F(PickersTest, RenewsAStaleBookmarkUnderItsNewPath) {
  store({{"/old", bookmarkOf("/old")}});
  scopes_.moved["/old"] = "/new";

  call("restorePickedFiles", {"/old/a"});

  EXPECT_THAT(stored(),
              ElementsAre(Pair("/new", bookmarkOf("/new")), Pair("/old", bookmarkOf("/old"))));
  EXPECT_EQ(scopes_.held["/new"], 1);
  call("restorePickedFiles", {"/new"});
  EXPECT_EQ(scopes_.begun["/new"], 1);
  call("releasePickedFiles", {"/old", "/new"});
  EXPECT_EQ(scopes_.held["/new"], 0);
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PickersTest, ReleasesTheFolderWithAFileInIt) {
  pick("pickFiles", {"/p/folder", "/p/folder2", "/p/c"});

  EXPECT_EQ(call("releasePickedFiles", {"/p/folder/deep/a", "/elsewhere"}), Reply(Value()));

  EXPECT_THAT(stored(), ElementsAre(Pair("/p/c", testing::_), Pair("/p/folder2", testing::_)));
  EXPECT_EQ(scopes_.held["/p/folder"], 0);
  EXPECT_EQ(scopes_.held["/p/folder2"], 1);
}

TEST_F(PickersTest, DiscardsTheShareOfAReleasedFile) {
  const auto share =
      host_.platform.folders.downloads / ".NativeShareInbox/0F8FAD5B-D9CB-469F-A165-70867728950E";
  std::filesystem::create_directories(share);
  writeFile(share / "a", "");

  EXPECT_EQ(call("releasePickedFiles", {(share / "a").native()}), Reply(Value()));

  host_.finishUtilityWork();
  EXPECT_FALSE(std::filesystem::exists(share));
}

TEST_F(PickersTest, TakesPathsThatAreNoListOfStringsForNone) {
  pick("pickFiles", {"/a"});
  for (const Value& arguments :
       {Value(Map{}), Value(Map{{"paths", "/a"}}), Value(Map{{"paths", List{"/a", true}}})}) {
    EXPECT_EQ(host_.call("releasePickedFiles", arguments), Reply(Value()));
    EXPECT_EQ(host_.call("restorePickedFiles", arguments), Reply(Value()));
  }
  EXPECT_EQ(scopes_.held["/a"], 1);
}

TEST_F(PickersTest, FailsNoPickWhenBookmarksCannotBeKept) {
  host_.platform.userDefaults.refusesSetting = true;
  EXPECT_EQ(pick("pickFiles", {"/a"}), Reply(Value(List{picked("/a")})));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "bookmarks of picked files are not kept"), 1);

  host_.platform.userDefaults.refusesReading = true;
  EXPECT_EQ(call("restorePickedFiles", {"/a"}), Reply(Value()));
  EXPECT_EQ(call("releasePickedFiles", {"/a"}), Reply(Value()));
}

TEST_F(PickersTest, TakesAPanelThatOutlivesTheWindowForCancelled) {
  const auto answer = host_.begin("pickFolder");
  host_.window.reset();
  host_.platform.openPanel.answer({"/a"});

  EXPECT_EQ(*answer, Reply(Value(List{})));
  EXPECT_THAT(scopes_.begun, IsEmpty());
}

}  // namespace
}  // namespace brevanholt
