#pragma once

#include "platform/channel/Value.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace brevanholt::platform {

// Reads values one after another out of a message that may hold anything at all; throws CodecError.
class StandardMessageReader {
 public:
  explicit StandardMessageReader(Bytes message);

  [[nodiscard]] std::uint8_t readByte();
  [[nodiscard]] Value readValue();
  // Every byte must have been read.
  void expectEnd() const;

 private:
  // Reads into a value that is null, where it stands: a long list is not moved about as it grows.
  void readInto(Value& value);
  void readListInto(List& list);
  void readMapInto(Map& map);
  [[nodiscard]] std::size_t readSize();
  [[nodiscard]] std::string_view readString();
  [[nodiscard]] Bytes readBytes();
  template <class T>
  [[nodiscard]] T readNumber();
  template <class T>
  [[nodiscard]] std::vector<T> readNumbers();

  [[nodiscard]] const std::uint8_t* take(std::size_t size);
  [[nodiscard]] std::size_t remaining() const { return message_.size() - position_; }
  void align(std::size_t width);
  // Counts the memory that a list's or map's elements are about to take.
  void charge(std::size_t count, std::size_t elementSize);

  Bytes message_;
  std::size_t budget_;  // bytes that elements may still take
  std::size_t position_ = 0;
  int depth_ = 0;
};

}  // namespace brevanholt::platform
