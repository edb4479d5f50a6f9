#include "platform/foundation/PlatformError.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

using Status = LoginItem::Status;
namespace fs = std::filesystem;

class AutostartLoginItemTest : public testing::Test {
 protected:
  // A program that writes its arguments to a file beside itself.
  fs::path makeProgram(const std::string& folder) {
    fs::create_directories(home_ / folder);
    fs::path program = home_ / folder / "brevanholt";
    writeFile(program, "#!/bin/sh\nprintf '%s|' \"$@\" >\"$0.started\"\n");
    fs::permissions(program, fs::perms::owner_all);
    return program;
  }
  AutostartLoginItem item(const fs::path& program) {
    return {home_ / "config/autostart", "org.example.App", program};
  }

  TemporaryFolder home_;
  fs::path file_ = home_ / "config/autostart/org.example.App.desktop";
};

TEST_F(AutostartLoginItemTest, IsStartedByTheDesktopFromAnyFolder) {
  for (const char* folder :
       {"plain", "with space", "a \"quoted\" one", "100% sure %u", "$HOME and `pwd`", "back\\slash",
        "it's", "naïve ünïcode", "tab\tand\nline", "semi;colon & co"}) {
    SCOPED_TRACE(folder);
    const fs::path program = makeProgram(folder);
    AutostartLoginItem login = item(program);
    login.registerItem();
    EXPECT_EQ(login.status(), Status::kEnabled);

    const GObjectPointer<GDesktopAppInfo> entry(
        g_desktop_app_info_new_from_filename(file_.c_str()));
    ASSERT_NE(entry, nullptr) << readFile(file_);
    ASSERT_TRUE(g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, nullptr));
    const fs::path started = program.string() + ".started";
    EXPECT_TRUE(spinUntil([&started] { return readFile(started) == "--login-item|"; }))
        << readFile(file_);
  }
}

TEST_F(AutostartLoginItemTest, TellsWhatTheFileSaysAndWritesItAnew) {
  item(makeProgram("before it moved")).registerItem();
  const std::string before = readFile(file_);
  const fs::path program = makeProgram("bin");
  AutostartLoginItem login = item(program);
  login.registerItem();
  const std::string entry = readFile(file_);
  const std::pair<std::string, Status> cases[] = {
      {entry + "X-GNOME-Autostart-enabled=true\n", Status::kEnabled},
      {entry + "X-GNOME-Autostart-enabled=false\n", Status::kRequiresApproval},
      {entry + "Hidden=true\n", Status::kRequiresApproval},
      {entry + "OnlyShowIn=Elsewhere;\n", Status::kRequiresApproval},
      {entry + "TryExec=/nowhere/program\n", Status::kNotFound},
      {before, Status::kNotFound},
      {"no desktop file", Status::kNotFound},
      {"", Status::kNotFound}};
  for (const auto& [content, status] : cases) {
    SCOPED_TRACE(content);
    writeFile(file_, content);
    EXPECT_EQ(login.status(), status);
    login.registerItem();
    EXPECT_EQ(login.status(), Status::kEnabled);
  }
  const auto exec = entry.find("Exec=");
  writeFile(file_,
            std::string(entry).replace(exec, entry.find('\n', exec) - exec, "Exec=brevanholt"));
  EXPECT_EQ(login.status(), Status::kNotFound);
  const std::string path = ::getenv("PATH");
  ::setenv("PATH", (program.parent_path().string() + ":" + path).c_str(), 1);
  EXPECT_EQ(login.status(), Status::kEnabled);
  ::setenv("PATH", path.c_str(), 1);
  fs::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(login.status(), Status::kNotFound);
  login.registerItem();
  EXPECT_EQ(login.status(), Status::kEnabled);
  fs::remove(program);
  EXPECT_EQ(login.status(), Status::kNotFound);
  login.unregisterItem();
  EXPECT_EQ(login.status(), Status::kNotRegistered);
  login.unregisterItem();
}

TEST_F(AutostartLoginItemTest, ThrowsWhereThereCanBeNoFile) {
  writeFile(home_ / "config", "in the way");
  EXPECT_THROW(item(makeProgram("bin")).registerItem(), PlatformError);
  EXPECT_EQ(readFile(home_ / "config"), "in the way");
}

}  // namespace
}  // namespace brevanholt::platform
