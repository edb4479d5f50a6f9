#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace brevanholt::platform {

// One direction of one connection, sealed with AES-256-GCM (NIST SP 800-38D). The nonce is four
// zero bytes and a counter of 64 bits, as in the Noise framework (revision 34, section 12), which
// begins at 0 and counts every record: records have to be opened in the order in which they were
// sealed.
class RecordCipher {
 public:
  static constexpr std::size_t kTagSize = 16;
  enum class Direction { kOpen = 0, kSeal = 1 };

  // Throws PlatformError for a key that has not 32 bytes.
  RecordCipher(Direction direction, std::span<const std::uint8_t> key);
  ~RecordCipher();
  RecordCipher(const RecordCipher&) = delete;
  RecordCipher& operator=(const RecordCipher&) = delete;

  // Encrypts the text where it stands. The header is authenticated with it.
  void seal(std::span<const std::uint8_t> header, std::span<std::uint8_t> text,
            std::span<std::uint8_t, kTagSize> tag);

  // Decrypts the text where it stands. False, and the text wiped, where header, text or tag are not
  // those of the other side's next record.
  [[nodiscard]] bool open(std::span<const std::uint8_t> header, std::span<std::uint8_t> text,
                          std::span<const std::uint8_t, kTagSize> tag);

 private:
  struct Context;
  void begin(std::span<const std::uint8_t> header);
  void run(std::span<std::uint8_t> text);

  std::unique_ptr<Context> context_;
  std::uint64_t counter_ = 0;
};

}  // namespace brevanholt::platform
