#include "preview/PreviewMaker.h"

#include "preview/BmpFile.h"
#include "preview/ExifOrientation.h"
#include "preview/ImageFormat.h"
#include "preview/IsoMedia.h"
#include "preview/PngFile.h"
#include "preview/TiffFile.h"

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
constexpr guint32 kUndecoded = 0x80808000;  // grey, or transparent where the image has alpha

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
// Whether the loader read all of it without an error.
bool feed(GdkPixbufLoader* loader, ByteSpan file) {
  while (!file.empty()) {
    const ByteSpan piece = from(file, 0, kPiece);
    if (gdk_pixbuf_loader_write(loader, piece.data(), piece.size(), nullptr) == FALSE) return false;
    file = from(file, piece.size());
  }
  return gdk_pixbuf_loader_close(loader, nullptr) != FALSE;
}

// Whether the format's loader decodes row by row, into memory that it announces unwritten. The
// others announce a picture that is decoded already.
bool isDecodedInRows(ImageFormat format) {
  return format == ImageFormat::kPng || format == ImageFormat::kJpeg || format == ImageFormat::kBmp;
}

// Before anything is decoded, where the loader tells too late: after decoding, or, for PNG, after
// having unpacked all of the piece that it was fed.
std::uint64_t announcedPixels(ByteSpan file, ImageFormat format) {
  switch (format) {
    case ImageFormat::kPng: {
      const auto png = PngFile::parseHeader(file);
      return png ? std::uint64_t{png->width} * png->height : 0;
    }
    case ImageFormat::kAvif:
    case ImageFormat::kHeif:
      return mostAnnouncedPixels(file);
    default:
      return 0;
  }
}

// Whether a loader has decoded anything so far.
struct Progress {
  bool hasPixels = false;

  static void prepared(GdkPixbufLoader* loader) {
    GdkPixbuf* picture = gdk_pixbuf_loader_get_pixbuf(loader);
    if (picture != nullptr) gdk_pixbuf_fill(picture, kUndecoded);
  }
  static void updated(GdkPixbufLoader*, int, int, int, int, Progress* progress) {
    progress->hasPixels = true;
  }
};

// As much of the picture as the loader can decode; an error where that is nothing.
std::variant<Pixbuf, ExitStatus> decodeWith(GdkPixbufLoader* loader, ByteSpan file,
                                            ImageFormat format, int maximum) {
  SizeDecision size{.maximum = maximum};
  Progress progress;
  g_signal_connect(loader, "size-prepared",
                   G_CALLBACK(+[](GdkPixbufLoader* self, int width, int height,
                                  SizeDecision* told) { told->decide(self, width, height); }),
                   &size);
  const bool inRows = isDecodedInRows(format);
  if (inRows) g_signal_connect(loader, "area-prepared", G_CALLBACK(Progress::prepared), nullptr);
  g_signal_connect(loader, "area-updated", G_CALLBACK(Progress::updated), &progress);
  const bool isWhole = feed(loader, file);
  if (!isWhole) gdk_pixbuf_loader_close(loader, nullptr);
  if (size.isRefused) return kRefused;
  GdkPixbuf* picture = gdk_pixbuf_loader_get_pixbuf(loader);
  // The loader of animated WebP announces no rows at all.
  const bool hasPixels = progress.hasPixels || (isWhole && !inRows);
  if (!hasPixels || picture == nullptr) return kDamaged;
  return Pixbuf(GDK_PIXBUF(g_object_ref(picture)));
}

// With the first installed loader that decodes it: they do not all read the same files.
std::variant<Pixbuf, ExitStatus> decode(ByteSpan file, ImageFormat format, int maximum) {
  if (announcedPixels(file, format) > kMostPixels) return kRefused;
  ExitStatus failure = kNotAnImage;
  for (const char* name : loaderNames(format)) {
    const Loader loader(gdk_pixbuf_loader_new_with_type(name, nullptr));
    if (!loader) continue;
    auto decoded = decodeWith(loader.get(), file, format, maximum);
    if (std::holds_alternative<Pixbuf>(decoded)) return decoded;
    failure = std::get<ExitStatus>(decoded);
    if (failure == kRefused) break;
  }
  return failure;
}

// The TIFF loader leaves colours multiplied with alpha, which PNG has not.
void divideByAlpha(GdkPixbuf* picture) {
  const int channels = gdk_pixbuf_get_n_channels(picture);
  guchar* pixels = gdk_pixbuf_get_pixels(picture);
  for (int row = 0; row < gdk_pixbuf_get_height(picture); ++row) {
    guchar* pixel = pixels + std::ptrdiff_t{row} * gdk_pixbuf_get_rowstride(picture);
    for (int column = 0; column < gdk_pixbuf_get_width(picture); ++column, pixel += channels) {
      const unsigned alpha = pixel[3];
      if (alpha == 0 || alpha == 255) continue;
      for (int color = 0; color < 3; ++color) {
        pixel[color] =
            static_cast<guchar>(std::min(255U, (pixel[color] * 255U + alpha / 2) / alpha));
      }
    }
  }
}

// Null where there is no memory.
Pixbuf upright(GdkPixbuf* picture, ImageFormat format, ByteSpan file) {
  const unsigned orientation = exifOrientation(format, file);
  if (orientation != 0) {
    gdk_pixbuf_set_option(picture, "orientation", std::to_string(orientation).c_str());
  }
  return Pixbuf(gdk_pixbuf_apply_embedded_orientation(picture));
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
  const auto infoHeaderBmp = withInfoHeader(file);
  const auto decoded =
      decode(infoHeaderBmp ? ByteSpan(*infoHeaderBmp) : file, *format, request.maximumDimension);
  if (const auto* failure = std::get_if<ExitStatus>(&decoded)) return *failure;
  const Pixbuf picture = upright(std::get<Pixbuf>(decoded).get(), *format, file);
  if (!picture) return kDamaged;
  if (request.thumbnailOf && !belongsTo(picture.get(), *request.thumbnailOf)) return kForeign;
  if (*format == ImageFormat::kTiff && hasAlpha(file)) divideByAlpha(picture.get());
  auto png = encodePng(picture.get());
  if (!png) return kDamaged;
  return *std::move(png);
}

}  // namespace brevanholt::preview
