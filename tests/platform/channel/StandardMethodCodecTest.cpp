#include "platform/channel/StandardMethodCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>

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

// `depth` lists, each the only element of the one before.
Raw nestedLists(int depth) {
  Raw raw;
  for (int level = 0; level < depth; ++level) raw.insert(raw.end(), {12, 1});
  raw.push_back(0);
  return raw;
}

// A value of every type, and its encoding at the start of a message.
const std::pair<Value, Raw> kTypes[] = {
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

TEST(StandardMethodCodecTest, WritesEachTypeByteForByte) {
  for (const auto& [value, bytes] : kTypes) {
    EXPECT_EQ(encoded(value), bytes) << "type " << int{bytes.front()};
    EXPECT_EQ(Codec::decodeMessage(bytes), value) << "type " << int{bytes.front()};
  }
}

TEST(StandardMethodCodecTest, KeepsEachTypeWhereverItStandsAndRefusesItCutShort) {
  for (const auto& [value, bytes] : kTypes) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
      SCOPED_TRACE("type " + std::to_string(bytes.front()) + ", after " + std::to_string(offset));
      const Value message = List{Bytes(Raw(offset)), value};
      const Raw whole = encoded(message);
      EXPECT_EQ(Codec::decodeMessage(whole), message);
      for (std::size_t size = 0; size < whole.size(); ++size) {
        const Raw cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(causeOfDecoding(cut), Cause::kTruncated) << size << " of " << whole.size();
      }
    }
  }
}

TEST(StandardMethodCodecTest, WritesSizesInOneThreeAndFiveBytes) {
  const std::pair<std::size_t, Raw> cases[] = {{253, {8, 253}},
                                               {254, {8, 254, 254, 0}},
                                               {65535, {8, 254, 255, 255}},
                                               {65536, {8, 255, 0, 0, 1, 0}}};
  for (const auto& [size, prefix] : cases) {
    Raw bytes = prefix;
    bytes.resize(prefix.size() + size, 0x55);
    const Value value = Bytes(Raw(size, 0x55));
    EXPECT_TRUE(encoded(value) == bytes) << size;
    EXPECT_EQ(Codec::decodeMessage(bytes), value) << size;
  }
}

TEST(StandardMethodCodecTest, WritesMethodCallsAndEnvelopes) {
  EXPECT_EQ(rawOf(Codec::encodeMethodCall({"go", {}})), (Raw{7, 2, 'g', 'o', 0}));
  EXPECT_EQ(rawOf(Codec::encodeReply(Value(true))), (Raw{0, 1}));
  EXPECT_EQ(rawOf(Codec::encodeReply(MethodError{"e", "m", {}})),
            (Raw{1, 7, 1, 'e', 7, 1, 'm', 0}));
  EXPECT_TRUE(Codec::encodeReply(NotImplemented{}).empty());

  // Alignment counts from the envelope's first byte.
  EXPECT_EQ(rawOf(Codec::encodeReply(Value(1.0))),
            (Raw{0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
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
  // A list may claim one element for each byte left; memory is reserved as elements are read.
  Raw claims{12, 255, 0x00, 0x00, 0x10, 0x00};
  claims.resize(claims.size() + 0x100000, 0xFE);
  EXPECT_EQ(causeOfDecoding(claims), Cause::kUnknownTag);
}

TEST(StandardMethodCodecTest, BoundsTheMemoryOfManySmallValues) {
  Raw nulls{12, 255, 0x00, 0x00, 0x00, 0x04};
  nulls.resize(nulls.size() + (64 << 20), 0);
  EXPECT_EQ(causeOfDecoding(std::move(nulls)), Cause::kTooLarge);
  Raw lists;  // each claims all that follows
  for (int depth = 0; depth < 100; ++depth) lists.insert(lists.end(), {12, 255, 0, 0, 0x10, 0});
  lists.resize(lists.size() + 0x100000, 0);
  EXPECT_EQ(causeOfDecoding(std::move(lists)), Cause::kTooLarge);
  const Value numbers = List(1'000'000, std::int32_t{7});
  EXPECT_EQ(Codec::decodeMessage(encoded(numbers)), numbers);
}

TEST(StandardMethodCodecTest, RepairsStringsThatAreNotUtf8WhenEncoding) {
  const Value value = std::string("a\xFFz");
  EXPECT_EQ(Codec::decodeMessage(encoded(value)), Value("a\xEF\xBF\xBDz"));
}

}  // namespace
}  // namespace brevanholt::platform
