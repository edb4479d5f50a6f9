#pragma once

#include "platform/foundation/Bytes.h"

namespace brevanholt::platform {

// Room for bytes that somebody is about to write; then they are Bytes, without a copy.
//
// The room is not cleared. Several megabytes are asked for in huge pages, where the system has
// them: letting the system hand out and clear small pages one by one takes longer than encrypting
// what is put into them.
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
