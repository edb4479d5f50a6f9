#pragma once

#include "platform/channel/Message.h"
#include "platform/channel/Value.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace brevanholt::platform {

// Writes values one after another into a message.
class StandardMessageWriter {
 public:
  void writeByte(std::uint8_t byte) { buffer_.push_back(byte); }
  void writeValue(const Value& value);
  void writeString(std::string_view text);
  [[nodiscard]] Message finish() &&;

 private:
  void write(std::monostate);
  void write(bool value);
  void write(std::int32_t value);
  void write(std::int64_t value);
  void write(double value);
  void write(const std::string& text) { writeString(text); }
  void write(const Bytes& bytes);
  void write(const Int32List& list);
  void write(const Int64List& list);
  void write(const Float32List& list);
  void write(const Float64List& list);
  void write(const List& list);
  void write(const Map& map);

  void writeSize(std::size_t size);
  void writeRaw(const void* data, std::size_t size);
  void align(std::size_t width);
  template <class T>
  void writeNumbers(std::uint8_t tag, const std::vector<T>& list);
  void flush();

  Message message_;
  std::vector<std::uint8_t> buffer_;  // what follows message_'s parts
};

}  // namespace brevanholt::platform
