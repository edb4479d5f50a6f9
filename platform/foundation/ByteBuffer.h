#pragma once

#include "platform/foundation/Bytes.h"

namespace brevanholt::platform {

// A buffer to write into, which then becomes Bytes without a copy.
//
// It is not cleared. A buffer of several megabytes asks for huge pages: faulting in small pages one
// by one takes longer than encrypting their content.
class ByteBuffer {
 public:
  explicit ByteBuffer(std::size_t size);

  [[nodiscard]] std::uint8_t* data() { return storage_.get(); }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] Bytes finish() &&;

 private:
  std::size_t size_;
  std::shared_ptr<std::uint8_t[]> storage_;
};

}  // namespace brevanholt::platform
