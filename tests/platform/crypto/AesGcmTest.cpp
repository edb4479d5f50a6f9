#include "platform/crypto/AesGcm.h"
#include "tests/support/Hex.h"
#include "tests/support/Refusal.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

constexpr const char* kChanged = "The sealed payload was changed, or sealed with another key.";
constexpr const char* kTooShort = "The sealed payload is too short to be one.";

struct Vector {
  int testCase;
  const char* key;
  const char* nonce;
  const char* plaintext;
  const char* ciphertext;
  const char* tag;
};

constexpr const char* kNone = "000000000000000000000000";
constexpr const char* kNonce = "cafebabefacedbaddecaf888";
constexpr const char* kBlock = "00000000000000000000000000000000";
constexpr const char* kText =
    "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
    "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255";

// D. McGrew, J. Viega, "The Galois/Counter Mode of Operation (GCM)", as submitted to NIST, appendix
// B: the cases without associated data and with nonces of 96 bits.
const Vector kVectors[] = {
    {1, "00000000000000000000000000000000", kNone, "", "", "58e2fccefa7e3061367f1d57a4e7455a"},
    {2, "00000000000000000000000000000000", kNone, kBlock, "0388dace60b6a392f328c2b971b2fe78",
     "ab6e47d42cec13bdf53a67b21257bddf"},
    {3, "feffe9928665731c6d6a8f9467308308", kNonce, kText,
     "42831ec2217774244b7221b784d0d49ce3aa212f2c02a4e035c17e2329aca12e"
     "21d514b25466931c7d8f6a5aac84aa051ba30b396a0aac973d58e091473f5985",
     "4d5c2af327cd64a62cf35abd2ba6fab4"},
    {7, "000000000000000000000000000000000000000000000000", kNone, "", "",
     "cd33b28ac773f74ba00ed1f312572435"},
    {8, "000000000000000000000000000000000000000000000000", kNone, kBlock,
     "98e7247c07f0fe411c267e4384b0f600", "2ff58d80033927ab8ef4d4587514f0fb"},
    {9, "feffe9928665731c6d6a8f9467308308feffe9928665731c", kNonce, kText,
     "3980ca0b3c00e841eb06fac4872a2757859e1ceaa6efd984628593b40ca1e19c"
     "7d773d00c144c525ac619d18c84a3f4718e2448b2fe324d9ccda2710acade256",
     "9924a7c8587336bfb118024db8674a14"},
    {13, "0000000000000000000000000000000000000000000000000000000000000000", kNone, "", "",
     "530f8afbc74536b9a963b4f1c4cb738b"},
    {14, "0000000000000000000000000000000000000000000000000000000000000000", kNone, kBlock,
     "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919"},
    {15, "feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308", kNonce, kText,
     "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
     "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad",
     "b094dac5d93471bdec1a502270e3cc6c"},
};

TEST(AesGcmTest, OpensWhatWasPublished) {
  for (const auto& [testCase, key, nonce, plaintext, ciphertext, tag] : kVectors) {
    SCOPED_TRACE(testCase);
    const Octets sealed = fromHex(std::string(nonce) + ciphertext + tag);
    EXPECT_EQ(toHex(openAesGcm(fromHex(key), sealed).span()), plaintext);
  }
}

TEST(AesGcmTest, OpensWhatItSealed) {
  for (const std::size_t keySize : {16U, 24U, 32U}) {
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 4095U, 70'000U, 5U << 20U}) {
      const Octets key(keySize, 7);
      Octets plaintext(size);
      std::iota(plaintext.begin(), plaintext.end(), std::uint8_t{1});

      const Bytes sealed = sealAesGcm(key, plaintext);

      ASSERT_EQ(sealed.size(), size + 28);
      EXPECT_EQ(openAesGcm(key, sealed.span()), Bytes(plaintext)) << size;
    }
  }
}

TEST(AesGcmTest, SealsTheSameDifferentlyEachTime) {
  const Octets key(32, 7);
  const Octets plaintext(100, 1);
  const Bytes first = sealAesGcm(key, plaintext);
  const Bytes second = sealAesGcm(key, plaintext);
  EXPECT_FALSE(first.slice(0, 12) == second.slice(0, 12));
  EXPECT_FALSE(first.slice(12, 100) == second.slice(12, 100));
}

TEST(AesGcmTest, NoticesEveryFlippedBit) {
  const Octets key(32, 7);
  const Bytes payload = sealAesGcm(key, Octets(20, 1));
  Octets sealed(payload.begin(), payload.end());
  for (std::size_t bit = 0; bit < sealed.size() * 8; ++bit) {
    sealed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    ASSERT_EQ(refusalOf([&] { return openAesGcm(key, sealed); }), kChanged) << bit;
    sealed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
  }
  ASSERT_EQ(refusalOf([&] { return openAesGcm(key, sealed); }), "not refused");

  Octets otherKey = key;
  otherKey[31] ^= 1;
  EXPECT_EQ(refusalOf([&] { return openAesGcm(otherKey, sealed); }), kChanged);
}

TEST(AesGcmTest, RefusesWhatWasCutShort) {
  const Octets key(32, 7);
  const Bytes payload = sealAesGcm(key, Octets(5, 1));
  for (std::size_t size = 0; size < payload.size(); ++size) {
    // In storage of just that size, so that reading past it is noticed.
    const Octets cut(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(refusalOf([&] { return openAesGcm(key, cut); }), size < 28 ? kTooShort : kChanged);
  }
}

TEST(AesGcmTest, RefusesKeysOfOtherLengths) {
  for (const std::size_t size : {0U, 1U, 15U, 17U, 31U, 33U, 64U}) {
    const Octets key(size, 7);
    const std::string complaint =
        "An AES key has 16, 24 or 32 bytes, not " + std::to_string(size) + ".";
    EXPECT_EQ(refusalOf([&] { return sealAesGcm(key, Octets(5, 1)); }), complaint);
    EXPECT_EQ(refusalOf([&] { return openAesGcm(key, Octets(40, 1)); }), complaint);
  }
}

}  // namespace
}  // namespace brevanholt::platform
