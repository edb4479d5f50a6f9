#include "platform/linux/tray/XEmbedStatusIcon.h"

#include <gdk/gdkx.h>

namespace brevanholt::platform {

// GTK has deprecated its only client of this protocol, and kept it.
G_GNUC_BEGIN_IGNORE_DEPRECATIONS

XEmbedStatusIcon::XEmbedStatusIcon(const std::string& iconName, const std::string& toolTip,
                                   std::function<void(int, int)> activated)
    : activated_(std::move(activated)),
      icon_(gtk_status_icon_new_from_icon_name(iconName.c_str())) {
  gtk_status_icon_set_title(icon_.get(), "Brevanholt");
  setToolTip(toolTip);
  g_signal_connect(icon_.get(), "activate", G_CALLBACK(+[](GtkStatusIcon*, gpointer self) {
                     static_cast<XEmbedStatusIcon*>(self)->clicked();
                   }),
                   this);
  g_signal_connect(icon_.get(), "popup-menu",
                   G_CALLBACK(+[](GtkStatusIcon*, guint, guint, gpointer self) {
                     static_cast<XEmbedStatusIcon*>(self)->clicked();
                   }),
                   this);
}

XEmbedStatusIcon::~XEmbedStatusIcon() {
  g_signal_handlers_disconnect_by_data(icon_.get(), this);
  gtk_status_icon_set_visible(icon_.get(), FALSE);
}

void XEmbedStatusIcon::setIcon(const std::string& name) {
  if (name == gtk_status_icon_get_icon_name(icon_.get())) return;
  gtk_status_icon_set_from_icon_name(icon_.get(), name.c_str());
}

void XEmbedStatusIcon::setToolTip(const std::string& text) {
  gtk_status_icon_set_tooltip_text(icon_.get(), text.c_str());
}

bool XEmbedStatusIcon::hasTray() {
  GdkDisplay* display = gdk_display_get_default();
  if (!GDK_IS_X11_DISPLAY(display)) return false;
  const std::string name = "_NET_SYSTEM_TRAY_S" + std::to_string(gdk_x11_get_default_screen());
  Display* connection = GDK_DISPLAY_XDISPLAY(display);
  return XGetSelectionOwner(connection, XInternAtom(connection, name.c_str(), False)) != None;
}

void XEmbedStatusIcon::clicked() const {
  GdkRectangle area{};
  gtk_status_icon_get_geometry(icon_.get(), nullptr, &area, nullptr);
  activated_(area.x, area.y + area.height);
}

G_GNUC_END_IGNORE_DEPRECATIONS

}  // namespace brevanholt::platform
