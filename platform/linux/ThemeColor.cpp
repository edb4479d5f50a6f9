#include "platform/linux/ThemeColor.h"

namespace brevanholt::platform {

Rgba textColorOf(const Gtk::Widget& widget) {
  const Gdk::RGBA color = widget.get_style_context()->get_color(Gtk::STATE_FLAG_NORMAL);
  return {color.get_red(), color.get_green(), color.get_blue(), color.get_alpha()};
}

}  // namespace brevanholt::platform
