#include "platform/crypto/P256PrivateKey.h"

#include "platform/crypto/OpenSsl.h"
#include "platform/foundation/PlatformError.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <algorithm>

namespace brevanholt::platform {
namespace {

using BigNumber = openssl::Owned<BIGNUM, BN_clear_free>;
using Pkey = openssl::Owned<EVP_PKEY, EVP_PKEY_free>;
using PkeyContext = openssl::Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;
using PublicKey = P256PrivateKey::PublicKey;

constexpr std::uint8_t kUncompressed = 4;
constexpr std::size_t kYAt = 33;

// (p - 1) / 2, the largest y that is the smaller of y and p - y.
constexpr std::array<std::uint8_t, 32> kLargestCompactY{
    0x7F, 0xFF, 0xFF, 0xFF, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

const EC_GROUP* p256() {
  static const openssl::Owned<EC_GROUP, EC_GROUP_free> group(
      EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
  openssl::require(group != nullptr);
  return group.get();
}

// Null where the bytes are not a scalar of the group.
BigNumber scalarFrom(std::span<const std::uint8_t> raw) {
  if (raw.size() != P256PrivateKey::kRawSize) return nullptr;
  BigNumber scalar(BN_secure_new());
  openssl::require(scalar &&
                   BN_bin2bn(raw.data(), static_cast<int>(raw.size()), scalar.get()) != nullptr);
  BN_set_flags(scalar.get(), BN_FLG_CONSTTIME);
  const bool isInRange =
      BN_is_zero(scalar.get()) == 0 && BN_cmp(scalar.get(), EC_GROUP_get0_order(p256())) < 0;
  return isInRange ? std::move(scalar) : nullptr;
}

PublicKey publicKeyOf(const BIGNUM* scalar) {
  const openssl::Owned<EC_POINT, EC_POINT_free> point(EC_POINT_new(p256()));
  PublicKey encoded{};
  openssl::require(point &&
                   EC_POINT_mul(p256(), point.get(), scalar, nullptr, nullptr, nullptr) > 0 &&
                   EC_POINT_point2oct(p256(), point.get(), POINT_CONVERSION_UNCOMPRESSED,
                                      encoded.data(), encoded.size(), nullptr) == encoded.size());
  return encoded;
}

bool isCompactRepresentable(const PublicKey& key) {
  return !std::ranges::lexicographical_compare(kLargestCompactY, std::span(key).subspan<kYAt>());
}

// Null where the public key is not a point of the curve. A private key comes with its scalar.
Pkey makePkey(std::span<const std::uint8_t> publicKey, const BIGNUM* scalar) {
  SecretBytes native(P256PrivateKey::kRawSize);
  std::array<char, 6> group{"P-256"};
  std::array<OSSL_PARAM, 4> parameters{
      OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group.data(), 0),
      OSSL_PARAM_construct_octet_string(
          OSSL_PKEY_PARAM_PUB_KEY, const_cast<std::uint8_t*>(publicKey.data()), publicKey.size()),
      OSSL_PARAM_construct_end(), OSSL_PARAM_construct_end()};
  if (scalar != nullptr) {
    openssl::require(BN_bn2nativepad(scalar, native.data(), static_cast<int>(native.size())) > 0);
    parameters[2] = OSSL_PARAM_construct_BN(OSSL_PKEY_PARAM_PRIV_KEY, native.data(), native.size());
  }
  const PkeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
  openssl::require(context && EVP_PKEY_fromdata_init(context.get()) > 0);
  EVP_PKEY* key = nullptr;
  const int selection = scalar != nullptr ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY;
  if (EVP_PKEY_fromdata(context.get(), &key, selection, parameters.data()) <= 0) {
    openssl::forgetErrors();
  }
  return Pkey(key);
}

Pkey peerKeyFrom(std::span<const std::uint8_t> peer) {
  if (peer.size() != P256PrivateKey::kPublicKeySize || peer.front() != kUncompressed) {
    throw PlatformError("The public key is not an uncompressed P-256 point of 65 bytes.");
  }
  Pkey key = makePkey(peer, nullptr);
  if (!key) throw PlatformError("The public key is not a point of the curve P-256.");
  return key;
}

}  // namespace

struct P256PrivateKey::Key {
  Pkey pkey;
};

P256PrivateKey P256PrivateKey::generate() {
  for (;;) {  // half of all keys will do
    SecretBytes candidate(kRawSize);
    openssl::require(RAND_priv_bytes(candidate.data(), kRawSize) > 0);
    auto key = fromRawRepresentation(candidate.span());
    if (key && isCompactRepresentable(key->publicKey())) return std::move(*key);
  }
}

std::optional<P256PrivateKey> P256PrivateKey::fromRawRepresentation(
    std::span<const std::uint8_t> raw) {
  const BigNumber scalar = scalarFrom(raw);
  if (!scalar) return std::nullopt;
  const PublicKey publicKey = publicKeyOf(scalar.get());
  auto key = std::make_unique<Key>(Key{makePkey(publicKey, scalar.get())});
  openssl::require(key->pkey != nullptr);
  return P256PrivateKey(raw, publicKey, std::move(key));
}

P256PrivateKey::P256PrivateKey(std::span<const std::uint8_t> raw, const PublicKey& publicKey,
                               std::unique_ptr<Key> key)
    : raw_(raw), publicKey_(publicKey), key_(std::move(key)) {}

P256PrivateKey::P256PrivateKey(P256PrivateKey&&) noexcept = default;
P256PrivateKey& P256PrivateKey::operator=(P256PrivateKey&&) noexcept = default;
P256PrivateKey::~P256PrivateKey() = default;

SecretBytes P256PrivateKey::rawRepresentation() const {
  return SecretBytes(raw_.span());
}

SecretBytes P256PrivateKey::sharedSecret(std::span<const std::uint8_t> peer) const {
  const Pkey peerKey = peerKeyFrom(peer);
  const PkeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, key_->pkey.get(), nullptr));
  SecretBytes secret(kRawSize);
  std::size_t size = secret.size();
  // Being on the curve is all there is to check of a peer's point: the group's cofactor is 1
  // (SP 800-56A, section 5.6.2.3.4), and decoding it has checked that.
  constexpr int kCheckAgain = 0;
  openssl::require(context && EVP_PKEY_derive_init(context.get()) > 0 &&
                   EVP_PKEY_derive_set_peer_ex(context.get(), peerKey.get(), kCheckAgain) > 0 &&
                   EVP_PKEY_derive(context.get(), secret.data(), &size) > 0 &&
                   size == secret.size());
  return secret;
}

}  // namespace brevanholt::platform
