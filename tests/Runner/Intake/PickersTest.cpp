#include "platform/formats/Base64.h"
#include "tests/Runner/HostTest.h"

#include <gmock/gmock.h>

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
std::string bookmarkOf(const std::string& path) {
  return toBase64("bookmark of " + path);
}

class PickersTest : public HostTest {
 protected:
  Reply pick(const char* method, OpenPanel::Locations chosen) {
    const auto answer = begin(method);
    platform_.openPanel.answer(std::move(chosen));
    return finish(answer);
  }
  void restore(List paths) {
    EXPECT_EQ(call("restorePickedFiles", Map{{"paths", std::move(paths)}}), Reply(Value()));
  }
  void release(List paths) {
    EXPECT_EQ(call("releasePickedFiles", Map{{"paths", std::move(paths)}}), Reply(Value()));
  }
  auto stored() { return platform_.userDefaults.stringDictionary(kKey); }

  FakeSecurityScopes& scopes_ = platform_.securityScopes;
};

TEST_F(PickersTest, RestoresAfterARestartWhatIsOrLiesInABookmark) {
  pick("pickFiles", {"/home/u/Pictures", "/home/u/Pictures/a.jpg"});
  restart();
  restore({"/home/u/PicturesOld/a.jpg", "/home/u"});
  EXPECT_EQ(scopes_.held["/home/u/Pictures"], 0);

  restore({"/home/u/Pictures/c/d.jpg"});
  restore({"/home/u/Pictures/a.jpg"});
  EXPECT_EQ(scopes_.held["/home/u/Pictures"], 1);
  EXPECT_EQ(scopes_.held["/home/u/Pictures/a.jpg"], 1);
  EXPECT_EQ(scopes_.begun["/home/u/Pictures"], 2) << "once in each run";
}

TEST_F(PickersTest, SkipsBookmarksThatLeadNowhereAndLeavesThemStored) {
  scopes_.moved["/gone"] = "";
  const UserDefaults::StringDictionary bookmarks{
      {"/bad", "not base64!"}, {"/alien", toBase64("something")}, {"/gone", bookmarkOf("/gone")}};
  platform_.userDefaults.setStringDictionary(kKey, bookmarks);
  restore({"/bad", "/alien", "/gone/a"});
  EXPECT_THAT(scopes_.begun, IsEmpty());
  EXPECT_EQ(stored(), bookmarks);
}

TEST_F(PickersTest, RenewsAStaleBookmarkUnderItsNewPath) {
  platform_.userDefaults.setStringDictionary(kKey, {{"/old", bookmarkOf("/old")}});
  scopes_.moved["/old"] = "/new";
  restore({"/old/a"});
  EXPECT_THAT(stored(),
              ElementsAre(Pair("/new", bookmarkOf("/new")), Pair("/old", bookmarkOf("/old"))));
  EXPECT_EQ(scopes_.held["/new"], 1);
  release({"/old", "/new"});
  EXPECT_EQ(scopes_.held["/new"], 0);
  EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(PickersTest, ReleasesTheFolderOrTheShareThatAFileLiesIn) {
  const auto share =
      platform_.folders.downloads / ".NativeShareInbox/0F8FAD5B-D9CB-469F-A165-70867728950E";
  std::filesystem::create_directories(share);
  for (const char* again : {"/p/folder", "/p/folder"}) pick("pickFiles", {again, "/p/folder2"});

  const Value noLists[] = {Map{}, Map{{"paths", "/p/folder"}},
                           Map{{"paths", List{"/p/folder", true}}}};
  for (const Value& arguments : noLists) {
    EXPECT_EQ(call("releasePickedFiles", arguments), Reply(Value()));
  }
  EXPECT_EQ(scopes_.held["/p/folder"], 1);
  release({"/p/folder/deep/a", "/elsewhere", (share / "a").native()});

  EXPECT_THAT(stored(), ElementsAre(Pair("/p/folder2", testing::_)));
  EXPECT_EQ(scopes_.held["/p/folder"], 0);
  EXPECT_EQ(scopes_.held["/p/folder2"], 1);
  platform_.utilityQueue.sync([] {});
  EXPECT_FALSE(std::filesystem::exists(share));
}

TEST_F(PickersTest, FailsNoPickWhenBookmarksCannotBeKept) {
  platform_.userDefaults.refusesSetting = true;
  EXPECT_EQ(pick("pickFiles", {"/a"}), Reply(Value(List{picked("/a")})));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "bookmarks of picked files are not kept"), 1);
  platform_.userDefaults.refusesReading = true;
  restore({"/a"});
  release({"/a"});
}

TEST_F(PickersTest, TakesAPanelThatOutlivesTheWindowForCancelled) {
  const auto answer = begin("pickFolder");
  window_.reset();
  platform_.openPanel.answer({"/a"});
  EXPECT_EQ(*answer, Reply(Value(List{})));
  EXPECT_THAT(scopes_.begun, IsEmpty());
}

}  // namespace
}  // namespace brevanholt
