#include "platform/linux/tray/PanelStyle.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

TEST(PanelStyleTest, KnowsWhoColorsNamedIconsAndWhoseBarsAreDark) {
  EXPECT_TRUE(panelStyle("ubuntu:GNOME").colorsNamedIcons);
  EXPECT_FALSE(panelStyle("KDE").isDark);
  EXPECT_TRUE(panelStyle("sway").isDark);
  EXPECT_TRUE(panelStyle("LXQt").isDark);
  EXPECT_FALSE(panelStyle("MATE").isDark);
  EXPECT_FALSE(panelStyle("MATE").colorsNamedIcons);
  EXPECT_FALSE(panelStyle("").isDark);
}

}  // namespace
}  // namespace brevanholt::platform
