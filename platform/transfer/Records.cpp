#include "platform/transfer/Records.h"

#include "platform/foundation/PlatformError.h"

#include <algorithm>
#include <cerrno>

namespace brevanholt::platform {
namespace {

using Layout = RecordLayout;

template <class Number>
void write(std::span<std::uint8_t, sizeof(Number)> bytes, Number number) {
  for (std::size_t at = bytes.size(); at-- > 0; number = static_cast<Number>(number >> 8)) {
    bytes[at] = static_cast<std::uint8_t>(number);
  }
}

template <class Number>
Number read(std::span<const std::uint8_t> bytes) {
  Number number = 0;
  for (std::size_t at = 0; at < sizeof(Number); ++at) {
    number = static_cast<Number>(number << 8 | bytes[at]);
  }
  return number;
}

[[noreturn]] void refuse(int errorNumber) {
  throw SystemError("understand the record", errorNumber);
}

}  // namespace

void writeSegmentHead(std::span<std::uint8_t, Layout::kSegment> head, std::uint32_t entry,
                      std::uint32_t length, std::uint64_t offset) {
  write<std::uint32_t>(head.subspan<0, 4>(), entry);
  write<std::uint32_t>(head.subspan<4, 4>(), length);
  write<std::uint64_t>(head.subspan<8, 8>(), offset);
}

std::optional<Segment> SegmentReader::next() {
  if (rest_.empty()) return std::nullopt;
  if (rest_.size() < Layout::kSegment || ++count_ > Layout::kMostSegments) refuse(EPROTO);
  const auto length = read<std::uint32_t>(rest_.subspan(4));
  const Segment segment{read<std::uint32_t>(rest_), read<std::uint64_t>(rest_.subspan(8)), {}};
  rest_ = rest_.subspan(Layout::kSegment);
  if (length > rest_.size()) refuse(EPROTO);
  const auto bytes = rest_.first(length);
  rest_ = rest_.subspan(length);
  return Segment{segment.entry, segment.offset, bytes};
}

std::uint32_t frameSize(std::span<const std::uint8_t, Layout::kSize> bytes) {
  return read<std::uint32_t>(bytes);
}

void sealRecord(RecordCipher& cipher, std::uint8_t type, std::span<std::uint8_t> record) {
  const auto header = record.first<Layout::kHeader>();
  std::ranges::fill(header, std::uint8_t{0});
  write<std::uint32_t>(header.first<Layout::kSize>(),
                       static_cast<std::uint32_t>(record.size() - Layout::kSize));
  header[Layout::kSize] = type;
  const auto text =
      record.subspan(Layout::kHeader, record.size() - Layout::kHeader - RecordCipher::kTagSize);
  cipher.seal(header, text, record.last<RecordCipher::kTagSize>());
}

Record openRecord(RecordCipher& cipher, std::span<std::uint8_t> record) {
  if (record.size() < Layout::kHeader + RecordCipher::kTagSize) refuse(EPROTO);
  const auto header = record.first<Layout::kHeader>();
  const auto body =
      record.subspan(Layout::kHeader, record.size() - Layout::kHeader - RecordCipher::kTagSize);
  const std::uint8_t type = header[Layout::kSize];
  const bool isZero = std::ranges::all_of(header.subspan(Layout::kSize + 1),
                                          [](std::uint8_t byte) { return byte == 0; });
  const std::size_t largest =
      type < Layout::kContent ? Layout::kLargestControl : Layout::kLargestContent;
  if (!isZero || type > Layout::kContent || body.size() > largest) refuse(EPROTO);
  if (!cipher.open(header, body, record.last<RecordCipher::kTagSize>())) refuse(EBADMSG);
  return {type, body};
}

}  // namespace brevanholt::platform
