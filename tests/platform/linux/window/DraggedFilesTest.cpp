#include "platform/gtk/FileUri.h"
#include "platform/linux/window/DraggedFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;

TEST(DraggedFilesTest, DecodesEachUriOnceEndsFoldersWithASlashAndPassesOverTheRest) {
  const TemporaryFolder folder;
  std::filesystem::create_directory_symlink(".", folder / "link");
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
      "file:///gone/na\u00EFve\r\n" +
      fileUriOf(folder / "link");

  EXPECT_THAT(draggedFiles(list).filePaths,
              ElementsAre("/gone/with space", "/gone/100%25", "/gone/caf\xE9", "/gone/c", "/gone/d",
                          "/gone/two\nlines", "/gone/naïve", folder / "link/"));
}

}  // namespace
}  // namespace brevanholt::platform
