#pragma once

#include "platform/crypto/SecretBytes.h"

#include <string_view>

namespace brevanholt::platform {

// HKDF with SHA-256 (RFC 5869): `length` bytes, 1 to 8160, drawn from the secret. Throws
// PlatformError for any other length.
[[nodiscard]] SecretBytes hkdfSha256(const SecretBytes& secret, std::string_view salt,
                                     std::string_view info, std::size_t length);

}  // namespace brevanholt::platform
