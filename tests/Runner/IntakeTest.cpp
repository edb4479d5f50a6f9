#include "tests/support/CapturedLog.h"
#include "tests/support/PrintValue.h"
#include "tests/support/RunningHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kShare = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr const char* kOther = "7c9e6679-7425-40de-944b-e07fc1f90ae7";

Map textOf(const std::string& text, std::int64_t size) {
  return {{"path", ""}, {"name", "Shared text"}, {"size", size}, {"kind", "text"}, {"text", text}};
}
Map fileOf(const fs::path& path, std::int64_t size) {
  return {{"path", path.native()},
          {"name", path.filename().native()},
          {"size", size},
          {"kind", "file"}};
}

class IntakeTest : public testing::Test {
 protected:
  void uiIsReady() { EXPECT_EQ(host_.call("platformEventsReady"), Reply(Value())); }
  void share(const ServicePasteboard& pasteboard) {
    host_.delegate->shareWithBrevanholt(pasteboard);
  }
  fs::path makeFile(const std::string& name, std::string_view content) {
    fs::path path = host_.platform.home / name;
    fs::create_directories(path.parent_path());
    writeFile(path, content);
    return path;
  }
  // Stages a share of one text.
  void stageText(const std::string& name, const std::string& text) {
    const fs::path share = host_.platform.folders.downloads / ".NativeShareInbox" / name;
    fs::create_directories(share);
    writeFile(share / "share.json", R"({"items": [{"text": ")" + text + "\"}]}");
  }
  // The batches of entries that the UI was sent.
  std::vector<Value> batches() {
    host_.finishUtilityWork();
    std::vector<Value> batches;
    for (const MethodCall& event : host_.events()) {
      if (event.method == "sharedEntries") batches.push_back(event.arguments);
    }
    return batches;
  }
  [[nodiscard]] bool isPresented() const { return host_.platform.window.visible; }

  CapturedLog log_;
  RunningHost host_;
};

TEST_F(IntakeTest, KeepsBatchesApartAndInOrderUntilTheUiIsReady) {
  for (const char* text : {"one", "two", "three"}) share({.files = {}, .text = text});
  EXPECT_THAT(host_.events(), IsEmpty());

  uiIsReady();
  uiIsReady();
  share({.files = {}, .text = "four"});

  EXPECT_THAT(batches(),
              ElementsAre(Value(List{textOf("one", 3)}), Value(List{textOf("two", 3)}),
                          Value(List{textOf("three", 5)}), Value(List{textOf("four", 4)})));
}

TEST_F(IntakeTest, WaitsForTheChannelToo) {
  FakeBinaryMessenger messenger;
  BrevanholtSharedItemsBridge bridge;
  bridge.setDartReady();
  bridge.publish({textOf("early", 5)});
  bridge.flushIfReady();

  bridge.setChannel(std::make_shared<MethodChannel>("brevanholt/platform", messenger));
  bridge.flushIfReady();

  ASSERT_EQ(messenger.events.size(), 1U);
  EXPECT_EQ(messenger.events[0].arguments, Value(List{textOf("early", 5)}));
}

TEST_F(IntakeTest, SharesFilesAheadOfTextAndDescribesThem) {
  uiIsReady();
  const fs::path file = makeFile("ä b%20.txt", "12345");

  share({.files = {file, host_.platform.home / "gone"}, .text = "not this"});

  EXPECT_THAT(batches(),
              ElementsAre(Value(List{fileOf(file, 5), fileOf(host_.platform.home / "gone", 0)})));
  EXPECT_TRUE(isPresented());
  EXPECT_EQ(host_.platform.application.activations, 1);
}

TEST_F(IntakeTest, ExpandsFoldersAfterTheirOwnEntry) {
  uiIsReady();
  const fs::path photos = host_.platform.home / "Photos";
  makeFile("Photos/trip/b.jpg", "12");
  makeFile("Photos/trip/.hidden", "");
  const fs::path beside = makeFile("beside", "1");

  share({.files = {beside, photos / ""}, .text = {}});

  EXPECT_THAT(
      batches(),
      ElementsAre(Value(List{fileOf(beside, 1), inFolder(photos, "Photos", 0, "directory"),
                             inFolder(photos / "trip", "Photos/trip", 0, "directory"),
                             inFolder(photos / "trip/b.jpg", "Photos/trip/b.jpg", 2, "file")})));
}

TEST_F(IntakeTest, KeepsTheOrderOfTheCallsWhileAFolderIsWalked) {
  uiIsReady();
  makeFile("Folder/a", "");
  std::promise<void> gate;
  host_.platform.utilityQueue.async([&gate] { gate.get_future().wait(); });

  share({.files = {host_.platform.home / "Folder"}, .text = {}});
  share({.files = {}, .text = "after"});
  EXPECT_THAT(host_.events(), IsEmpty());
  gate.set_value();

  const auto sent = batches();
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[0].getIf<List>()->size(), 2U);
  EXPECT_EQ(sent[1], Value(List{textOf("after", 5)}));
  share({.files = {}, .text = "at once"});
  const auto names = host_.eventNames();
  EXPECT_EQ(std::ranges::count(names, "sharedEntries"), 3);
}

TEST_F(IntakeTest, ActivatesEvenWhereThereIsNothingToShare) {
  uiIsReady();
  share({});
  EXPECT_THAT(batches(), IsEmpty());
  EXPECT_TRUE(isPresented());

  share({.files = {}, .text = "näif!"});
  EXPECT_THAT(batches(), ElementsAre(Value(List{textOf("näif!", 6)})));
}

TEST_F(IntakeTest, KeepsWhatIsSharedUntilItIsReleased) {
  const fs::path file = makeFile("a", "");
  share({.files = {file, host_.platform.home / "caf\xE9"}, .text = {}});

  EXPECT_EQ(host_.platform.userDefaults.stringDictionary("pickedFileBookmarks").size(), 1U);
  EXPECT_EQ(host_.platform.securityScopes.held[file], 1);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "its name is not UTF-8"), 1);
  host_.call("releasePickedFiles", Map{{"paths", List{file.native()}}});
  EXPECT_EQ(host_.platform.securityScopes.held[file], 0);
}

TEST_F(IntakeTest, OpensShareLinksExactlyAsTheyAreSpelled) {
  uiIsReady();
  stageText(kShare, "linked");
  const std::string id = std::string("?id=") + kShare;
  host_.delegate->applicationOpen(
      {"Brevanholt://share" + id, "brevanholt://Share" + id, "brevanholt://shared" + id,
       "brevanholt:share" + id, "file:///etc/passwd", "brevanholt://share",
       "brevanholt://share?id=abc", "brevanholt://share?ID=" + id,
       std::string("brevanholt://share?id=") + kOther, "", "not a url"});
  EXPECT_THAT(batches(), IsEmpty());
  EXPECT_FALSE(isPresented());

  host_.delegate->applicationOpen(
      {"brevanholt://share/any/path?x=1&id=" + std::string(kShare) + "&id=" + kOther});
  EXPECT_THAT(batches(), ElementsAre(Value(List{textOf("linked", 6)})));
  EXPECT_TRUE(isPresented());
}

TEST_F(IntakeTest, TakesPendingSharesAtLaunch) {
  stageText(kShare, "pending");
  host_.platform.isLoginItemLaunch = true;
  host_.restart();
  host_.delegate->applicationDidFinishLaunching();
  host_.platform.mainQueue.drain();
  EXPECT_FALSE(isPresented());

  uiIsReady();
  EXPECT_THAT(batches(), ElementsAre(Value(List{textOf("pending", 7)})));
}

TEST_F(IntakeTest, TakesPendingSharesWhenItBecomesActive) {
  uiIsReady();
  host_.platform.window.delegate->windowDidBecomeKey();
  EXPECT_FALSE(isPresented());

  stageText(kShare, "later");
  host_.platform.window.delegate->windowDidBecomeKey();
  EXPECT_THAT(batches(), ElementsAre(Value(List{textOf("later", 5)})));
  EXPECT_TRUE(isPresented());
  EXPECT_EQ(host_.platform.window.presentations, 1);
}

TEST_F(IntakeTest, PublishesFilesAndTextsOfAShareInOneBatch) {
  uiIsReady();
  const fs::path file = makeFile("a", "1");
  host_.delegate->publishNative({{.path = std::nullopt, .text = "x"},
                                 {.path = std::nullopt, .text = ""},
                                 {.path = file.native(), .text = std::nullopt}});

  EXPECT_THAT(batches(), ElementsAre(Value(List{textOf("x", 1), fileOf(file, 1)})));
  EXPECT_FALSE(isPresented());
}

class DragTest : public testing::Test {
 protected:
  DragDestination& view() { return *host_.platform.dropContainer.destination; }
  // "dragActiveChanged" with its argument, "filesDropped" without.
  std::vector<std::string> told() {
    std::vector<std::string> told;
    for (const MethodCall& event : host_.events()) {
      const auto* flag = event.arguments.getIf<bool>();
      told.push_back(event.method + (flag == nullptr ? "" : *flag ? " true" : " false"));
    }
    return told;
  }

  CapturedLog log_;
  RunningHost host_;
};

TEST_F(DragTest, TakesTheFilesAndNotTheFolders) {
  const DraggingInfo drag{{"/x/folder/", "/x/b", "/x/a ä", "/x/caf\xE9"}};

  EXPECT_EQ(view().draggingEntered(drag), DragOperation::kCopy);
  EXPECT_EQ(view().draggingUpdated(drag), DragOperation::kCopy);
  EXPECT_TRUE(view().performDragOperation(drag));

  EXPECT_THAT(told(),
              ElementsAre("dragActiveChanged true", "filesDropped", "dragActiveChanged false"));
  const auto dropped = [](const char* path, const char* name) {
    return Map{{"path", path}, {"name", name}, {"size", std::int64_t{0}}};
  };
  EXPECT_EQ(host_.events()[1].arguments,
            Value(List{dropped("/x/b", "b"), dropped("/x/a ä", "a ä")}));
  EXPECT_EQ(view().draggingUpdated(drag), DragOperation::kNone);
}

TEST_F(DragTest, KeepsWhatWasDroppedUntilItIsReleased) {
  view().draggingEntered({{"/x/a"}});
  view().performDragOperation({{"/x/a"}});
  EXPECT_EQ(host_.platform.securityScopes.held["/x/a"], 1);

  // At once: the bookmark may not even be saved by then.
  host_.call("releasePickedFiles", Map{{"paths", List{"/x/a"}}});
  EXPECT_EQ(host_.platform.securityScopes.held["/x/a"], 0);
  EXPECT_THAT(host_.platform.userDefaults.stringDictionary("pickedFileBookmarks"), IsEmpty());
}

TEST_F(DragTest, StaysIdleOverADragWithoutFiles) {
  for (const DraggingInfo& drag : {DraggingInfo{{"/x/folder/"}}, DraggingInfo{}}) {
    host_.platform.engine.messenger.events.clear();
    EXPECT_EQ(view().draggingEntered(drag), DragOperation::kNone);
    EXPECT_THAT(told(), IsEmpty());
    view().draggingExited();
    EXPECT_FALSE(view().performDragOperation(drag));
    EXPECT_THAT(told(), ElementsAre("dragActiveChanged false", "dragActiveChanged false"));
  }
}

}  // namespace
}  // namespace brevanholt
