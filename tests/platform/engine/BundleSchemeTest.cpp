#include "platform/engine/web/BundleScheme.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

TEST(BundleSchemeTest, ServesOnlyWhatLiesInTheBundle) {
  const TemporaryFolder folder;
  fs::create_directories(folder / "bundle/engine");
  fs::create_directories(folder / "bundle-2");
  writeFile(folder / "bundle/index.html", "index");
  writeFile(folder / "bundle/engine/a b.js", "code");
  writeFile(folder / "bundle-2/secret", "secret");
  fs::create_symlink(folder / "bundle-2/secret", folder / "bundle/link");
  fs::create_symlink("index.html", folder / "bundle/inside");
  const BundleScheme scheme(folder / "bundle");

  EXPECT_EQ(scheme.fileFor("/"), fs::canonical(folder / "bundle/index.html"));
  EXPECT_EQ(scheme.fileFor("/engine/a%20b.js"), fs::canonical(folder / "bundle/engine/a b.js"));
  EXPECT_TRUE(scheme.fileFor("/inside"));
  for (const char* path :
       {"/none", "/engine", "/link", "/../bundle-2/secret", "/%2e%2e/bundle-2/secret",
        "//etc/passwd", "/%2Fetc/passwd", "index.html", "", "/a%00b", "/%zz"}) {
    EXPECT_FALSE(scheme.fileFor(path)) << path;
  }
}

TEST(BundleSchemeTest, KnowsItsOrigin) {
  EXPECT_TRUE(BundleScheme::isInBundle("brevanholt-ui://bundle/index.html"));
  for (const char* uri : {"brevanholt-ui://bundle.example/", "brevanholt-ui://other/",
                          "https://bundle/", "about:blank", "file:///etc/passwd"}) {
    EXPECT_FALSE(BundleScheme::isInBundle(uri)) << uri;
  }
}

}  // namespace
}  // namespace brevanholt::platform
