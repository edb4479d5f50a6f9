#include "platform/linux/previews/ThumbnailCache.h"

#include "platform/gtk/GLibPointers.h"

#include <algorithm>
#include <array>

namespace brevanholt::platform {
namespace {

constexpr std::array<ThumbnailFlavor, 4> kFlavors{
    {{"normal", 128}, {"large", 256}, {"x-large", 512}, {"xx-large", 1024}}};

}  // namespace

const ThumbnailFlavor* flavorFor(int pixels, std::span<const std::string> available) {
  const ThumbnailFlavor* largest = nullptr;
  for (const ThumbnailFlavor& flavor : kFlavors) {
    if (std::ranges::find(available, flavor.name) == available.end()) continue;
    largest = &flavor;
    if (flavor.edge >= pixels) break;
  }
  return largest;
}

std::filesystem::path thumbnailPath(const std::filesystem::path& cacheHome,
                                    const ThumbnailFlavor& flavor, const std::string& uri) {
  const GCharPointer digest(g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.c_str(), -1));
  return cacheHome / "thumbnails" / flavor.name / (std::string(digest.get()) + ".png");
}

}  // namespace brevanholt::platform
