#include "platform/engine/web/link/LinkFrame.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kKindAt = 0;
constexpr std::size_t kNameLengthAt = 1;
constexpr std::size_t kNumberAt = 4;
constexpr std::size_t kLongestName = 255;

constexpr std::size_t padded(std::size_t size) {
  return (size + 7) / 8 * 8;
}

}  // namespace

std::optional<LinkFrame> LinkFrame::parse(const Bytes& frame) {
  if (frame.size() < kHeader || frame.data()[kKindAt] > static_cast<std::uint8_t>(Kind::kListen)) {
    return std::nullopt;
  }
  const std::size_t nameLength = frame.data()[kNameLengthAt];
  const std::size_t messageAt = kHeader + padded(nameLength);
  if (frame.size() < messageAt) return std::nullopt;
  LinkFrame parsed{
      .kind = static_cast<Kind>(frame.data()[kKindAt]),
      .channel = std::string(reinterpret_cast<const char*>(frame.data()) + kHeader, nameLength),
      .number = 0,
      .message = frame.slice(messageAt, frame.size() - messageAt)};
  std::memcpy(&parsed.number, frame.data() + kNumberAt, sizeof(parsed.number));
  return parsed;
}

Message LinkFrame::encode(Kind kind, std::string_view channel, std::uint32_t number,
                          const Message& message) {
  channel = channel.substr(0, kLongestName);
  const std::size_t headerSize = kHeader + padded(channel.size());
  const auto frameSize = static_cast<std::uint32_t>(headerSize + message.size());
  std::vector<std::uint8_t> head(kSizePrefix + headerSize);
  std::memcpy(head.data(), &frameSize, sizeof(frameSize));
  std::uint8_t* header = head.data() + kSizePrefix;
  header[kKindAt] = static_cast<std::uint8_t>(kind);
  header[kNameLengthAt] = static_cast<std::uint8_t>(channel.size());
  std::memcpy(header + kNumberAt, &number, sizeof(number));
  std::ranges::copy(channel, header + kHeader);

  Message encoded{Bytes(std::move(head))};
  for (const Bytes& part : message.parts()) encoded.append(part);
  return encoded;
}

}  // namespace brevanholt::platform
