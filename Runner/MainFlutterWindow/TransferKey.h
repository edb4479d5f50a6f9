#pragma once

#include "platform/crypto/P256PrivateKey.h"
#include "platform/foundation/Bytes.h"

namespace brevanholt {

// The device's public key as peers take it: an uncompressed point of 65 bytes.
[[nodiscard]] platform::Bytes publicKeyOf(const platform::P256PrivateKey& key);

// The key of 32 bytes that seals payloads to and from a peer, given its public key. Throws
// PlatformError for bytes that are no public key.
[[nodiscard]] platform::Bytes transferKey(const platform::P256PrivateKey& key,
                                          const platform::Bytes& peer);

}  // namespace brevanholt
