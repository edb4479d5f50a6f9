#include "preview/ExifOrientation.h"
#include "preview/ImageFormat.h"
#include "preview/IsoMedia.h"

#include <gtest/gtest.h>

#include <string>

namespace brevanholt::preview {
namespace {

using namespace std::string_literals;

ByteSpan bytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string big32(std::size_t value) {
  return {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
          static_cast<char>(value >> 8U), static_cast<char>(value)};
}
std::string box(const std::string& type, const std::string& content) {
  return big32(8 + content.size()) + type + content;
}
std::string chunk(const std::string& type, const std::string& content) {
  return big32(content.size()) + type + content + "crc?";
}

const std::string kPngStart = "\x89PNG\r\n\x1A\n" + chunk("IHDR", big32(7) + big32(5) + "12345");

TEST(ImageFormatTest, TellsImagesFromWhatOnlyLooksLikeOne) {
  EXPECT_EQ(formatOf(bytes("<?xml version='1.0'?>\n<!-- <a> -->\n<svg:svg>")), ImageFormat::kSvg);
  // The first TIFF file is a thumbnail of what follows it, the second a digital negative.
  for (const std::string& file :
       {""s, "BMW is a maker of cars"s, "RIFF\1\1\1\1WAVE"s, box("ftyp", "mp42\0\0\0\0isom"s),
        "II*\0\x08\0\0\0\1\0\xFE\0\4\0\1\0\0\0\1\0\0\0"s,
        "II*\0\x08\0\0\0\1\0\x12\xC6\4\0\1\0\0\0\1\0\0\0"s, "<html><svg/></html>"s, "<!-- <svg/>"s,
        "<svga>"s, "<"s, "<!DOCTYPE svg [<svg>"s}) {
    EXPECT_EQ(formatOf(bytes(file)), std::nullopt) << file;
  }
}

TEST(ImageFormatTest, FindsTheOrientationWhereverTheFileHasIt) {
  const std::string exif = "MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\6\0\0"s;
  const std::string webpExif = "EXIF"s + char(exif.size() + 6) + "\0\0\0Exif\0\0"s + exif;
  const std::pair<ImageFormat, std::string> files[] = {
      {ImageFormat::kPng, kPngStart + chunk("eXIf", exif) + chunk("IDAT", "data")},
      {ImageFormat::kPng, kPngStart + chunk("IDAT", "data") + chunk("eXIf", exif)},
      {ImageFormat::kWebp, "RIFF????WEBPVP8X\3\0\0\0abc\0"s + webpExif}};
  for (const auto& [format, file] : files) {
    EXPECT_EQ(exifOrientation(format, bytes(file)), 6U);
    for (std::size_t length = 8; length < file.size(); ++length) {
      static_cast<void>(exifOrientation(format, bytes(file.substr(0, length))));  // no further
    }
  }
  EXPECT_EQ(exifOrientation(ImageFormat::kPng, bytes(kPngStart + big32(0xFFFFFFFF) + "IDAT")), 0U);
}

TEST(ImageFormatTest, FindsTheLargestSizeThatAnImageAnnounces) {
  const std::string small = box("ispe", big32(0) + big32(512) + big32(512));
  const std::string large = box("ispe", big32(0) + big32(70000) + big32(70000));
  const std::string heic = box("ftyp", "heic\0\0\0\0"s);
  const std::string properties = box("ipco", small + box("pixi", "x") + large);
  const std::string meta = box("meta", big32(0) + box("iprp", properties));
  EXPECT_EQ(mostAnnouncedPixels(bytes(heic + meta)), 4'900'000'000U);
  EXPECT_EQ(mostAnnouncedPixels(bytes(heic + "\0\0\0\1meta\xFF\xFF\xFF\xFF"s)), 0U);
}

}  // namespace
}  // namespace brevanholt::preview
