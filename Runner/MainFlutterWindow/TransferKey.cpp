#include "Runner/MainFlutterWindow/TransferKey.h"

#include "platform/crypto/Hkdf.h"

#include <string_view>

namespace brevanholt {

using platform::Bytes;
using platform::P256PrivateKey;

namespace {

// Changing either breaks compatibility with peers.
constexpr std::string_view kTransferKeySalt = "Brevanholt-v1";
constexpr std::size_t kTransferKeySize = 32;

}  // namespace

Bytes publicKeyOf(const P256PrivateKey& key) {
  const auto& publicKey = key.publicKey();
  return std::vector<std::uint8_t>(publicKey.begin(), publicKey.end());
}

Bytes transferKey(const P256PrivateKey& key, const Bytes& peer) {
  const platform::SecretBytes secret = key.sharedSecret(peer.span());
  return platform::hkdfSha256(secret, kTransferKeySalt, {}, kTransferKeySize).intoBytes();
}

}  // namespace brevanholt
