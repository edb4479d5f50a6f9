#include "platform/foundation/PlatformError.h"
#include "platform/transfer/IncomingContent.h"
#include "platform/transfer/Records.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include "fuzz/FuzzInput.h"

using namespace brevanholt::platform;

namespace {

constexpr std::array<std::uint8_t, 32> kKey{};
constexpr std::uint64_t kSize = 100;  // of each entry that is expected

// Opens a record as a connection does, and takes its content to memory.
void receive(std::span<std::uint8_t> bytes) {
  RecordCipher cipher(RecordCipher::Direction::kOpen, kKey);
  IncomingContent content([](std::uint32_t entry) -> std::optional<IncomingPart> {
    if (entry % 8 == 7) return std::nullopt;
    return IncomingPart{entry, std::nullopt, entry % 4, kSize};
  });
  Arrival news;
  try {
    const Record record = openRecord(cipher, bytes);
    if (record.type != RecordLayout::kContent) return;
    SegmentReader segments(record.body);
    content.take(segments, news);
    if (news.taken > record.body.size() + RecordLayout::kMostSegments * 4) std::abort();
    for (const auto& [entry, memory] : news.whole) {
      if (memory.size() > kSize) std::abort();
    }
  } catch (const SystemError& error) {
    if (error.errorNumber() != EPROTO && error.errorNumber() != EBADMSG) std::abort();
  }
}

}  // namespace

// The input is a record as a stranger may send it, and then the body of one that is sealed well.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::uint8_t> raw(data, data + size);
  receive(raw);
  std::vector<std::uint8_t> record(RecordLayout::kHeader + size + RecordCipher::kTagSize);
  std::copy(data, data + size, record.begin() + RecordLayout::kHeader);
  RecordCipher cipher(RecordCipher::Direction::kSeal, kKey);
  sealRecord(cipher, RecordLayout::kContent, record);
  receive(record);
  return 0;
}
