#include "platform/linux/LinuxStatusItem.h"

#include "platform/foundation/Log.h"
#include "platform/linux/ThemeColor.h"
#include "platform/linux/TrayPixmaps.h"

#include <gdk/gdkx.h>
#include <gtkmm/icontheme.h>
#include <gtkmm/window.h>

#include <utility>

namespace brevanholt::platform {

LinuxStatusItem::LinuxStatusItem(Bus& sessionBus, std::string applicationIcon,
                                 std::string iconThemePath,
                                 std::function<void(const std::string&)> activationTokenGiven)
    : sessionBus_(sessionBus),
      applicationIcon_(std::move(applicationIcon)),
      activationTokenGiven_(std::move(activationTokenGiven)),
      isOnX11_(GDK_IS_X11_DISPLAY(gdk_display_get_default())) {
  Gtk::IconTheme::get_default()->append_search_path(iconThemePath);
  appearance_.iconThemePath = std::move(iconThemePath);
}

void LinuxStatusItem::setImage(const Image& image) {
  const bool hasDrawing = !std::holds_alternative<Image::Nothing>(image.content);
  appearance_.iconName = hasDrawing ? applicationIcon_ + "-symbolic" : "";
  appearance_.pixmaps = trayPixmaps(image, applicationIcon_, textColorOf(Gtk::Window()));
  showAppearance();
}

void LinuxStatusItem::setToolTip(const std::string& text) {
  if (std::exchange(appearance_.toolTip, text) == text) return;
  showAppearance();
}

void LinuxStatusItem::setAccessibilityLabel(const std::string& text) {
  appearance_.title = text;
  showAppearance();
}

void LinuxStatusItem::setMenu(const Menu& menu) {
  exportedMenu_ = std::make_unique<DBusMenuExporter>(sessionBus_, menu);
  if (isOnX11_) popupMenu_ = std::make_unique<GtkPopupMenu>(menu);
  notifierItem_ = std::make_unique<StatusNotifierItem>(
      sessionBus_, DBusMenuExporter::kPath, !isOnX11_,
      StatusNotifierItem::Events{
          .activated = [this](int x, int y) { popUpAt(x, y); },
          .activationTokenGiven = activationTokenGiven_,
          .watcherChanged = [this](bool isThere) { watcherChanged(isThere); }});
  showAppearance();
}

void LinuxStatusItem::watcherChanged(bool isThere) {
  embeddedIcon_.reset();
  if (isThere) return;
  const bool hasTray = isOnX11_ && XEmbedStatusIcon::hasTray();
  if (!hasTray && !std::exchange(hasWarned_, true)) {
    logWarning("there is no status tray; the status icon waits for one");
  }
  if (!isOnX11_) return;
  embeddedIcon_ = std::make_unique<XEmbedStatusIcon>(appearance_.iconName, appearance_.toolTip,
                                                     [this](int x, int y) { popUpAt(x, y); });
}

void LinuxStatusItem::popUpAt(int x, int y) {
  if (popupMenu_) popupMenu_->popUpAt(x, y);
}

void LinuxStatusItem::showAppearance() {
  if (notifierItem_) notifierItem_->setAppearance(appearance_);
  if (embeddedIcon_) embeddedIcon_->setToolTip(appearance_.toolTip);
}

}  // namespace brevanholt::platform
