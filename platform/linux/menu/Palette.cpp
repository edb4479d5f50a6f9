#include "platform/linux/menu/Palette.h"

namespace brevanholt::platform {

bool isLight(const Rgba& color) {
  return color.red + color.green + color.blue > 1.5;
}

Rgba colorBeside(SystemColor color, const Rgba& text) {
  const bool isDark = isLight(text);
  switch (color) {
    case SystemColor::kLabel:
      return text;
    case SystemColor::kSecondaryLabel:
      return {text.red, text.green, text.blue, 0.68};
    case SystemColor::kTertiaryLabel:
      return {text.red, text.green, text.blue, 0.38};
    // The greens, reds and blues of the GNOME palette, each in the shade that stands out.
    case SystemColor::kGreen:
      return isDark ? Rgba{0.34, 0.89, 0.54} : Rgba{0.15, 0.64, 0.41};
    case SystemColor::kRed:
      return isDark ? Rgba{0.96, 0.38, 0.32} : Rgba{0.75, 0.11, 0.16};
    case SystemColor::kBlue:
      return isDark ? Rgba{0.38, 0.63, 0.92} : Rgba{0.10, 0.37, 0.71};
  }
  return text;
}

Rgba textColorOf(const Gtk::Widget& widget) {
  const Gdk::RGBA color = widget.get_style_context()->get_color(Gtk::STATE_FLAG_NORMAL);
  return {color.get_red(), color.get_green(), color.get_blue(), color.get_alpha()};
}

}  // namespace brevanholt::platform
