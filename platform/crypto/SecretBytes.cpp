#include "platform/crypto/SecretBytes.h"

#include <openssl/crypto.h>

#include <algorithm>

namespace brevanholt::platform {

SecretBytes::SecretBytes(std::size_t size) : storage_(new std::uint8_t[size](), Wipe{size}) {}

SecretBytes::SecretBytes(std::span<const std::uint8_t> bytes) : SecretBytes(bytes.size()) {
  std::ranges::copy(bytes, data());
}

Bytes SecretBytes::intoBytes() && {
  const std::span<const std::uint8_t> view = span();
  return {view, std::shared_ptr<const std::uint8_t[]>(std::move(storage_))};
}

bool operator==(const SecretBytes& left, const SecretBytes& right) {
  return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

void SecretBytes::Wipe::operator()(const std::uint8_t* storage) const {
  OPENSSL_cleanse(const_cast<std::uint8_t*>(storage), size);
  delete[] storage;
}

}  // namespace brevanholt::platform
