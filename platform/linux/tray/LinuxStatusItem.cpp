#include "platform/linux/tray/LinuxStatusItem.h"

#include "platform/foundation/Log.h"
#include "platform/linux/menu/Palette.h"
#include "platform/linux/tray/TrayPixmaps.h"

#include <gdk/gdkx.h>
#include <gtkmm/icontheme.h>
#include <gtkmm/settings.h>
#include <gtkmm/window.h>

#include <utility>

namespace brevanholt::platform {

namespace {

// A program of X11 on a Wayland desktop knows neither where the panel is nor where the pointer.
bool isXwayland(GdkDisplay* display) {
  GdkMonitor* monitor = gdk_display_get_monitor(display, 0);
  const char* output = monitor != nullptr ? gdk_monitor_get_model(monitor) : nullptr;
  return output != nullptr && g_str_has_prefix(output, "XWAYLAND") != FALSE;
}

bool canPlaceWindows(GdkDisplay* display) {
  return GDK_IS_X11_DISPLAY(display) && !isXwayland(display);
}

}  // namespace

LinuxStatusItem::LinuxStatusItem(Bus& sessionBus, Options options, InputEvents events)
    : sessionBus_(sessionBus),
      applicationIcon_(std::move(options.applicationIcon)),
      inputEvents_(std::move(events)),
      panelStyle_(panelStyle(options.currentDesktop)),
      placesWindows_(canPlaceWindows(gdk_display_get_default())),
      ownPictures_(std::move(options.ownPictures)) {
  Gtk::IconTheme::get_default()->append_search_path(options.iconThemePath);
  appearance_.iconThemePath = std::move(options.iconThemePath);
  const auto settings = Gtk::Settings::get_default();
  const auto redraw = [this] { drawImage(); };
  themeConnections_ = {
      settings->property_gtk_theme_name().signal_changed().connect(redraw),
      settings->property_gtk_application_prefer_dark_theme().signal_changed().connect(redraw)};
}

LinuxStatusItem::~LinuxStatusItem() {
  for (auto& connection : themeConnections_) connection.disconnect();
}

void LinuxStatusItem::setImage(const Image& image) {
  image_ = image;
  drawImage();
}

void LinuxStatusItem::drawImage() {
  const bool hasDrawing = !std::holds_alternative<Image::Nothing>(image_.content);
  const bool needsAttention = appearance_.needsAttention;
  symbolicIcon_ =
      hasDrawing ? applicationIcon_ + (needsAttention ? "-attention-symbolic" : "-symbolic") : "";
  const bool isNamed = panelStyle_.colorsNamedIcons && isOwnIcon();
  appearance_.iconName = isNamed ? symbolicIcon_ : "";
  if (!isNamed) {
    appearance_.pixmaps =
        trayPixmaps(image_, applicationIcon_, panelColor(panelStyle_, textColorOf(Gtk::Window())),
                    needsAttention);
  }
  showAppearance();
}

bool LinuxStatusItem::isOwnIcon() const {
  const auto* drawing = std::get_if<Image::PictureDrawing>(&image_.content);
  return drawing == nullptr || drawing->picture.native().starts_with(ownPictures_.native());
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
  exportedMenu_ = std::make_unique<DBusMenuExporter>(sessionBus_, menu, inputEvents_.clicked);
  if (placesWindows_) popupMenu_ = std::make_unique<GtkPopupMenu>(menu);
  notifierItem_ = std::make_unique<StatusNotifierItem>(
      sessionBus_, DBusMenuExporter::kPath, !placesWindows_,
      StatusNotifierItem::Events{.activated = [this](int x, int y) { popUpAt(x, y); },
                                 .activationTokenGiven = inputEvents_.activationTokenGiven,
                                 .shownChanged = [this](bool isShown) { shownChanged(isShown); }});
  showAppearance();
}

void LinuxStatusItem::shownChanged(bool isShown) {
  embeddedIcon_.reset();
  isInNotifierTray_ = isShown;
  if (isShown) return;
  const bool hasTray = placesWindows_ && XEmbedStatusIcon::hasTray();
  if (!hasTray && !std::exchange(hasWarned_, true)) {
    logWarning("there is no status tray; the status icon waits for one");
  }
  if (!placesWindows_) return;
  embeddedIcon_ = std::make_unique<XEmbedStatusIcon>(symbolicIcon_, appearance_.toolTip,
                                                     [this](int x, int y) { popUpAt(x, y); });
}

void LinuxStatusItem::setNeedsAttention(bool needs) {
  if (std::exchange(appearance_.needsAttention, needs) != needs) drawImage();
}

bool LinuxStatusItem::isShown() const {
  return isInNotifierTray_ || (placesWindows_ && XEmbedStatusIcon::hasTray());
}

void LinuxStatusItem::popUpAt(int x, int y) {
  if (popupMenu_) popupMenu_->popUpNear(x, y);
}

void LinuxStatusItem::showAppearance() {
  if (notifierItem_) notifierItem_->setAppearance(appearance_);
  if (!embeddedIcon_) return;
  embeddedIcon_->setIcon(symbolicIcon_);
  embeddedIcon_->setToolTip(appearance_.toolTip);
}

}  // namespace brevanholt::platform
