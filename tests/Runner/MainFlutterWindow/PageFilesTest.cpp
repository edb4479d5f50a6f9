#include "tests/Runner/HostTest.h"

#include <sys/stat.h>

namespace brevanholt {
namespace {

using namespace platform;

class PageFilesTest : public HostTest {
 protected:
  // Where the page may read or change, as "root|below", or "refused".
  std::string read(const std::string& path) {
    return said([&] { return platform_.engine.access->toRead(path); });
  }
  std::string change(const std::string& path) {
    return said([&] { return platform_.engine.access->toChange(path); });
  }

 private:
  template <class Ask>
  static std::string said(Ask ask) {
    try {
      const Reach reach = ask();
      return reach.root.native() + "|" + reach.below.native();
    } catch (const PlatformError&) {
      return "refused";
    }
  }
};

TEST_F(PageFilesTest, ChangesOnlyWhatIsInTheFoldersOfTheUi) {
  const std::string support = platform_.folders.applicationSupport / "Brevanholt";
  EXPECT_EQ(change(support + "/settings.json"), support + "|settings.json");
  const std::string scratch = wordsOf(call("temporaryReceivePath", Map{{"name", "x"}}));
  EXPECT_EQ(change(scratch), std::filesystem::path(scratch).parent_path().native() + "|" +
                                 std::filesystem::path(scratch).filename().native());
  const std::string home = platform_.home.path();
  for (const std::string& path :
       {support, support + "/", support + "x/y", support + "/../x", support + "//x",
        support + "/./x", home + "/.bashrc", std::string("/"), std::string("x")}) {
    EXPECT_EQ(change(path), "refused") << path;
  }
  EXPECT_EQ(read(support + "/"), support + "|");
  EXPECT_EQ(change(home + "/.bashrc"), "refused");
  EXPECT_EQ(log_.count(LogLevel::kWarning, "/.bashrc” may not be used"), 1);
}

TEST_F(PageFilesTest, DoesNotReadWhatWasOnlyPublished) {
  const std::string home = platform_.home.path();
  const std::string support = platform_.folders.applicationSupport / "Brevanholt";
  std::filesystem::create_directories(support);
  std::filesystem::create_symlink(home, support + "/link");
  for (const std::string& path : {home + "/secret", support + "/link/secret"}) {
    writeFile(home + "/secret", "not written by the UI");
    const std::string placed =
        wordsOf(call("publishReceivedFile", Map{{"path", path}, {"name", "x"}}));
    EXPECT_TRUE(std::filesystem::exists(placed)) << placed;
    EXPECT_EQ(read(placed), "refused");
  }
}

TEST_F(PageFilesTest, ReadsWhatIsHandedInUntilItIsTakenBack) {
  EXPECT_EQ(read("/x/folder/in/it"), "refused");
  const auto answer = begin("pickFiles");
  platform_.openPanel.answer({"/x/a", "/x/folder"});
  finish(answer);
  EXPECT_EQ(read("/x/a"), "/x/a|");
  EXPECT_EQ(read("/x/folder/in/it"), "/x/folder|in/it");
  EXPECT_EQ(read("/x/folder/../b"), "refused");
  EXPECT_EQ(read("/x/ab"), "refused");
  EXPECT_EQ(change("/x/a"), "refused");
  call("releasePickedFiles", Map{{"paths", List{"/x/folder/in/it"}}});
  EXPECT_EQ(read("/x/folder/in/it"), "refused");
}

TEST_F(PageFilesTest, ReadsTheVeryFileThatWasReceived) {
  const std::string scratch = wordsOf(call("temporaryReceivePath", Map{{"name", "x"}}));
  writeFile(scratch, "x");
  const std::string placed =
      wordsOf(call("publishReceivedFile", Map{{"path", scratch}, {"name", "letter.txt"}}));
  EXPECT_EQ(read(placed), placed + "|");
  const auto known = platform_.engine.access->toRead(placed).identity;
  std::filesystem::rename(placed, placed + ".moved");
  writeFile(placed, "another");
  struct stat now {};
  ASSERT_EQ(::stat(placed.c_str(), &now), 0);
  EXPECT_NE(known, std::pair(now.st_dev, now.st_ino));
  EXPECT_EQ(read(placed + ".moved"), "refused");
}

TEST_F(PageFilesTest, PublishesManyOfWhichOneFails) {
  const std::string scratch = wordsOf(call("temporaryReceivePath", Map{{"name", "x"}}));
  writeFile(scratch, "content");
  std::optional<std::vector<Result<std::filesystem::path>>> places;
  platform_.engine.access->publish(
      {{.path = scratch, .relativePath = "d/full"},
       {.path = std::nullopt, .relativePath = "d/../empty"},
       {.path = std::nullopt, .relativePath = "d/full", .modified = 1'600'000'000'123},
       {.path = scratch, .relativePath = "d/gone"}},
      [&](auto outcome) { places = std::move(outcome); });
  platform_.mainQueue.runUntil([&] { return places.has_value(); });

  EXPECT_EQ(readFile(places->at(0).value()), "content");
  EXPECT_EQ(places->at(1).error().message(), "The received path is invalid.");
  const std::string made = places->at(2).value();
  EXPECT_TRUE(made.ends_with("/Brevanholt/d/full (1)")) << made;
  EXPECT_EQ(readFile(made), "");
  EXPECT_EQ(read(made), made + "|");
  struct stat found {};
  ASSERT_EQ(::stat(made.c_str(), &found), 0);
  EXPECT_EQ(found.st_mtim.tv_sec, 1'600'000'000);
  EXPECT_EQ(places->at(3).error().errorNumber(), ENOENT);
}

}  // namespace
}  // namespace brevanholt
