#include "platform/crypto/AesGcm.h"
#include "tests/support/Hex.h"
#include "tests/support/Refusal.h"

#include <gtest/gtest.h>

#include <numeric>

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

constexpr const char* kChanged = "The sealed payload was changed, or sealed with another key.";
constexpr const char* kTooShort = "The sealed payload is too short to be one.";

constexpr const char* kNonce = "cafebabefacedbaddecaf888";
constexpr const char* kText =
    "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
    "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255";

struct Vector {
  int testCase;
  std::string key;
  std::string nonce;
  std::string plaintext;
  std::string ciphertextAndTag;
};

// D. McGrew, J. Viega, "The Galois/Counter Mode of Operation (GCM)", as submitted to NIST, appendix
// B: of the cases without associated data and with nonces of 96 bits, one for each size of key, and
// an empty plaintext.
const Vector kVectors[] = {
    {3, "feffe9928665731c6d6a8f9467308308", kNonce, kText,
     "42831ec2217774244b7221b784d0d49ce3aa212f2c02a4e035c17e2329aca12e"
     "21d514b25466931c7d8f6a5aac84aa051ba30b396a0aac973d58e091473f5985"
     "4d5c2af327cd64a62cf35abd2ba6fab4"},
    {9, "feffe9928665731c6d6a8f9467308308feffe9928665731c", kNonce, kText,
     "3980ca0b3c00e841eb06fac4872a2757859e1ceaa6efd984628593b40ca1e19c"
     "7d773d00c144c525ac619d18c84a3f4718e2448b2fe324d9ccda2710acade256"
     "9924a7c8587336bfb118024db8674a14"},
    {13, std::string(64, '0'), std::string(24, '0'), "", "530f8afbc74536b9a963b4f1c4cb738b"},
    {15, "feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", kNonce, kText,
     "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
     "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad"
     "b094dac5d93471bdec1a502270e3cc6c"},
};

TEST(AesGcmTest, OpensWhatWasPublished) {
  for (const auto& [testCase, key, nonce, plaintext, sealed] : kVectors) {
    EXPECT_EQ(toHex(openAesGcm(fromHex(key), fromHex(nonce + sealed)).span()), plaintext)
        << "case " << testCase;
  }
}

TEST(AesGcmTest, OpensWhatItSealedAndSealsTheSameDifferentlyEachTime) {
  for (const std::size_t size : {1U, 17U, 5U << 20U}) {
    const Octets key(32, 7);
    Octets plaintext(size);
    std::iota(plaintext.begin(), plaintext.end(), std::uint8_t{1});
    const Bytes sealed = sealAesGcm(key, plaintext);
    ASSERT_EQ(sealed.size(), size + 28);
    EXPECT_EQ(openAesGcm(key, sealed.span()), Bytes(plaintext)) << size;
    EXPECT_FALSE(sealAesGcm(key, plaintext).slice(0, 12) == sealed.slice(0, 12)) << size;
  }
}

TEST(AesGcmTest, NoticesEveryFlippedBitEveryCutAndAnotherKey) {
  const Octets key(32, 7);
  const Bytes payload = sealAesGcm(key, Octets(20, 1));
  const Octets sealed(payload.begin(), payload.end());
  ASSERT_EQ(refusalOf([&] { return openAesGcm(key, sealed); }), "not refused");
  for (std::size_t bit = 0; bit < sealed.size() * 8; ++bit) {
    Octets flipped = sealed;
    flipped[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    ASSERT_EQ(refusalOf([&] { return openAesGcm(key, flipped); }), kChanged) << bit;
  }
  for (std::size_t size = 0; size < sealed.size(); ++size) {
    // In storage of just that size, so that reading past it is noticed.
    const Octets cut(sealed.begin(), sealed.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(refusalOf([&] { return openAesGcm(key, cut); }), size < 28 ? kTooShort : kChanged);
  }
  EXPECT_EQ(refusalOf([&] { return openAesGcm(Octets(32, 8), sealed); }), kChanged);
}

TEST(AesGcmTest, RefusesKeysOfOtherLengths) {
  for (const std::size_t size : {0U, 15U, 33U, 64U}) {
    const Octets key(size, 7);
    const std::string complaint =
        "An AES key has 16, 24 or 32 bytes, not " + std::to_string(size) + ".";
    EXPECT_EQ(refusalOf([&] { return sealAesGcm(key, Octets(5, 1)); }), complaint);
    EXPECT_EQ(refusalOf([&] { return openAesGcm(key, Octets(40, 1)); }), complaint);
  }
}

}  // namespace
}  // namespace brevanholt::platform
