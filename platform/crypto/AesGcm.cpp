#include "platform/crypto/AesGcm.h"

#include "platform/crypto/OpenSsl.h"
#include "platform/foundation/ByteBuffer.h"
#include "platform/foundation/PlatformError.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>

namespace brevanholt::platform {
namespace {

enum class Direction { kOpen = 0, kSeal = 1 };

// The library counts in int; a multiple of the block size.
constexpr std::size_t kLargestStep = std::size_t{1} << 30;

const EVP_CIPHER* cipherFor(std::size_t keySize) {
  switch (keySize) {
    case 16:
      return EVP_aes_128_gcm();
    case 24:
      return EVP_aes_192_gcm();
    case 32:
      return EVP_aes_256_gcm();
    default:
      throw PlatformError("An AES key has 16, 24 or 32 bytes, not " + std::to_string(keySize) +
                          ".");
  }
}

// One message on its way through the cipher.
class Pass {
 public:
  Pass(Direction direction, std::span<const std::uint8_t> key, const std::uint8_t* nonce)
      : context_(EVP_CIPHER_CTX_new()) {
    const EVP_CIPHER* cipher = cipherFor(key.size());
    openssl::require(context_ && EVP_CipherInit_ex2(context_.get(), cipher, key.data(), nonce,
                                                    static_cast<int>(direction), nullptr) > 0);
  }

  void run(std::span<const std::uint8_t> input, std::uint8_t* output) {
    while (!input.empty()) {
      const std::size_t step = std::min(input.size(), kLargestStep);
      int written = 0;
      openssl::require(EVP_CipherUpdate(context_.get(), output, &written, input.data(),
                                        static_cast<int>(step)) > 0);
      input = input.subspan(step);
      output += step;
    }
  }
  // False where the tag, or the lack of one, says that the message was changed.
  [[nodiscard]] bool finish() {
    std::uint8_t none = 0;
    int written = 0;
    return EVP_CipherFinal_ex(context_.get(), &none, &written) > 0;
  }
  void expectTag(const std::uint8_t* tag) {
    control(EVP_CTRL_AEAD_SET_TAG, const_cast<std::uint8_t*>(tag));
  }
  void writeTag(std::uint8_t* tag) { control(EVP_CTRL_AEAD_GET_TAG, tag); }

 private:
  void control(int command, std::uint8_t* tag) {
    openssl::require(EVP_CIPHER_CTX_ctrl(context_.get(), command, kAesGcmTagSize, tag) > 0);
  }

  openssl::Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> context_;
};

}  // namespace

Bytes sealAesGcm(std::span<const std::uint8_t> key, std::span<const std::uint8_t> plaintext) {
  ByteBuffer sealed(plaintext.size() + kAesGcmOverhead);
  std::uint8_t* nonce = sealed.data();
  std::uint8_t* ciphertext = nonce + kAesGcmNonceSize;
  openssl::require(RAND_bytes(nonce, kAesGcmNonceSize) > 0);
  Pass pass(Direction::kSeal, key, nonce);
  pass.run(plaintext, ciphertext);
  openssl::require(pass.finish());
  pass.writeTag(ciphertext + plaintext.size());
  return std::move(sealed).finish();
}

Bytes openAesGcm(std::span<const std::uint8_t> key, std::span<const std::uint8_t> sealed) {
  if (sealed.size() < kAesGcmOverhead) {
    throw PlatformError("The sealed payload is too short to be one.");
  }
  Pass pass(Direction::kOpen, key, sealed.data());
  const auto ciphertext = sealed.subspan(kAesGcmNonceSize, sealed.size() - kAesGcmOverhead);
  pass.expectTag(sealed.data() + sealed.size() - kAesGcmTagSize);
  ByteBuffer plaintext(ciphertext.size());
  pass.run(ciphertext, plaintext.data());
  if (!pass.finish()) {
    openssl::forgetErrors();
    OPENSSL_cleanse(plaintext.data(), plaintext.size());
    throw PlatformError("The sealed payload was changed, or sealed with another key.");
  }
  return std::move(plaintext).finish();
}

}  // namespace brevanholt::platform
