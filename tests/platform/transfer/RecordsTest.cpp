#include "platform/foundation/PlatformError.h"
#include "platform/transfer/Records.h"
#include "tests/support/Hex.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <numeric>
#include <string>

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

Octets key() {
  Octets bytes(32);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
  return bytes;
}

struct Vector {
  std::uint8_t type;
  std::string body;
  std::string record;
};

// Sealed one after the other with AESGCM of Python's `cryptography` 38 under the key 00 01 … 1f,
// the nonce bytes(4) + pack(">Q", n) and the associated data pack(">IB3x", 4 + len(body) + 16,
// type).
const Vector kVectors[] = {
    {1, "7b226b6e6f7773223a747275657d",
     "0000002201000000759edeb0da5bf09f32dcdb407d51759e3d27c31f096ec9bdf1b4765eda37"},
    {12, "", "000000140c00000056598def2a8b44d3621c486baa8ec95b"},
    {64,
     "00000003000000050000000000000000"
     "68656c6c6f"
     "00000007000000000000000000000000",
     "0000003940000000c9712e7eb44bdad4b90d3c117741eb8cee7259bc81a90faf897d523a71db5b84e423f9cf26db"
     "280cc8a01183a7b473a67ec2bf0a72"},
};

// As many records of a type as there are bytes, each with one of them.
Octets sealed(RecordCipher& cipher, std::uint8_t type, const Octets& body) {
  Octets record(RecordLayout::kHeader + body.size() + RecordCipher::kTagSize);
  std::ranges::copy(body, record.begin() + RecordLayout::kHeader);
  sealRecord(cipher, type, record);
  return record;
}

int refusal(const std::function<void()>& action) {
  try {
    action();
    return 0;
  } catch (const SystemError& error) {
    return error.errorNumber();
  }
}

TEST(RecordsTest, AreThoseOfAnotherImplementation) {
  RecordCipher sealing(RecordCipher::Direction::kSeal, key());
  RecordCipher opening(RecordCipher::Direction::kOpen, key());
  for (const auto& [type, body, record] : kVectors) {
    EXPECT_EQ(toHex(sealed(sealing, type, fromHex(body))), record);
    Octets bytes = fromHex(record);
    const Record opened = openRecord(opening, bytes);
    EXPECT_EQ(opened.type, type);
    EXPECT_EQ(toHex(opened.body), body);
  }
}

TEST(RecordsTest, OpenOnceInOrderUnchangedAndUnderTheirKey) {
  const Octets first = fromHex(kVectors[0].record);
  const Octets second = fromHex(kVectors[1].record);
  const auto outcome = [](const std::vector<Octets>& records, const Octets& withKey) {
    RecordCipher cipher(RecordCipher::Direction::kOpen, withKey);
    return refusal([&] {
      for (Octets record : records) static_cast<void>(openRecord(cipher, record));
    });
  };
  EXPECT_EQ(outcome({first, second}, key()), 0);
  EXPECT_EQ(outcome({second}, key()), EBADMSG);
  EXPECT_EQ(outcome({first, first}, key()), EBADMSG);
  EXPECT_EQ(outcome({first}, Octets(32)), EBADMSG);
  for (const std::size_t changed :
       {std::size_t{3}, std::size_t{4}, std::size_t{8}, first.size() - 1}) {
    Octets record = first;
    record[changed] ^= 2;
    EXPECT_EQ(outcome({record}, key()), EBADMSG) << changed;
  }
  Octets record = first;
  record[5] = 1;
  EXPECT_EQ(outcome({record}, key()), EPROTO);
}

TEST(RecordsTest, AreNoLongerThanTheirTypeAllows) {
  const auto outcome = [](std::uint8_t type, std::size_t size) {
    RecordCipher sealing(RecordCipher::Direction::kSeal, key());
    RecordCipher opening(RecordCipher::Direction::kOpen, key());
    return refusal([&] {
      Octets record = sealed(sealing, type, Octets(size));
      static_cast<void>(openRecord(opening, record));
    });
  };
  EXPECT_EQ(outcome(1, RecordLayout::kLargestControl), 0);
  EXPECT_EQ(outcome(1, RecordLayout::kLargestControl + 1), EPROTO);
  EXPECT_EQ(outcome(64, RecordLayout::kLargestContent), 0);
  EXPECT_EQ(outcome(64, RecordLayout::kLargestContent + 1), EPROTO);
  EXPECT_EQ(outcome(65, 0), EPROTO);
}

TEST(RecordsTest, SegmentsEndWithTheBodyAndAreFew) {
  const auto outcome = [](const Octets& body) {
    return refusal([&] {
      SegmentReader segments(body);
      while (segments.next()) continue;
    });
  };
  Octets beyond(20);
  beyond[7] = 5;
  EXPECT_EQ(outcome(beyond), EPROTO);
  EXPECT_EQ(outcome(Octets(15)), EPROTO);
  EXPECT_EQ(outcome(Octets(RecordLayout::kMostSegments * 16)), 0);
  EXPECT_EQ(outcome(Octets((RecordLayout::kMostSegments + 1) * 16)), EPROTO);
}

}  // namespace
}  // namespace brevanholt::platform
