#include "platform/linux/ReplaceFile.h"

#include "platform/foundation/PlatformError.h"
#include "platform/linux/GPointers.h"

namespace brevanholt::platform {

void replaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode) {
  constexpr auto kOnTheDisk = static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                                 G_FILE_SET_CONTENTS_DURABLE);
  GError* failure = nullptr;
  g_file_set_contents_full(path.c_str(), content.data(), static_cast<gssize>(content.size()),
                           kOnTheDisk, static_cast<int>(mode), &failure);
  const GErrorPointer error(failure);
  if (error) throw PlatformError(error->message);
}

}  // namespace brevanholt::platform
