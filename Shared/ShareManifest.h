#pragma once

#include "Shared/BrevanholtNativeShareStore.h"

namespace brevanholt {

// The items that a manifest lists, in their order: a JSON object (RFC 8259) whose "items" are
// objects with an optional "path" and an optional "text". Items with neither are left out. Values
// under other keys are ignored: they must follow the grammar, but their numbers may be out of range
// and their texts need not be Unicode. Throws StoreError.
[[nodiscard]] BrevanholtNativeShareStore::Items decodeManifest(std::string json);

}  // namespace brevanholt
