#include "platform/linux/tray/GdkImages.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtkmm/icontheme.h>

namespace brevanholt::platform {

bool GdkImages::isPicture(const std::filesystem::path& path) const {
  return gdk_pixbuf_get_file_info(path.c_str(), nullptr, nullptr) != nullptr;
}

bool GdkImages::hasApplicationIcon() const {
  return Gtk::IconTheme::get_default()->has_icon(applicationIcon_);
}

}  // namespace brevanholt::platform
