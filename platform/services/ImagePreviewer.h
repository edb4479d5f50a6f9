#pragma once

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <filesystem>
#include <optional>

namespace brevanholt::platform {

// Small pictures of image files. The files are a stranger's, so they are never decoded in this
// process.
class ImagePreviewer {
 public:
  // The picture as PNG. Nothing where the file's content is no image that this system reads; an
  // error where it is one of which no picture can be made, or cannot be looked at.
  using Callback = UniqueFunction<void(Result<std::optional<Bytes>>)>;

  virtual ~ImagePreviewer() = default;
  // The file's first image, upright, `maximumDimension` pixels on its longest edge at most and
  // never enlarged. Calls back once, on the main thread, always.
  virtual void preview(const std::filesystem::path& file, int maximumDimension,
                       Callback callback) = 0;
};

}  // namespace brevanholt::platform
