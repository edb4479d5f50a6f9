#pragma once

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <filesystem>

namespace brevanholt::platform {

// The desktop's thumbnails of documents.
class Thumbnailer {
 public:
  // A PNG, or why there is none.
  using Callback = UniqueFunction<void(Result<Bytes>)>;

  virtual ~Thumbnailer() = default;
  // A picture of the document itself, no icon of its kind, `maximumDimension` pixels on its longest
  // edge at most. Calls back once, on the main thread, always: the service may be missing, fail,
  // vanish or stay silent.
  virtual void thumbnail(const std::filesystem::path& file, int maximumDimension,
                         Callback callback) = 0;
};

}  // namespace brevanholt::platform
