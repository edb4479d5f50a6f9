#pragma once

#include "platform/crypto/RecordCipher.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace brevanholt::platform {

// The layout of records; docs/protocol.md explains it. All numbers are big-endian.
//
//   4 bytes   size of what follows this field
//   1 byte    type: below 64 control, 64 content
//   3 bytes   zero
//   ...       the body, sealed, and its tag; the eight bytes before are authenticated with it
struct RecordLayout {
  static constexpr std::size_t kSize = 4;
  static constexpr std::size_t kHead = 4;  // type and zeros
  static constexpr std::size_t kHeader = kSize + kHead;
  static constexpr std::uint8_t kContent = 64;
  static constexpr std::size_t kLargestControl = 64 << 10;  // body, in bytes
  static constexpr std::size_t kChunk = 1 << 20;            // content in one record, in bytes
  static constexpr std::size_t kMostSegments = 64;
  static constexpr std::size_t kSegment = 16;  // entry, length, offset
  static constexpr std::size_t kLargestContent = kChunk + kMostSegments * kSegment;
  static constexpr std::size_t kLargestFrame = kHead + kLargestContent + RecordCipher::kTagSize;
  static constexpr std::size_t kLargestRecord = kSize + kLargestFrame;
};

// A piece of an entry of the manifest, as content records carry them.
struct Segment {
  std::uint32_t entry = 0;
  std::uint64_t offset = 0;
  std::span<const std::uint8_t> bytes;
};

// Writes the sixteen bytes that stand before a segment's own.
void writeSegmentHead(std::span<std::uint8_t, RecordLayout::kSegment> head, std::uint32_t entry,
                      std::uint32_t length, std::uint64_t offset);

// Goes through the body of a content record. Throws SystemError (EPROTO) where it is malformed.
class SegmentReader {
 public:
  SegmentReader() = default;
  explicit SegmentReader(std::span<const std::uint8_t> body) : rest_(body) {}

  // Nothing after the last one.
  [[nodiscard]] std::optional<Segment> next();

 private:
  std::span<const std::uint8_t> rest_;
  std::size_t count_ = 0;
};

[[nodiscard]] std::uint32_t frameSize(std::span<const std::uint8_t, RecordLayout::kSize> bytes);

// Seals a record where it stands: the body lies behind room for the header, and room for the tag
// follows it.
void sealRecord(RecordCipher& cipher, std::uint8_t type, std::span<std::uint8_t> record);

struct Record {
  std::uint8_t type = 0;
  std::span<std::uint8_t> body;
};

// Opens a record, from its size to its tag, where it stands. Throws SystemError: EBADMSG where it
// is not the other side's next one, EPROTO where it is longer than records of its type are, or of
// no type that there is.
[[nodiscard]] Record openRecord(RecordCipher& cipher, std::span<std::uint8_t> record);

}  // namespace brevanholt::platform
