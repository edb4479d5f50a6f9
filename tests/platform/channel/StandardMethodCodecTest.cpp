#include "platform/channel/StandardMethodCodec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <random>

namespace brevanholt::platform {
namespace {

using Cause = CodecError::Cause;
using Raw = std::vector<std::uint8_t>;
using Codec = StandardMethodCodec;

Raw rawOf(const Message& message) {
  const Bytes joined = message.joined();
  return {joined.begin(), joined.end()};
}

Raw encoded(const Value& value) {
  return rawOf(Codec::encodeMessage(value));
}

std::optional<Cause> causeOf(const std::function<void()>& decode) {
  try {
    decode();
  } catch (const CodecError& error) {
    return error.cause();
  }
  return std::nullopt;
}

std::optional<Cause> causeOfDecoding(Raw raw) {
  return causeOf([&raw] { static_cast<void>(Codec::decodeMessage(std::move(raw))); });
}

// A list and, inside it, another: `depth` of them.
Raw nestedLists(int depth) {
  Raw raw;
  for (int level = 0; level < depth; ++level) raw.insert(raw.end(), {12, 1});
  raw.push_back(0);
  return raw;
}

TEST(StandardMethodCodecTest, WritesEachTypeByteForByte) {
  const struct {
    Value value;
    Raw bytes;
  } cases[] = {
      {{}, {0}},
      {true, {1}},
      {false, {2}},
      {std::int32_t{-2}, {3, 0xFE, 0xFF, 0xFF, 0xFF}},
      {std::int64_t{0x1234567890ABCDEF}, {4, 0xEF, 0xCD, 0xAB, 0x90, 0x78, 0x56, 0x34, 0x12}},
      {1.0, {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}},
      {"h☺", {7, 4, 'h', 0xE2, 0x98, 0xBA}},
      {Bytes(Raw{0xBA, 0x5E}), {8, 2, 0xBA, 0x5E}},
      {Int32List{1, -1}, {9, 2, 0, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}},
      {Int64List{7}, {10, 1, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0}},
      {Float32List{1.0F}, {14, 1, 0, 0, 0, 0, 0x80, 0x3F}},
      {Float64List{1.0}, {11, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}},
      {List{true, List{}}, {12, 2, 1, 12, 0}},
      {Map{{"a", 1.0}}, {13, 1, 7, 1, 'a', 6, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}},
  };
  for (const auto& [value, bytes] : cases) {
    EXPECT_EQ(encoded(value), bytes) << "type " << int{bytes.front()};
    EXPECT_EQ(Codec::decodeMessage(bytes), value) << "type " << int{bytes.front()};
  }
}

TEST(StandardMethodCodecTest, WritesSizesInOneThreeAndFiveBytes) {
  const struct {
    std::size_t size;
    Raw prefix;
  } cases[] = {{253, {8, 253}},
               {254, {8, 254, 254, 0}},
               {65535, {8, 254, 255, 255}},
               {65536, {8, 255, 0, 0, 1, 0}}};
  for (const auto& [size, prefix] : cases) {
    const Value value = Bytes(Raw(size, 0x55));
    const Raw raw = encoded(value);
    ASSERT_EQ(raw.size(), prefix.size() + size);
    EXPECT_TRUE(std::equal(prefix.begin(), prefix.end(), raw.begin())) << size;
    EXPECT_EQ(Codec::decodeMessage(raw), value) << size;
  }
}

TEST(StandardMethodCodecTest, WritesMethodCallsAndEnvelopes) {
  EXPECT_EQ(rawOf(Codec::encodeMethodCall({"go", {}})), (Raw{7, 2, 'g', 'o', 0}));
  EXPECT_EQ(rawOf(Codec::encodeReply(Value(true))), (Raw{0, 1}));
  EXPECT_EQ(rawOf(Codec::encodeReply(MethodError{"e", "m", {}})),
            (Raw{1, 7, 1, 'e', 7, 1, 'm', 0}));
  EXPECT_TRUE(Codec::encodeReply(NotImplemented{}).empty());

  // The alignment of what follows an envelope's first byte counts from that byte.
  EXPECT_EQ(rawOf(Codec::encodeReply(Value(1.0))),
            (Raw{0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
  for (const Reply& reply :
       {Reply(Value(1.0)), Reply(MethodError{"e", "m", List{}}), Reply(NotImplemented{})}) {
    EXPECT_EQ(Codec::decodeReply(Codec::encodeReply(reply).joined()), reply);
  }
}

// Values of every type at random; the seed makes a failure repeatable.
class RandomValues {
 public:
  explicit RandomValues(unsigned seed) : random_(seed) {}

  Value next(int depth = 0) {
    switch (below(depth < 4 ? 13 : 11)) {
      case 0:
        return {};
      case 1:
        return below(2) == 0;
      case 2:
        return static_cast<std::int32_t>(random_());
      case 3:
        return static_cast<std::int64_t>(random_());
      case 4:
        return static_cast<double>(random_()) / 3.0;
      case 5:
        return text();
      case 6:
        return Bytes(Raw(below(9000), static_cast<std::uint8_t>(random_())));
      case 7:
        return Int32List(below(300), static_cast<std::int32_t>(random_()));
      case 8:
        return Int64List(below(5), -1);
      case 9:
        return Float32List(below(5), 0.5F);
      case 10:
        return Float64List(below(5), 0.1);
      case 11: {
        List list;
        for (auto count = below(6); count > 0; --count) list.push_back(next(depth + 1));
        return list;
      }
      default: {
        Map map;
        for (auto count = below(6); count > 0; --count) map.add(next(depth + 1), next(depth + 1));
        return map;
      }
    }
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }
  std::string text() {
    std::string result;
    for (auto count = below(300); count > 0; --count) {
      result += below(4) == 0 ? "ü" : below(4) == 0 ? "🜁" : "x";
    }
    return result;
  }

  std::mt19937_64 random_;
};

TEST(StandardMethodCodecTest, KeepsEveryValueThroughEncodingTwice) {
  RandomValues values(20260);
  for (int round = 0; round < 2000; ++round) {
    const Value value = values.next();
    const Raw once = encoded(value);
    const Value decoded = Codec::decodeMessage(once);
    ASSERT_EQ(decoded, value) << "round " << round;
    ASSERT_EQ(encoded(decoded), once) << "round " << round;
  }
}

TEST(StandardMethodCodecTest, RefusesEveryMessageThatIsCutShort) {
  RandomValues values(7);
  for (int round = 0; round < 200; ++round) {
    const Raw whole = encoded(values.next());
    for (std::size_t size = 0; size < std::min<std::size_t>(whole.size(), 400); ++size) {
      const Raw cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      ASSERT_EQ(causeOfDecoding(cut), Cause::kTruncated) << size << " of " << whole.size();
    }
  }
}

TEST(StandardMethodCodecTest, NamesWhatIsWrongWithAMessage) {
  EXPECT_EQ(causeOfDecoding({0, 0}), Cause::kTrailingBytes);
  EXPECT_EQ(causeOfDecoding({15}), Cause::kUnknownTag);
  EXPECT_EQ(causeOfDecoding({5, 1, '1'}), Cause::kUnknownTag);
  EXPECT_EQ(causeOfDecoding({7, 1, 0xFF}), Cause::kInvalidUtf8);
  EXPECT_EQ(causeOfDecoding({7, 3, 0xED, 0xA0, 0x80}), Cause::kInvalidUtf8) << "a surrogate";
  EXPECT_EQ(causeOfDecoding({7, 2, 0xC0, 0x80}), Cause::kInvalidUtf8) << "an overlong form";
  EXPECT_EQ(causeOfDecoding(nestedLists(Codec::kMaximumDepth)), std::nullopt);
  EXPECT_EQ(causeOfDecoding(nestedLists(Codec::kMaximumDepth + 1)), Cause::kTooDeep);
  EXPECT_EQ(causeOfDecoding(nestedLists(1'000'000)), Cause::kTooDeep);

  const auto call = [](Raw raw) {
    return causeOf([&] { static_cast<void>(Codec::decodeMethodCall(std::move(raw))); });
  };
  EXPECT_EQ(call({3, 1, 0, 0, 0, 0}), Cause::kNotAMethodCall);
  EXPECT_EQ(call({7, 1, 'a'}), Cause::kTruncated);
  EXPECT_EQ(call({7, 1, 'a', 0, 0}), Cause::kTrailingBytes);

  const auto reply = [](Raw raw) {
    return causeOf([&] { static_cast<void>(Codec::decodeReply(std::move(raw))); });
  };
  EXPECT_EQ(reply({2, 0}), Cause::kNotAnEnvelope);
  EXPECT_EQ(reply({1, 0, 0, 0}), Cause::kNotAnEnvelope);
}

TEST(StandardMethodCodecTest, DoesNotBelieveSizesThatAreNotThere) {
  for (const std::uint8_t tag : Raw{7, 8, 9, 10, 11, 12, 13, 14}) {
    EXPECT_EQ(causeOfDecoding({tag, 255, 0xFF, 0xFF, 0xFF, 0xFF}), Cause::kTruncated) << int{tag};
  }
  // A list may claim as many elements as there are bytes, yet reserves only for those that come.
  Raw claims{12, 255, 0x00, 0x00, 0x10, 0x00};
  claims.resize(claims.size() + 0x100000, 0xFE);
  EXPECT_EQ(causeOfDecoding(claims), Cause::kUnknownTag);
}

TEST(StandardMethodCodecTest, SharesLargeByteListsInsteadOfCopying) {
  const Bytes payload(Raw(1 << 20, 0xAB));
  const Message message = Codec::encodeMethodCall({"m", Map{{"data", payload}, {"end", true}}});
  const auto shared = [&payload](const Bytes& part) { return part.data() == payload.data(); };
  EXPECT_TRUE(std::any_of(message.parts().begin(), message.parts().end(), shared));

  const Bytes joined = message.joined();
  const MethodCall call = Codec::decodeMethodCall(joined);
  const auto* data = call.arguments.getIf<Map>()->find("data")->getIf<Bytes>();
  EXPECT_EQ(*data, payload);
  EXPECT_GE(data->data(), joined.data());
  EXPECT_LE(data->data() + data->size(), joined.data() + joined.size());
}

TEST(StandardMethodCodecTest, RepairsStringsThatAreNotUtf8WhenEncoding) {
  const Value value = std::string("a\xFFz");
  EXPECT_EQ(Codec::decodeMessage(encoded(value)), Value("a\xEF\xBF\xBDz"));
}

}  // namespace
}  // namespace brevanholt::platform
