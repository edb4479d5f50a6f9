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
  for (const char* name : {"bundle/index.html", "bundle/engine/a b.js", "bundle-2/secret"}) {
    writeFile(folder / name, name);
  }
  fs::create_symlink(folder / "bundle-2/secret", folder / "bundle/link");
  const BundleScheme scheme(folder / "bundle", BundleScheme::Source::kFiles);

  EXPECT_EQ(scheme.fileFor("/"), fs::canonical(folder / "bundle/index.html"));
  EXPECT_EQ(scheme.fileFor("/engine/a%20b.js"), fs::canonical(folder / "bundle/engine/a b.js"));
  for (const char* path :
       {"/none", "/engine", "/link", "/../bundle-2/secret", "/%2e%2e/bundle-2/secret",
        "//etc/passwd", "/%2Fetc/passwd", "index.html", "", "/a%00b", "/%zz"}) {
    EXPECT_FALSE(scheme.fileFor(path)) << path;
  }
}

}  // namespace
}  // namespace brevanholt::platform
