#include "preview/ImageFormat.h"
#include "preview/IsoMedia.h"
#include "preview/PngFile.h"

#include <gtest/gtest.h>

#include <string>

namespace brevanholt::preview {
namespace {

using namespace std::string_literals;

ByteSpan bytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string big32(std::uint32_t value) {
  std::string text;
  for (unsigned shift = 32; shift > 0;) text += static_cast<char>(value >> (shift -= 8));
  return text;
}

std::string box(const std::string& type, const std::string& content) {
  return big32(static_cast<std::uint32_t>(8 + content.size())) + type + content;
}

std::string brands(const std::string& major, const std::string& compatible) {
  return box("ftyp", major + "\0\0\0\0"s + compatible);
}

std::string chunk(const std::string& type, const std::string& content) {
  return big32(static_cast<std::uint32_t>(content.size())) + type + content + "crc?";
}

const std::string kPngStart = "\x89PNG\r\n\x1A\n" + chunk("IHDR", big32(7) + big32(5) + "12345");

TEST(ImageFormatTest, KnowsImagesByTheirContent) {
  const std::string bmp = "BM" + std::string(12, 'x') + "\x28\0\0\0"s;
  const std::pair<std::string, std::optional<ImageFormat>> cases[] = {
      {"\xFF\xD8\xFF\xE0", ImageFormat::kJpeg},
      {kPngStart, ImageFormat::kPng},
      {"GIF89a", ImageFormat::kGif},
      {bmp, ImageFormat::kBmp},
      {"BMW is a maker of cars", std::nullopt},
      {"RIFF\1\1\1\1WEBP", ImageFormat::kWebp},
      {"RIFF\1\1\1\1WAVE", std::nullopt},
      {brands("avif", "mif1"), ImageFormat::kAvif},
      {brands("mif1", "miafavif"), ImageFormat::kAvif},
      {brands("mif1", "heic"), ImageFormat::kHeif},
      {brands("mp42", "isom"), std::nullopt},
      {"%PDF-1.4", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [file, format] : cases) EXPECT_EQ(formatOf(bytes(file)), format) << file;
}

TEST(ImageFormatTest, KnowsADrawingByItsRootElement) {
  for (const char* file :
       {"<svg/>", "<svg xmlns='x'>", "\xEF\xBB\xBF\n<?xml version='1.0'?>\n<!-- <html> -->\n<svg>",
        "<!DOCTYPE svg [ <!ENTITY a '>'> ]><svg>", "<!DOCTYPE svg PUBLIC 'a' 'b'>\n<svg:svg>"}) {
    EXPECT_EQ(formatOf(bytes(file)), ImageFormat::kSvg) << file;
  }
  for (const char* file : {"<html><svg/></html>", "<!-- <svg/>", "<svga>", "svg", "< svg>", "<",
                           "<?xml version='1.0'?>", "<!DOCTYPE svg [<svg>"}) {
    EXPECT_EQ(formatOf(bytes(file)), std::nullopt) << file;
  }
}

TEST(ImageFormatTest, LeavesCameraRawFilesToOthers) {
  const auto tiff = [](std::uint16_t tag, char value) {
    return "II*\0\x08\0\0\0\1\0"s + static_cast<char>(tag) + static_cast<char>(tag >> 8) +
           "\4\0\1\0\0\0"s + value + "\0\0\0"s;
  };
  EXPECT_EQ(formatOf(bytes(tiff(254, 0))), ImageFormat::kTiff);
  EXPECT_EQ(formatOf(bytes(tiff(254, 1))), std::nullopt) << "a thumbnail of what follows";
  EXPECT_EQ(formatOf(bytes(tiff(50706, 1))), std::nullopt) << "a digital negative";
  EXPECT_EQ(formatOf(bytes("MM\0*\0\0\0\x08\0\1\1\6\0\3\0\0\0\1\x80\x23\0\0"s)), std::nullopt);
}

TEST(ImageFormatTest, SeesWhereAFileWasCut) {
  const std::string png = kPngStart + chunk("IDAT", "data") + chunk("IEND", "");
  // A thumbnail inside has an end of its own, and "FF 00" is no marker.
  const std::string jpeg =
      "\xFF\xD8\xFF\xE1\0\6\xFF\xD8\xFF\xD9\xFF\xDA\0\2..\xFF\0..\xFF\xD0..\xFF\xFF\xD9"s;
  const std::string bmp = "BM\x20\0\0\0"s + std::string(26, 'x');
  const std::string webp = "RIFF\x10\0\0\0WEBP"s + std::string(12, 'x');
  for (const auto& [format, file] :
       {std::pair(ImageFormat::kPng, png), std::pair(ImageFormat::kJpeg, jpeg),
        std::pair(ImageFormat::kBmp, bmp), std::pair(ImageFormat::kWebp, webp)}) {
    EXPECT_TRUE(isWhole(format, bytes(file)));
    EXPECT_TRUE(isWhole(format, bytes(file + "more")));
    for (std::size_t length = 6; length < file.size(); ++length) {
      EXPECT_FALSE(isWhole(format, bytes(file.substr(0, length)))) << length;
    }
  }
  const auto parsed = PngFile::parse(bytes(png + "more"));
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->width, 7U);
  EXPECT_EQ(parsed->height, 5U);
  EXPECT_EQ(parsed->length, png.size());
  EXPECT_FALSE(PngFile::parse(bytes(kPngStart + big32(0xFFFFFFFF) + "IDAT")));
}

TEST(ImageFormatTest, FindsTheLargestSizeThatAnImageAnnounces) {
  const auto size = [](std::uint32_t width, std::uint32_t height) {
    return box("ispe", big32(0) + big32(width) + big32(height));
  };
  const std::string properties =
      box("ipco", size(512, 512) + box("pixi", "x") + size(70000, 70000));
  const std::string file =
      brands("heic", "") + box("free", "x") + box("meta", big32(0) + box("iprp", properties));
  EXPECT_EQ(mostAnnouncedPixels(bytes(file)), 4'900'000'000U);
  EXPECT_EQ(mostAnnouncedPixels(bytes(brands("heic", "") + "\0\0\0\1meta\xFF\xFF\xFF\xFF"s)), 0U);
}

}  // namespace
}  // namespace brevanholt::preview
