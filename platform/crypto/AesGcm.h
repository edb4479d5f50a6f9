#pragma once

#include "platform/foundation/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace brevanholt::platform {

// Authenticated encryption with AES-GCM (NIST SP 800-38D), without associated data. A key of 16, 24
// or 32 bytes chooses AES-128, AES-192 or AES-256; one of another length is a PlatformError.
//
// A sealed payload is the nonce (12 random bytes, fresh each time), the ciphertext, as long as the
// plaintext, and the tag (16 bytes).
inline constexpr std::size_t kAesGcmNonceSize = 12;
inline constexpr std::size_t kAesGcmTagSize = 16;
inline constexpr std::size_t kAesGcmOverhead = kAesGcmNonceSize + kAesGcmTagSize;

[[nodiscard]] Bytes sealAesGcm(std::span<const std::uint8_t> key,
                               std::span<const std::uint8_t> plaintext);

// Throws PlatformError, without releasing any plaintext, unless the tag is valid under this key.
[[nodiscard]] Bytes openAesGcm(std::span<const std::uint8_t> key,
                               std::span<const std::uint8_t> sealed);

}  // namespace brevanholt::platform
