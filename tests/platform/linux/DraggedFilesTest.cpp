#include "platform/linux/DraggedFiles.h"
#include "platform/linux/FileUri.h"
#include "platform/linux/PathSecurityScopes.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string thisHost() {
  std::string name(256, '\0');
  ::gethostname(name.data(), name.size());
  name.resize(name.find('\0'));
  return name;
}

TEST(DraggedFilesTest, DecodesEachUriOnceAndPassesOverTheRest) {
  const std::string list =
      "# a comment\r\n"
      "file:///gone/with%20space\r\n"
      "file:///gone/100%2525\r\n"
      "https://example.org/a\r\n"
      "file://elsewhere.invalid/gone/b\r\n"
      "file:///gone/not%2Fa%2Fname\r\n"
      "file:///gone/caf%E9\r\n"
      "file://localhost/gone/c\r\n"
      "file://" +
      thisHost() +
      "/gone/d\r\n"
      "file:///gone/two%0Alines\n"
      "\r\n"
      "file:///gone/na\u00EFve";

  EXPECT_THAT(draggedFiles(list).filePaths,
              ElementsAre("/gone/with space", "/gone/100%25", "/gone/caf\xE9", "/gone/c", "/gone/d",
                          "/gone/two\nlines", "/gone/naïve"));
  EXPECT_THAT(draggedFiles(std::string("file:///gone/%00")).filePaths, IsEmpty());
  EXPECT_THAT(draggedFiles(std::string()).filePaths, IsEmpty());
}

TEST(DraggedFilesTest, EndsFoldersWithASlashAndLinksToFoldersToo) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "sub");
  std::filesystem::create_directory_symlink("sub", folder / "link");
  writeFile(folder / "file", "");
  const std::string uri = fileUriOf(folder.path());

  EXPECT_THAT(draggedFiles(uri + "/sub\r\n" + uri + "/sub/\r\n" + uri + "/link\r\n" + uri + "/file")
                  .filePaths,
              ElementsAre(folder / "sub/", folder / "sub/", folder / "link/", folder / "file"));
}

TEST(FileUriTest, BringsEveryNameBack) {
  for (const std::string path : {"/a b", "/100%25 %F", "/two\nlines", "/caf\xE9",
                                 "/it's \"x\" $HOME", "/naïve 🎈", "/a#b?c;d", "/"}) {
    EXPECT_EQ(pathOfFileUri(fileUriOf(path)), path);
  }
}

TEST(PathSecurityScopesTest, CountsWhatIsOpenAndMarksWhatIsThere) {
  const TemporaryFolder folder;
  writeFile(folder / "a", "");
  PathSecurityScopes scopes;
  auto one = scopes.begin(folder / "a");
  const auto other = scopes.begin(folder / "a");
  one.reset();
  EXPECT_EQ(scopes.openScopes(), 1);

  const auto bookmark = scopes.bookmark(folder / "a");
  ASSERT_TRUE(bookmark);
  const auto resolved = scopes.resolve(*bookmark);
  ASSERT_TRUE(resolved);
  EXPECT_EQ(resolved->location, folder / "a");
  EXPECT_FALSE(resolved->isStale);

  EXPECT_FALSE(scopes.bookmark(folder / "gone"));
  EXPECT_FALSE(scopes.resolve("a"));
  EXPECT_FALSE(scopes.resolve(*bookmark + std::string(1, '\0')));
  std::filesystem::remove(folder / "a");
  EXPECT_FALSE(scopes.resolve(*bookmark));
}

}  // namespace
}  // namespace brevanholt::platform
