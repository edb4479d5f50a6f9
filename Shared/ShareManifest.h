#pragma once

#include "Shared/BrevanholtNativeShareStore.h"

namespace brevanholt {

// The items that a manifest lists, as they stand there: a JSON object whose "items" are objects
// with an optional "path" and an optional "text". Other keys are ignored. Throws StoreError.
[[nodiscard]] BrevanholtNativeShareStore::Items decodeManifest(const std::string& json);

}  // namespace brevanholt
