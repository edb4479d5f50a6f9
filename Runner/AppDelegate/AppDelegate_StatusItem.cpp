#include "Runner/AppDelegate/AppDelegate.h"

#include <algorithm>

namespace brevanholt {

using platform::Image;
using platform::List;
using platform::Map;
using platform::Rectangle;
using platform::Value;

namespace {

constexpr double kIconWidth = 22;
constexpr double kIconHeight = 18;
// The drawing inside the logo, without the margins around it.
constexpr Rectangle kLogoDrawing{.x = 68, .y = 110, .width = 376, .height = 292};
constexpr Rectangle kIconAlignment{.x = -3, .y = -2, .width = kIconWidth, .height = kIconHeight};
constexpr const char* kLogo =
    "App.framework/Resources/flutter_assets/assets/images/brevanholt_logo.png";

// The largest copy of `source` that fits the icon, in its middle.
Rectangle fittedIntoIcon(const Rectangle& source) {
  const double scale = std::min(kIconWidth / source.width, kIconHeight / source.height);
  const double width = source.width * scale;
  const double height = source.height * scale;
  return {.x = (kIconWidth - width) * 0.5,
          .y = (kIconHeight - height) * 0.5,
          .width = width,
          .height = height};
}

}  // namespace

void AppDelegate::configureDesktopStatusItem() {
  platform::StatusItem& item = services_.statusItem;
  item.setImage(desktopStatusIcon());
  item.setToolTip("Brevanholt");
  item.setAccessibilityLabel("Brevanholt");
  item.setMenu(statusMenuController_.menu());
  statusMenuController_.onOpen = lifetime_.bind([this] { showMainWindow(); });
  statusMenuController_.onWake = lifetime_.bind([this] { requestDiscoveryRecovery(); });
  statusMenuController_.onQuit = [&application = services_.application] {
    application.terminate();
  };
}

Image AppDelegate::desktopStatusIcon() const {
  Image icon{.width = kIconWidth,
             .height = kIconHeight,
             .content = Image::Nothing{},
             .alignment = {},
             .isTemplate = true};
  const std::filesystem::path& frameworks = services_.bundleInfo.privateFrameworks;
  if (!frameworks.empty() && services_.images.isPicture(frameworks / kLogo)) {
    icon.content = Image::PictureDrawing{.picture = frameworks / kLogo,
                                         .source = kLogoDrawing,
                                         .destination = fittedIntoIcon(kLogoDrawing)};
    icon.alignment = kIconAlignment;
  } else if (services_.images.hasApplicationIcon()) {
    icon.content = Image::ApplicationIcon{};
  }
  return icon;
}

void AppDelegate::updateDesktopStatus(const Map& state) {
  static const List kNone;
  const Value* recent = state.find("recentTransfers");
  const auto* recentList = recent != nullptr ? recent->getIf<List>() : nullptr;
  const Value* visible = state.find("visible");
  const auto* isVisible = visible != nullptr ? visible->getIf<bool>() : nullptr;
  const Value* active = state.find("activeTransfer");

  statusMenuController_.update(isVisible == nullptr || *isVisible, active,
                               recentList != nullptr ? *recentList : kNone);
  const auto transfer = DesktopTransferSnapshot::parse(active);
  services_.statusItem.setToolTip(transfer ? "Brevanholt — " + transfer->progressLabel
                                           : "Brevanholt");
}

}  // namespace brevanholt
