#include "platform/linux/menu/DotIcon.h"

#include "platform/linux/menu/Palette.h"

#include <map>
#include <numbers>

#include <cairomm/context.h>
#include <cairomm/surface.h>

namespace brevanholt::platform {
namespace {

constexpr int kSize = 16;
constexpr double kDiameter = 8;
constexpr Rgba kMiddleGrey{.red = 0.5, .green = 0.5, .blue = 0.5, .alpha = 1};

std::vector<std::uint8_t> drawn(SystemColor color) {
  const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_ARGB32, kSize, kSize);
  const auto context = Cairo::Context::create(surface);
  const Rgba paint = colorBeside(color, kMiddleGrey);
  context->set_source_rgba(paint.red, paint.green, paint.blue, paint.alpha);
  context->arc(kSize / 2.0, kSize / 2.0, kDiameter / 2, 0, 2 * std::numbers::pi);
  context->fill();
  std::vector<std::uint8_t> png;
  surface->write_to_png_stream([&png](const unsigned char* data, unsigned int length) {
    png.insert(png.end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
  });
  return png;
}

}  // namespace

const std::vector<std::uint8_t>& dotIcon(SystemColor color) {
  static std::map<SystemColor, std::vector<std::uint8_t>> icons;
  auto found = icons.find(color);
  if (found == icons.end()) found = icons.emplace(color, drawn(color)).first;
  return found->second;
}

}  // namespace brevanholt::platform
