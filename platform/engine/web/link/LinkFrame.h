#pragma once

#include "platform/channel/Message.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// The message by which a page's process hands the host one end of a new page's socket.
inline constexpr const char* kPageJoinedMessage = "brevanholt-page-joined";

// What travels between the host and the page: a size (32 bits, little-endian) and a frame of that
// many bytes. A frame is a header of eight bytes, the channel's name padded to a multiple of eight,
// and the message, which so keeps its numbers aligned for JavaScript's typed arrays.
//
//   byte 0     kind
//   byte 1     length of the channel's name
//   bytes 4-7  the number that the reply to a call or an event carries; 0 where none is expected
struct LinkFrame {
  enum class Kind : std::uint8_t {
    kMessage = 0,
    kReply = 1,
    kListen = 2,  // from the page: it has a handler for the channel now
  };

  static constexpr std::size_t kSizePrefix = 4;
  // What a page may send. A larger frame is not read, and the call in it is answered with an error.
  static constexpr std::size_t kLargest = std::size_t{128} << 20;
  // As much of a frame as says what it is: all but its message.
  static constexpr std::size_t kLongestHead = 8 + 256;

  Kind kind;
  std::string channel;
  std::uint32_t number;
  Bytes message;

  // Nothing where the bytes are not a frame.
  static std::optional<LinkFrame> parse(const Bytes& frame);
  // The size and the frame.
  static Message encode(Kind kind, std::string_view channel, std::uint32_t number,
                        const Message& message);
};

}  // namespace brevanholt::platform
