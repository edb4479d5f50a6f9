#pragma once

#include "platform/channel/Value.h"
#include "platform/engine/FileAccess.h"
#include "platform/transfer/TransferParts.h"

#include <vector>

namespace brevanholt::platform {

// What TransferTable's methods take and give, as values of the codec. What the page got wrong is a
// PlatformError.

// [{entry, path or bytes, offset, size, modified}]
[[nodiscard]] std::vector<OutgoingPart> outgoingPartsIn(const Map& arguments, FileAccess* access);
// [{entry, path or null, offset, size}]
[[nodiscard]] std::vector<IncomingPart> incomingPartsIn(const Map& arguments, FileAccess* access);

// [[entry, the error's name, its text]]
[[nodiscard]] Value valueOf(const std::vector<PartFailure>& failures);
[[nodiscard]] Value valueOf(Arrival arrival);

}  // namespace brevanholt::platform
