#include "preview/PreviewMaker.h"

#include "preview/ImageFormat.h"
#include "preview/IsoMedia.h"
#include "preview/PngFile.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace brevanholt::preview {
namespace {

// As RGBA this is just under 1 GiB.
constexpr std::uint64_t kMostPixels = 256'000'000;
constexpr std::size_t kPiece = 64 << 10;

template <auto free>
struct FreeWith {
  template <class T>
  void operator()(T* pointer) const {
    free(pointer);
  }
};
using Loader = std::unique_ptr<GdkPixbufLoader, FreeWith<g_object_unref>>;
using Pixbuf = std::unique_ptr<GdkPixbuf, FreeWith<g_object_unref>>;

// The names of the gdk-pixbuf loaders that read a format, the better one first.
std::vector<const char*> loaderNames(ImageFormat format) {
  switch (format) {
    case ImageFormat::kJpeg:
      return {"jpeg"};
    case ImageFormat::kPng:
      return {"png"};
    case ImageFormat::kGif:
      return {"gif"};
    case ImageFormat::kBmp:
      return {"bmp"};
    case ImageFormat::kTiff:
      return {"tiff"};
    case ImageFormat::kWebp:
      return {"webp"};
    case ImageFormat::kAvif:
      return {"avif", "heif/avif"};
    case ImageFormat::kHeif:
      return {"heif/avif"};
    case ImageFormat::kSvg:
      return {"svg"};
  }
  return {};
}

// Null where none is installed.
Loader loaderFor(ImageFormat format) {
  for (const char* name : loaderNames(format)) {
    if (Loader loader{gdk_pixbuf_loader_new_with_type(name, nullptr)}) return loader;
  }
  return nullptr;
}

int scaledDown(int length, int longest, int maximum) {
  const double exact = static_cast<double>(length) * maximum / longest;
  return std::max(1, static_cast<int>(std::lround(exact)));
}

// Told the size that the file announces, before there is memory for it.
struct SizeDecision {
  int maximum;
  bool isRefused = false;

  void decide(GdkPixbufLoader* loader, int width, int height) {
    isRefused =
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) > kMostPixels;
    if (isRefused) return gdk_pixbuf_loader_set_size(loader, 0, 0);
    const int longest = std::max(width, height);
    if (longest <= maximum) return;
    gdk_pixbuf_loader_set_size(loader, scaledDown(width, longest, maximum),
                               scaledDown(height, longest, maximum));
  }
};

// In pieces: the loader of GIF moves what it has not read yet to the front again and again.
bool feed(GdkPixbufLoader* loader, ByteSpan file) {
  while (!file.empty()) {
    const ByteSpan piece = from(file, 0, kPiece);
    if (gdk_pixbuf_loader_write(loader, piece.data(), piece.size(), nullptr) == FALSE) return false;
    file = from(file, piece.size());
  }
  return true;
}

// Before anything is decoded, where the loader tells too late: after decoding, or, for PNG, after
// having unpacked all of the piece that it was fed.
std::uint64_t announcedPixels(ByteSpan file, ImageFormat format) {
  switch (format) {
    case ImageFormat::kPng: {
      const auto png = PngFile::parse(file);
      return png ? std::uint64_t{png->width} * png->height : 0;
    }
    case ImageFormat::kAvif:
    case ImageFormat::kHeif:
      return mostAnnouncedPixels(file);
    default:
      return 0;
  }
}

std::variant<Pixbuf, ExitStatus> decode(ByteSpan file, ImageFormat format, int maximum) {
  if (announcedPixels(file, format) > kMostPixels) return kRefused;
  SizeDecision size{.maximum = maximum};
  const Loader loader = loaderFor(format);
  if (!loader) return kNotAnImage;
  g_signal_connect(loader.get(), "size-prepared",
                   G_CALLBACK(+[](GdkPixbufLoader* self, int width, int height,
                                  SizeDecision* told) { told->decide(self, width, height); }),
                   &size);
  const bool isRead = feed(loader.get(), file);
  const bool isComplete = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
  if (size.isRefused) return kRefused;
  GdkPixbuf* picture = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (!isRead || !isComplete || picture == nullptr) return kDamaged;
  Pixbuf upright(gdk_pixbuf_apply_embedded_orientation(picture));
  if (!upright) return kDamaged;
  return upright;
}

std::string optionOf(GdkPixbuf* picture, const char* name) {
  const char* value = gdk_pixbuf_get_option(picture, name);
  return value != nullptr ? value : "";
}

// Thumbnailers may write fractions of the second.
bool belongsTo(GdkPixbuf* thumbnail, const ThumbnailOrigin& origin) {
  return optionOf(thumbnail, "tEXt::Thumb::URI") == origin.uri &&
         std::strtoll(optionOf(thumbnail, "tEXt::Thumb::MTime").c_str(), nullptr, 10) ==
             origin.modified;
}

// Compressed little: a preview is shown once, and compressing well takes longer than decoding.
std::optional<std::string> encodePng(GdkPixbuf* picture) {
  char* buffer = nullptr;
  gsize size = 0;
  if (gdk_pixbuf_save_to_buffer(picture, &buffer, &size, "png", nullptr, "compression", "1",
                                nullptr) == FALSE) {
    return std::nullopt;
  }
  const std::unique_ptr<char, FreeWith<g_free>> owned(buffer);
  return std::string(buffer, size);
}

}  // namespace

std::variant<std::string, ExitStatus> makePreview(ByteSpan file, const PreviewRequest& request) {
  const auto format = formatOf(file);
  if (!format) return kNotAnImage;
  if (!isWhole(*format, file)) return kDamaged;
  const auto decoded = decode(file, *format, request.maximumDimension);
  if (const auto* failure = std::get_if<ExitStatus>(&decoded)) return *failure;
  GdkPixbuf* picture = std::get<Pixbuf>(decoded).get();
  if (request.thumbnailOf && !belongsTo(picture, *request.thumbnailOf)) return kForeign;
  auto png = encodePng(picture);
  if (!png) return kDamaged;
  return *std::move(png);
}

}  // namespace brevanholt::preview
