#include "platform/gtk/FileUri.h"
#include "platform/linux/window/DraggedFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;

TEST(DraggedFilesTest, DecodesEachUriOnceAndPassesOverTheRest) {
  const std::string list =
      "# a comment\r\n"
      "file:///gone/with%20space\r\n"
      "file:///gone/100%2525\r\n"
      "https://example.org/a\r\n"
      "file://elsewhere.invalid/gone/b\r\n"
      "file:///gone/not%2Fa%2Fname\r\n"
      "file:///gone/%00\r\n"
      "file:///gone/caf%E9\r\n"
      "file://localhost/gone/c\r\n"
      "file://" +
      std::string(g_get_host_name()) +
      "/gone/d\r\n"
      "file:///gone/two%0Alines\n"
      "\r\n"
      "file:///gone/na\u00EFve";

  EXPECT_THAT(draggedFiles(list).filePaths,
              ElementsAre("/gone/with space", "/gone/100%25", "/gone/caf\xE9", "/gone/c", "/gone/d",
                          "/gone/two\nlines", "/gone/naïve"));
}

TEST(DraggedFilesTest, BringsEveryNameBackAndEndsFoldersAndLinksToThemWithASlash) {
  const TemporaryFolder folder;
  const std::string odd = "100%25 #?;\xE9\n\"$HOME\"";
  std::filesystem::create_directory(folder / "sub");
  std::filesystem::create_directory_symlink("sub", folder / "link");
  writeFile(folder / odd, "");
  std::string list;
  for (const std::string& name : {std::string("sub"), std::string("link"), odd}) {
    list += fileUriOf(folder / name) + "\r\n";
  }
  EXPECT_THAT(draggedFiles(list).filePaths,
              ElementsAre(folder / "sub/", folder / "link/", folder / odd));
}

}  // namespace
}  // namespace brevanholt::platform
