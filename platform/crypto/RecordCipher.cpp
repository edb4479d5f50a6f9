#include "platform/crypto/RecordCipher.h"

#include "platform/crypto/OpenSsl.h"
#include "platform/foundation/PlatformError.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kKeySize = 32;
constexpr std::size_t kNonceSize = 12;
constexpr std::size_t kLongestText = std::size_t{1} << 30;  // the library counts in int

std::array<std::uint8_t, kNonceSize> nonceOf(std::uint64_t counter) {
  std::array<std::uint8_t, kNonceSize> nonce{};
  for (std::size_t at = kNonceSize; counter != 0; counter >>= 8) {
    nonce[--at] = static_cast<std::uint8_t>(counter);
  }
  return nonce;
}

}  // namespace

struct RecordCipher::Context {
  openssl::Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> cipher;
};

RecordCipher::RecordCipher(Direction direction, std::span<const std::uint8_t> key)
    : context_(std::make_unique<Context>()) {
  if (key.size() != kKeySize) throw PlatformError("A record's key has 32 bytes.");
  context_->cipher.reset(EVP_CIPHER_CTX_new());
  openssl::require(context_->cipher &&
                   EVP_CipherInit_ex2(context_->cipher.get(), EVP_aes_256_gcm(), key.data(),
                                      nullptr, static_cast<int>(direction), nullptr) > 0);
}

RecordCipher::~RecordCipher() = default;

void RecordCipher::begin(std::span<const std::uint8_t> header) {
  if (counter_ == UINT64_MAX) throw PlatformError("The connection's key was used too often.");
  const auto nonce = nonceOf(counter_++);
  int written = 0;
  openssl::require(
      EVP_CipherInit_ex2(context_->cipher.get(), nullptr, nullptr, nonce.data(), -1, nullptr) > 0 &&
      EVP_CipherUpdate(context_->cipher.get(), nullptr, &written, header.data(),
                       static_cast<int>(header.size())) > 0);
}

void RecordCipher::run(std::span<std::uint8_t> text) {
  if (text.size() > kLongestText) throw PlatformError("The record is too long.");
  int written = 0;
  openssl::require(text.empty() ||
                   EVP_CipherUpdate(context_->cipher.get(), text.data(), &written, text.data(),
                                    static_cast<int>(text.size())) > 0);
}

void RecordCipher::seal(std::span<const std::uint8_t> header, std::span<std::uint8_t> text,
                        std::span<std::uint8_t, kTagSize> tag) {
  begin(header);
  run(text);
  int written = 0;
  openssl::require(
      EVP_CipherFinal_ex(context_->cipher.get(), tag.data(), &written) > 0 &&
      EVP_CIPHER_CTX_ctrl(context_->cipher.get(), EVP_CTRL_AEAD_GET_TAG, kTagSize, tag.data()) > 0);
}

bool RecordCipher::open(std::span<const std::uint8_t> header, std::span<std::uint8_t> text,
                        std::span<const std::uint8_t, kTagSize> tag) {
  begin(header);
  openssl::require(EVP_CIPHER_CTX_ctrl(context_->cipher.get(), EVP_CTRL_AEAD_SET_TAG, kTagSize,
                                       const_cast<std::uint8_t*>(tag.data())) > 0);
  run(text);
  std::uint8_t none = 0;
  int written = 0;
  if (EVP_CipherFinal_ex(context_->cipher.get(), &none, &written) > 0) return true;
  openssl::forgetErrors();
  OPENSSL_cleanse(text.data(), text.size());
  return false;
}

}  // namespace brevanholt::platform
