#include "platform/crypto/P256PrivateKey.h"
#include "tests/support/Hex.h"
#include "tests/support/Refusal.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <set>

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

struct Agreement {
  const char* source;
  const char* ours;  // the private key
  const char* publicKey;
  const char* theirs;
  const char* secret;
};

constexpr Agreement kAgreements[] = {
    {"RFC 5903, section 8.1", "c88f01f510d9ac3f70a292daa2316de544e9aab8afe84049c62a9c57862d1433",
     "04dad0b65394221cf9b051e1feca5787d098dfe637fc90b9ef945d0c3772581180"
     "5271a0461cdb8252d61f1c456fa3e59ab1f45b33accf5f58389e0577b8990bb3",
     "04d12dfb5289c8d4f81208b70270398c342296970a0bccb74c736fc7554494bf63"
     "56fbf3ca366cc23e8157854c13c58d6aac23f046ada30f8353e74f33039872ab",
     "d6840f6b42f6edafd13116e0e12565202fef8e9ece7dce03812464d04b9442de"},
    {"NIST CAVP, KAS ECC CDH primitive, P-256, count 0",
     "7d7dc5f71eb29ddaf80d6214632eeae03d9058af1fb6d22ed80badb62bc1a534",
     "04ead218590119e8876b29146ff89ca61770c4edbbf97d38ce385ed281d8a6b230"
     "28af61281fd35e2fa7002523acc85a429cb06ee6648325389f59edfce1405141",
     "04700c48f77f56584c5cc632ca65640db91b6bacce3a4df6b42ce7cc838833d287"
     "db71e509e3fd9b060ddb20ba5c51dcc5948d46fbf640dfe0441782cab85fa4ac",
     "46fc62106420ff012e54a434fbdd2d25ccc5852060561e68040dd7778997bd7b"},
};

TEST(P256PrivateKeyTest, AgreesAsPublished) {
  for (const auto& [source, ours, publicKey, theirs, secret] : kAgreements) {
    SCOPED_TRACE(source);
    const auto key = P256PrivateKey::fromRawRepresentation(fromHex(ours));
    ASSERT_TRUE(key);
    EXPECT_EQ(toHex(key->publicKey()), publicKey);
    EXPECT_EQ(toHex(key->sharedSecret(fromHex(theirs)).span()), secret);
    EXPECT_EQ(toHex(key->rawRepresentation().span()), ours);
  }
}

TEST(P256PrivateKeyTest, TellsAFailingLibraryFromBytesThatAreNotAKey) {
  const Octets good = fromHex(kAgreements[0].ours);
  EXPECT_FALSE(P256PrivateKey::fromRawRepresentation(Octets(32, 0)));
  ASSERT_EQ(EVP_set_default_properties(nullptr, "provider=none"), 1);
  const std::string failure =
      refusalOf([&] { return P256PrivateKey::fromRawRepresentation(good); });
  EXPECT_FALSE(P256PrivateKey::fromRawRepresentation(Octets(32, 0)));
  ASSERT_EQ(EVP_set_default_properties(nullptr, ""), 1);
  EXPECT_TRUE(failure.starts_with("The cryptographic library failed")) << failure;
  EXPECT_TRUE(P256PrivateKey::fromRawRepresentation(good));
}

TEST(P256PrivateKeyTest, GeneratesDifferentKeysWithTheSmallerY) {
  // Half of the prime p: the smaller one of y and p - y is at most this.
  const Octets half = fromHex(
      "7fffffff80000000800000000000000000000000"
      "7fffffffffffffffffffffff");
  std::set<Octets> keys;
  for (int round = 0; round < 64; ++round) {
    const auto key = P256PrivateKey::generate().publicKey();
    ASSERT_LE(Octets(key.begin() + 33, key.end()), half) << toHex(key);
    ASSERT_TRUE(keys.emplace(key.begin(), key.end()).second) << toHex(key);
  }
}

TEST(P256PrivateKeyTest, RefusesWhatIsNotAnUncompressedPointOfTheCurve) {
  const P256PrivateKey key = P256PrivateKey::generate();
  const auto refusal = [&key](const Octets& peer) {
    return refusalOf([&] { return key.sharedSecret(peer); });
  };
  // The point at x = 0, and its encoding with x = p, which is not canonical.
  const std::string y = "66485c780e2f83d72433bd5d84a06bb6541c2af31dae871728bf856a174f93f4";
  const Octets good = fromHex("04" + std::string(64, '0') + y);
  ASSERT_EQ(refusal(good), "not refused");
  const Octets notReduced =
      fromHex("04ffffffff00000001000000000000000000000000ffffffffffffffffffffffff" + y);
  Octets offCurve = good;
  offCurve.back() ^= 1;
  for (const Octets& peer : {offCurve, notReduced, fromHex("04" + std::string(128, '0'))}) {
    EXPECT_EQ(refusal(peer), "The public key is not a point of the curve P-256.") << toHex(peer);
  }

  Octets compressed(good.begin(), good.begin() + 33);
  compressed.front() = 2;
  Octets hybrid = good;
  hybrid.front() = 6;
  Octets longer = good;
  longer.push_back(0);
  const Octets shorter(good.begin(), good.end() - 1);
  for (const Octets& peer :
       {compressed, hybrid, longer, shorter, Octets(1, 0), Octets(65, 0), Octets()}) {
    EXPECT_EQ(refusal(peer), "The public key is not an uncompressed P-256 point of 65 bytes.")
        << toHex(peer);
  }
}

}  // namespace
}  // namespace brevanholt::platform
