#include "platform/crypto/Hkdf.h"

#include "platform/crypto/OpenSsl.h"
#include "platform/foundation/PlatformError.h"

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <array>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kLongest = std::size_t{255} * 32;  // RFC 5869, section 2.3

OSSL_PARAM octets(const char* name, const void* data, std::size_t size) {
  return OSSL_PARAM_construct_octet_string(name, const_cast<void*>(data), size);
}

}  // namespace

SecretBytes hkdfSha256(const SecretBytes& secret, std::string_view salt, std::string_view info,
                       std::size_t length) {
  if (length == 0 || length > kLongest) {
    throw PlatformError("HKDF-SHA-256 gives 1 to 8160 bytes, not " + std::to_string(length) + ".");
  }
  const openssl::Owned<EVP_KDF, EVP_KDF_free> hkdf(EVP_KDF_fetch(nullptr, "HKDF", nullptr));
  const openssl::Owned<EVP_KDF_CTX, EVP_KDF_CTX_free> context(EVP_KDF_CTX_new(hkdf.get()));
  openssl::require(context != nullptr);
  std::array<char, 7> digest{"SHA256"};
  const std::array parameters{
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest.data(), 0),
      octets(OSSL_KDF_PARAM_KEY, secret.data(), secret.size()),
      octets(OSSL_KDF_PARAM_SALT, salt.data(), salt.size()),
      octets(OSSL_KDF_PARAM_INFO, info.data(), info.size()), OSSL_PARAM_construct_end()};
  SecretBytes derived(length);
  openssl::require(
      EVP_KDF_derive(context.get(), derived.data(), derived.size(), parameters.data()) > 0);
  return derived;
}

}  // namespace brevanholt::platform
