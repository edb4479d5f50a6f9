#include "tests/Runner/HostTest.h"

#include <gmock/gmock.h>

#include <future>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kShare = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr const char* kOther = "7c9e6679-7425-40de-944b-e07fc1f90ae7";

// How the UI is told of an item in a folder, and of the folder itself.
Map inFolder(const fs::path& path, const std::string& relativePath, std::int64_t size,
             const char* kind) {
  return {{"path", path.native()},
          {"name", path.filename().native()},
          {"size", size},
          {"relativePath", relativePath},
          {"kind", kind}};
}

Map textOf(const std::string& text) {
  return {{"path", ""},
          {"name", "Shared text"},
          {"size", static_cast<std::int64_t>(text.size())},
          {"kind", "text"},
          {"text", text}};
}

class IntakeTest : public HostTest {
 protected:
  void uiIsReady() { EXPECT_EQ(call("platformEventsReady"), Reply(Value())); }
  void share(const std::vector<fs::path>& files, const std::string& text) {
    delegate_->shareWithBrevanholt({.files = files, .text = text});
  }
  // Waits for `count` batches, and returns those that the UI was sent in this run.
  std::vector<Value> batches(std::size_t count) {
    std::vector<Value> batches;
    platform_.mainQueue.runUntil([&] {
      batches.clear();
      for (const MethodCall& event : events()) {
        if (event.method == "sharedEntries") batches.push_back(event.arguments);
      }
      return batches.size() >= count;
    });
    return batches;
  }
  // A share of one folder with one file, and one text, in the inbox.
  fs::path stage(const std::string& identifier) {
    fs::path share = fs::canonical(platform_.folders.downloads) / ".NativeShareInbox" / identifier;
    fs::create_directories(share / "Folder");
    writeFile(share / "Folder/a", "1");
    writeFile(share / "share.json", R"({"items": [{"path": ")" + (share / "Folder").native() +
                                        R"("}, {"text": "x"}, {"text": ""}]})");
    return share;
  }
  static Value shareIn(const fs::path& share) {
    return List{inFolder(share / "Folder", "Folder", 0, "directory"),
                inFolder(share / "Folder/a", "Folder/a", 1, "file"), textOf("x")};
  }
  void launch() {
    restart();
    delegate_->applicationDidFinishLaunching();
    uiIsReady();
  }
  Reply release(const std::string& path) {
    return call("releasePickedFiles", Map{{"paths", List{path}}});
  }
};

TEST_F(IntakeTest, KeepsTheOrderOfTheCallsAndWaitsForNoOtherWork) {
  uiIsReady();
  const fs::path folder = platform_.home / "Folder";
  fs::create_directories(folder);
  writeFile(folder / "a", "12");
  std::promise<void> gate;
  platform_.utilityQueue.async([opened = gate.get_future().share()] { opened.wait(); });

  share({folder / ""}, {});
  share({}, "after");
  EXPECT_THAT(batches(2), ElementsAre(Value(List{inFolder(folder, "Folder", 0, "directory"),
                                                 inFolder(folder / "a", "Folder/a", 2, "file")}),
                                      Value(List{textOf("after")})));
  gate.set_value();
}

TEST_F(IntakeTest, DeliversAShareInWhicheverRunTheUiTakesIt) {
  const fs::path staged = stage(kShare);
  launch();  // and ends while the folder is walked
  platform_.engine.messenger.handlesEvents = false;
  launch();  // and ends before the UI has handled it
  EXPECT_THAT(batches(1), ElementsAre(shareIn(staged)));

  platform_.engine.messenger.handlesEvents = true;
  launch();
  EXPECT_THAT(batches(1), ElementsAre(shareIn(staged)));
  launch();
  share({}, "next");
  EXPECT_THAT(batches(1), ElementsAre(Value(List{textOf("next")})));
}

TEST_F(IntakeTest, WritesTheBookmarksOfAllPendingSharesTogether) {
  stage(kShare);
  stage(kOther);
  platform_.userDefaults.writes = 0;
  launch();
  EXPECT_THAT(batches(2), testing::SizeIs(2));
  EXPECT_EQ(platform_.userDefaults.writes, 1);
  EXPECT_THAT(platform_.userDefaults.stringDictionary("pickedFileBookmarks"), testing::SizeIs(2));
}

TEST_F(IntakeTest, KeepsWhatIsSharedUntilItIsReleased) {
  const fs::path file = platform_.home / "a";
  share({file, platform_.home / "caf\xE9"}, {});

  EXPECT_EQ(platform_.securityScopes.held[file], 1);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "its name is not UTF-8"), 1);
  release(file);
  EXPECT_EQ(platform_.securityScopes.held[file], 0);
}

TEST_F(IntakeTest, OpensShareLinksExactlyAsTheyAreSpelled) {
  uiIsReady();
  const fs::path share = stage(kShare);
  const std::string id = std::string("?id=") + kShare;
  delegate_->applicationOpen(
      {"Brevanholt://share" + id, "brevanholt://Share" + id, "brevanholt://shared" + id,
       "brevanholt:share" + id, "file:///etc/passwd", "brevanholt://share",
       "brevanholt://share?id=abc", "brevanholt://share?ID=" + id,
       std::string("brevanholt://share?id=") + kOther, "brevanholt://share?id&id=" + id.substr(4),
       "brevanholt://share?id=&id=" + id.substr(4), "", "not a url"});
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_FALSE(platform_.window.visible);

  const char* links[] = {"/any/path?x=1&id=", "?flag&id=", "?&id=", "?a=1&&id=", "?=&x&%69d="};
  for (std::size_t number = 1; const std::string link : links) {
    stage(kShare);
    delegate_->applicationOpen({"brevanholt://share" + link + kShare + "&id=" + kOther});
    ASSERT_THAT(batches(number), testing::SizeIs(number)) << link;
    EXPECT_EQ(batches(number).back(), shareIn(share));
    ++number;
  }
  EXPECT_TRUE(platform_.window.visible);
}

TEST_F(IntakeTest, KeepsWhatWasDroppedUntilItIsReleased) {
  DragDestination& view = *platform_.dropContainer.destination;
  view.draggingEntered({{"/x/a"}});
  EXPECT_TRUE(view.performDragOperation({{"/x/folder/", "/x/a", "/x/caf\xE9"}}));
  ASSERT_THAT(events(), testing::SizeIs(3));
  EXPECT_EQ(events()[1].method, "filesDropped");
  EXPECT_EQ(platform_.securityScopes.held["/x/a"], 1);

  // At once: the bookmark may not even be saved by then.
  release("/x/a");
  EXPECT_EQ(platform_.securityScopes.held["/x/a"], 0);
  EXPECT_THAT(platform_.userDefaults.stringDictionary("pickedFileBookmarks"), IsEmpty());
}

}  // namespace
}  // namespace brevanholt
