#include "platform/linux/tray/TrayPixmaps.h"

#include "platform/foundation/Log.h"

#include <gtkmm/icontheme.h>

#include <array>
#include <cstring>
#include <numbers>

#include <cairomm/context.h>
#include <cairomm/surface.h>
#include <gdkmm/general.h>
#include <gdkmm/pixbuf.h>

namespace brevanholt::platform {
namespace {

constexpr std::array kSizes{22, 32, 48};

using Context = Cairo::RefPtr<Cairo::Context>;

void drawPixbuf(const Context& context, const Glib::RefPtr<Gdk::Pixbuf>& picture,
                const Rectangle& source, const Rectangle& destination) {
  context->rectangle(destination.x, destination.y, destination.width, destination.height);
  context->clip();
  context->translate(destination.x, destination.y);
  context->scale(destination.width / source.width, destination.height / source.height);
  Gdk::Cairo::set_source_pixbuf(context, picture, -source.x, -source.y);
  Cairo::SurfacePattern(context->get_source()->cobj(), false).set_filter(Cairo::FILTER_BEST);
  context->paint();
}

// Draws the image's content in its own coordinates.
struct ContentDrawing {
  const Context& context;
  const Image& image;
  const std::string& applicationIcon;

  void operator()(const Image::Nothing&) const {}
  void operator()(const Image::PictureDrawing& drawing) const {
    drawPixbuf(context, Gdk::Pixbuf::create_from_file(drawing.picture.string()), drawing.source,
               drawing.destination);
  }
  void operator()(const Image::ApplicationIcon&) const {
    const auto icon = Gtk::IconTheme::get_default()->load_icon(applicationIcon, 64);
    drawPixbuf(context, icon,
               {.x = 0,
                .y = 0,
                .width = static_cast<double>(icon->get_width()),
                .height = static_cast<double>(icon->get_height())},
               {.x = 0, .y = 0, .width = image.width, .height = image.height});
  }
};

// Behind what is drawn, a thin edge that is dark around a light colour and light around a dark one:
// the panel's colour is a guess, and on the other one the shape still shows.
void drawEdge(const Context& context, const Cairo::RefPtr<Cairo::ImageSurface>& surface,
              const Rgba& color, int size) {
  const auto shape = Cairo::ImageSurface::create(Cairo::FORMAT_ARGB32, size, size);
  const auto copy = Cairo::Context::create(shape);
  copy->set_source(surface, 0, 0);
  copy->paint();
  const double width = size / 28.0;
  const double shade = isLight(color) ? 0 : 1;
  context->set_operator(Cairo::OPERATOR_DEST_OVER);
  context->set_source_rgba(shade, shade, shade, 0.3);
  for (const double x : {-width, 0.0, width}) {
    for (const double y : {-width, 0.0, width}) context->mask(shape, x, y);
  }
}

// At the lower right, with a gap around it.
void drawDot(const Context& context, const Rgba& color, int size) {
  constexpr double kCenter = 12.6 / 16;
  constexpr double kRadius = 3.3 / 16;
  constexpr double kGap = 1.0 / 16;
  const auto circle = [&context, size](double radius) {
    context->arc(kCenter * size, kCenter * size, radius * size, 0, 2 * std::numbers::pi);
    context->fill();
  };
  context->set_operator(Cairo::OPERATOR_CLEAR);
  circle(kRadius + kGap);
  context->set_operator(Cairo::OPERATOR_OVER);
  context->set_source_rgba(color.red, color.green, color.blue, color.alpha);
  circle(kRadius);
}

TrayPixmap drawn(const Image& image, const std::string& applicationIcon, const Rgba& color,
                 bool needsAttention, int size) {
  const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_ARGB32, size, size);
  const Context context = Cairo::Context::create(surface);
  const double scale = size / std::max(image.width, image.height);
  context->save();
  context->translate((size - image.width * scale) / 2, (size - image.height * scale) / 2);
  context->scale(scale, scale);
  std::visit(ContentDrawing{context, image, applicationIcon}, image.content);
  context->restore();
  if (image.isTemplate) {
    context->set_operator(Cairo::OPERATOR_IN);
    context->set_source_rgba(color.red, color.green, color.blue, color.alpha);
    context->paint();
  }
  if (needsAttention) drawDot(context, color, size);
  if (image.isTemplate) drawEdge(context, surface, color, size);
  surface->flush();

  // Cairo's words are alpha first in memory order of this machine, and premultiplied; a tray takes
  // them big-endian and straight.
  TrayPixmap pixmap{.width = size, .height = size, .pixels = {}};
  for (int y = 0; y < size; ++y) {
    const unsigned char* row = surface->get_data() + std::ptrdiff_t{y} * surface->get_stride();
    for (int x = 0; x < size; ++x) {
      std::uint32_t word = 0;
      std::memcpy(&word, row + std::ptrdiff_t{x} * 4, sizeof(word));
      const std::uint32_t alpha = word >> 24U;
      const auto straight = [alpha](std::uint32_t channel) {
        return static_cast<std::uint8_t>(alpha == 0 ? 0 : std::min(255U, channel * 255U / alpha));
      };
      pixmap.pixels.insert(pixmap.pixels.end(),
                           {static_cast<std::uint8_t>(alpha), straight(word >> 16U & 0xFFU),
                            straight(word >> 8U & 0xFFU), straight(word & 0xFFU)});
    }
  }
  return pixmap;
}

}  // namespace

std::vector<TrayPixmap> trayPixmaps(const Image& image, const std::string& applicationIcon,
                                    const Rgba& color, bool needsAttention) {
  std::vector<TrayPixmap> pixmaps;
  try {
    for (const int size : kSizes) {
      pixmaps.push_back(drawn(image, applicationIcon, color, needsAttention, size));
    }
  } catch (const Glib::Error& error) {
    logWarning(std::string("the status icon cannot be drawn: ") + error.what().c_str());
    pixmaps.clear();
  }
  return pixmaps;
}

}  // namespace brevanholt::platform
