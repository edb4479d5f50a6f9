#include "platform/foundation/PlatformError.h"
#include "platform/linux/AutostartLoginItem.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SmallDisk.h"

#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

using Status = LoginItem::Status;
namespace fs = std::filesystem;

class AutostartLoginItemTest : public testing::Test {
 protected:
  // A program that leaves its arguments beside itself.
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
  void append(const std::string& line) { writeFile(file_, readFile(file_) + line + "\n"); }

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

TEST_F(AutostartLoginItemTest, TellsWhatTheFileSays) {
  AutostartLoginItem login = item(makeProgram("bin"));
  EXPECT_EQ(login.status(), Status::kNotRegistered);
  login.registerItem();
  EXPECT_EQ(login.status(), Status::kEnabled);
  append("X-GNOME-Autostart-enabled=true");
  EXPECT_EQ(login.status(), Status::kEnabled);

  for (const char* line : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
    login.registerItem();
    append(line);
    EXPECT_EQ(login.status(), Status::kRequiresApproval) << line;
    login.registerItem();
    EXPECT_EQ(login.status(), Status::kEnabled) << "registered again after " << line;
  }
  writeFile(file_, "no desktop file");
  EXPECT_EQ(login.status(), Status::kNotFound);
  writeFile(file_, "");
  EXPECT_EQ(login.status(), Status::kNotFound);

  login.unregisterItem();
  EXPECT_EQ(login.status(), Status::kNotRegistered);
  EXPECT_FALSE(fs::exists(file_));
  login.unregisterItem();
}

TEST_F(AutostartLoginItemTest, RepairsTheCommandAfterTheProgramMoved) {
  const fs::path before = makeProgram("before");
  item(before).registerItem();
  AutostartLoginItem after = item(makeProgram("after"));
  EXPECT_EQ(after.status(), Status::kNotFound);
  after.registerItem();
  EXPECT_EQ(after.status(), Status::kEnabled);
  EXPECT_EQ(item(before).status(), Status::kNotFound);

  fs::remove(home_ / "after/brevanholt");
  EXPECT_EQ(after.status(), Status::kNotFound);
}

}  // namespace
}  // namespace brevanholt::platform
