#pragma once

#include "platform/foundation/Bytes.h"
#include "tests/support/TemporaryFolder.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>

namespace brevanholt {

// Runs a shell command in a folder; the test fails where it does.
inline void runIn(const std::filesystem::path& folder, const std::string& command) {
  const std::string line = "cd '" + folder.string() + "' && exec >/dev/null 2>&1; " + command;
  EXPECT_EQ(std::system(line.c_str()), 0) << command;
}

// A picture whose left half is red and whose right half is blue.
inline std::filesystem::path redAndBlue(const std::filesystem::path& file, int width, int height,
                                        const std::string& options = "") {
  const std::string half = std::to_string(width / 2) + "x" + std::to_string(height);
  runIn(file.parent_path(), "convert -size " + half + " xc:red xc:blue +append " + options + " " +
                                file.filename().string());
  return file;
}

// Size and corners of a picture: "80x60 red blue / red blue".
inline std::string lookOf(const platform::Bytes& picture) {
  const std::unique_ptr<GdkPixbufLoader, decltype(&g_object_unref)> loader(gdk_pixbuf_loader_new(),
                                                                           g_object_unref);
  const bool isRead =
      gdk_pixbuf_loader_write(loader.get(), picture.data(), picture.size(), nullptr) != FALSE;
  const bool isWhole = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
  GdkPixbuf* pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (!isRead || !isWhole || pixels == nullptr) return "no picture";

  const int width = gdk_pixbuf_get_width(pixels);
  const int height = gdk_pixbuf_get_height(pixels);
  const auto color = [&](int eighthsRight, int eighthsDown) -> std::string {
    constexpr std::array kNames{"black", "blue",    "green",  "cyan",
                                "red",   "magenta", "yellow", "white"};
    const std::ptrdiff_t row = height * eighthsDown / 8;
    const std::ptrdiff_t column = width * eighthsRight / 8;
    const guint8* pixel = gdk_pixbuf_read_pixels(pixels) + row * gdk_pixbuf_get_rowstride(pixels) +
                          column * gdk_pixbuf_get_n_channels(pixels);
    if (gdk_pixbuf_get_has_alpha(pixels) != FALSE && pixel[3] < 128) return "clear";
    return kNames.at((pixel[0] > 127 ? 4U : 0U) + (pixel[1] > 127 ? 2U : 0U) +
                     (pixel[2] > 127 ? 1U : 0U));
  };
  return std::to_string(width) + "x" + std::to_string(height) + " " + color(1, 1) + " " +
         color(7, 1) + " / " + color(1, 7) + " " + color(7, 7);
}

}  // namespace brevanholt
