#pragma once

#include "platform/crypto/SecretBytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace brevanholt::platform {

// A private key for key agreement (ECDH) on the curve P-256 (FIPS 186-4, SP 800-56A).
class P256PrivateKey {
 public:
  static constexpr std::size_t kRawSize = 32;
  static constexpr std::size_t kPublicKeySize = 65;
  // An uncompressed point (ANSI X9.63, SEC 1 section 2.3.3): 4, then x and y of 32 bytes each.
  using PublicKey = std::array<std::uint8_t, kPublicKeySize>;

  // A fresh random key whose public key is compact-representable: its y is the smaller of y and
  // p - y, so that x alone would tell the point.
  [[nodiscard]] static P256PrivateKey generate();
  // From the scalar, big-endian. Nothing where it is not 32 bytes of a number from 1 to below the
  // group's order. Throws PlatformError only where the library fails.
  [[nodiscard]] static std::optional<P256PrivateKey> fromRawRepresentation(
      std::span<const std::uint8_t> raw);
  P256PrivateKey(P256PrivateKey&&) noexcept;
  P256PrivateKey& operator=(P256PrivateKey&&) noexcept;
  ~P256PrivateKey();

  [[nodiscard]] SecretBytes rawRepresentation() const;
  [[nodiscard]] const PublicKey& publicKey() const { return publicKey_; }

  // The x coordinate, 32 bytes, that both sides come to. Throws PlatformError unless `peer` is a
  // PublicKey: other forms of a point, the point at infinity and points off the curve are refused.
  [[nodiscard]] SecretBytes sharedSecret(std::span<const std::uint8_t> peer) const;

 private:
  struct Key;

  P256PrivateKey(std::span<const std::uint8_t> raw, const PublicKey& publicKey,
                 std::unique_ptr<Key> key);

  SecretBytes raw_;
  PublicKey publicKey_{};
  std::unique_ptr<Key> key_;
};

}  // namespace brevanholt::platform
