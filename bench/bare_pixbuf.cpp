// The least that a preview takes with gdk-pixbuf, for preview_benchmark to compare with:
//
//   bare_pixbuf IMAGE MAXIMUM PICTURE

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 4) return EXIT_FAILURE;
  const int maximum = std::atoi(argv[2]);
  GdkPixbuf* picture = gdk_pixbuf_new_from_file_at_size(argv[1], maximum, maximum, nullptr);
  if (picture == nullptr) return EXIT_FAILURE;
  GdkPixbuf* upright = gdk_pixbuf_apply_embedded_orientation(picture);
  const bool isSaved =
      gdk_pixbuf_save(upright, argv[3], "png", nullptr, "compression", "1", nullptr) != FALSE;
  return isSaved ? EXIT_SUCCESS : EXIT_FAILURE;
}
