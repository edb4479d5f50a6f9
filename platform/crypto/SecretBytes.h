#pragma once

#include "platform/foundation/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace brevanholt::platform {

// Key material: wiped when it is destroyed, never copied implicitly, compared in constant time.
class SecretBytes {
 public:
  // `size` bytes, all zero.
  explicit SecretBytes(std::size_t size);
  explicit SecretBytes(std::span<const std::uint8_t> bytes);

  [[nodiscard]] std::uint8_t* data() { return storage_.get(); }
  [[nodiscard]] const std::uint8_t* data() const { return storage_.get(); }
  [[nodiscard]] std::size_t size() const { return storage_.get_deleter().size; }
  [[nodiscard]] std::span<const std::uint8_t> span() const { return {data(), size()}; }

  // The same storage as shared bytes, wiped when the last of them is dropped.
  [[nodiscard]] Bytes intoBytes() &&;

  friend bool operator==(const SecretBytes& left, const SecretBytes& right);

 private:
  struct Wipe {
    std::size_t size = 0;
    void operator()(const std::uint8_t* storage) const;
  };

  std::unique_ptr<std::uint8_t[], Wipe> storage_;
};

}  // namespace brevanholt::platform
