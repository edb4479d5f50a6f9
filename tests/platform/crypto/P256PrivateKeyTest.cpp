#include "platform/crypto/P256PrivateKey.h"
#include "tests/support/Hex.h"
#include "tests/support/Refusal.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

// FIPS 186-4, D.1.2.3: the field's prime and the group's order.
constexpr const char* kPrime = "ffffffff00000001000000000000000000000000ffffffffffffffffffffffff";
constexpr const char* kOrder = "ffffffff00000000ffffffffffffffffbce6faada7179e84f3b9cac2fc632551";

Octets point(const std::string& x, const std::string& y) {
  return fromHex("04" + x + y);
}

struct Agreement {
  const char* source;
  const char* ours;       // private
  const char* publicKey;  // x and y of the same key
  const char* theirs;     // x and y
  const char* secret;
};

constexpr Agreement kAgreements[] = {
    {"RFC 5903, section 8.1, the initiator",
     "C88F01F5 10D9AC3F 70A292DA A2316DE5 44E9AAB8 AFE84049 C62A9C57 862D1433",
     "DAD0B653 94221CF9 B051E1FE CA5787D0 98DFE637 FC90B9EF 945D0C37 72581180"
     "5271A046 1CDB8252 D61F1C45 6FA3E59A B1F45B33 ACCF5F58 389E0577 B8990BB3",
     "D12DFB52 89C8D4F8 1208B702 70398C34 2296970A 0BCCB74C 736FC755 4494BF63"
     "56FBF3CA 366CC23E 8157854C 13C58D6A AC23F046 ADA30F83 53E74F33 039872AB",
     "D6840F6B 42F6EDAF D13116E0 E1256520 2FEF8E9E CE7DCE03 812464D0 4B9442DE"},
    {"RFC 5903, section 8.1, the responder",
     "C6EF9C5D 78AE012A 011164AC B397CE20 88685D8F 06BF9BE0 B283AB46 476BEE53",
     "D12DFB52 89C8D4F8 1208B702 70398C34 2296970A 0BCCB74C 736FC755 4494BF63"
     "56FBF3CA 366CC23E 8157854C 13C58D6A AC23F046 ADA30F83 53E74F33 039872AB",
     "DAD0B653 94221CF9 B051E1FE CA5787D0 98DFE637 FC90B9EF 945D0C37 72581180"
     "5271A046 1CDB8252 D61F1C45 6FA3E59A B1F45B33 ACCF5F58 389E0577 B8990BB3",
     "D6840F6B 42F6EDAF D13116E0 E1256520 2FEF8E9E CE7DCE03 812464D0 4B9442DE"},
    {"NIST CAVP, KAS ECC CDH primitive, P-256, count 0",
     "7d7dc5f71eb29ddaf80d6214632eeae03d9058af1fb6d22ed80badb62bc1a534",
     "ead218590119e8876b29146ff89ca61770c4edbbf97d38ce385ed281d8a6b230"
     "28af61281fd35e2fa7002523acc85a429cb06ee6648325389f59edfce1405141",
     "700c48f77f56584c5cc632ca65640db91b6bacce3a4df6b42ce7cc838833d287"
     "db71e509e3fd9b060ddb20ba5c51dcc5948d46fbf640dfe0441782cab85fa4ac",
     "46fc62106420ff012e54a434fbdd2d25ccc5852060561e68040dd7778997bd7b"},
};

TEST(P256PrivateKeyTest, AgreesAsPublished) {
  for (const auto& [source, ours, publicKey, theirs, secret] : kAgreements) {
    SCOPED_TRACE(source);
    const P256PrivateKey key(fromHex(ours));
    EXPECT_EQ(toHex(key.publicKey()), toHex(point(publicKey, "")));
    EXPECT_EQ(toHex(key.sharedSecret(point(theirs, "")).span()), toHex(fromHex(secret)));
  }
}

TEST(P256PrivateKeyTest, IsTheSameKeyAgainFromItsRawRepresentation) {
  const P256PrivateKey key = P256PrivateKey::generate();
  const P256PrivateKey again(key.rawRepresentation().span());
  EXPECT_EQ(again.publicKey(), key.publicKey());
  EXPECT_TRUE(again.rawRepresentation() == key.rawRepresentation());
}

TEST(P256PrivateKeyTest, GeneratesDifferentKeysWithTheSmallerY) {
  // Of 2y and p, the former is smaller just when y is below p - y.
  const Octets prime = fromHex(kPrime);
  Octets last;
  for (int round = 0; round < 64; ++round) {
    const auto key = P256PrivateKey::generate().publicKey();
    Octets doubled(key.begin() + 33, key.end());
    unsigned carry = 0;
    for (auto byte = doubled.rbegin(); byte != doubled.rend(); ++byte) {
      const unsigned sum = 2U * *byte + carry;
      *byte = static_cast<std::uint8_t>(sum & 0xFFU);
      carry = sum >> 8U;
    }
    ASSERT_EQ(carry, 0U) << toHex(key);
    ASSERT_LT(doubled, prime) << toHex(key);
    Octets current(key.begin(), key.end());
    ASSERT_NE(current, last);
    last = std::move(current);
  }
}

TEST(P256PrivateKeyTest, TakesScalarsFromOneToBelowTheOrder) {
  Octets scalar(32, 0);
  scalar.back() = 1;
  // FIPS 186-4, D.1.2.3: the generator.
  EXPECT_EQ(toHex(P256PrivateKey(scalar).publicKey()),
            "046b17d1f2e12c4247f8bce6e563a440f277037d812deb33a0f4a13945d898c296"
            "4fe342e2fe1a7f9b8ee7eb4a7c0f9e162bce33576b315ececbb6406837bf51f5");
  Octets order = fromHex(kOrder);
  Octets largest = order;
  --largest.back();
  EXPECT_NO_THROW(P256PrivateKey{largest});

  for (const Octets& refused :
       {order, Octets(32, 0), Octets(32, 0xFF), Octets(31, 1), Octets(33, 1), Octets()}) {
    EXPECT_EQ(refusalOf([&] { return P256PrivateKey(refused); }),
              "These bytes are not a P-256 private key.")
        << toHex(refused);
  }
}

TEST(P256PrivateKeyTest, RefusesWhatIsNotAnUncompressedPointOfTheCurve) {
  const P256PrivateKey key = P256PrivateKey::generate();
  const auto refusal = [&key](const Octets& peer) {
    return refusalOf([&] { return key.sharedSecret(peer); });
  };
  const auto generated = P256PrivateKey::generate().publicKey();
  const Octets good(generated.begin(), generated.end());
  ASSERT_EQ(refusal(good), "not refused");

  Octets offCurve = good;
  offCurve.back() ^= 1;
  // The point at x = 0, and the same written with the prime in the place of zero.
  const std::string y = "66485c780e2f83d72433bd5d84a06bb6541c2af31dae871728bf856a174f93f4";
  ASSERT_EQ(refusal(point(std::string(64, '0'), y)), "not refused");
  const Octets notReduced = point(kPrime, y);
  for (const Octets& peer : {offCurve, notReduced, point(std::string(128, '0'), "")}) {
    EXPECT_EQ(refusal(peer), "The public key is not a point of the curve P-256.");
  }

  Octets compressed(good.begin(), good.begin() + 33);
  compressed.front() = 2;
  Octets hybrid = good;
  hybrid.front() = static_cast<std::uint8_t>(6 | (good.back() & 1));
  Octets longer = good;
  longer.push_back(0);
  const Octets shorter(good.begin(), good.end() - 1);
  const Octets infinity(1, 0);
  const Octets paddedInfinity(65, 0);
  for (const Octets& peer :
       {compressed, hybrid, longer, shorter, infinity, paddedInfinity, Octets()}) {
    EXPECT_EQ(refusal(peer), "The public key is not an uncompressed P-256 point of 65 bytes.");
  }
}

}  // namespace
}  // namespace brevanholt::platform
