#include "platform/channel/StandardMessageWriter.h"

#include "platform/channel/StandardMessageTags.h"
#include "platform/foundation/Utf8.h"

#include <stdexcept>

namespace brevanholt::platform {
namespace {

// From this size on a byte list is shared instead of copied; below, a part costs more than a copy.
constexpr std::size_t kSharedBytes = 4096;

}  // namespace

void StandardMessageWriter::writeValue(const Value& value) {
  std::visit([this](const auto& alternative) { write(alternative); }, value.storage());
}

void StandardMessageWriter::writeString(std::string_view text) {
  if (!isValidUtf8(text)) return writeString(repairedUtf8(text));
  writeByte(kStringTag);
  writeSize(text.size());
  writeRaw(text.data(), text.size());
}

Message StandardMessageWriter::finish() && {
  flush();
  return std::move(message_);
}

void StandardMessageWriter::write(std::monostate) {
  writeByte(kNullTag);
}

void StandardMessageWriter::write(bool value) {
  writeByte(value ? kTrueTag : kFalseTag);
}

void StandardMessageWriter::write(std::int32_t value) {
  writeByte(kInt32Tag);
  writeRaw(&value, sizeof(value));
}

void StandardMessageWriter::write(std::int64_t value) {
  writeByte(kInt64Tag);
  writeRaw(&value, sizeof(value));
}

void StandardMessageWriter::write(double value) {
  writeByte(kFloat64Tag);
  align(sizeof(value));
  writeRaw(&value, sizeof(value));
}

void StandardMessageWriter::write(const Bytes& bytes) {
  writeByte(kBytesTag);
  writeSize(bytes.size());
  if (bytes.size() < kSharedBytes) return writeRaw(bytes.data(), bytes.size());
  flush();
  message_.append(bytes);
}

void StandardMessageWriter::write(const Int32List& list) {
  writeNumbers(kInt32ListTag, list);
}
void StandardMessageWriter::write(const Int64List& list) {
  writeNumbers(kInt64ListTag, list);
}
void StandardMessageWriter::write(const Float32List& list) {
  writeNumbers(kFloat32ListTag, list);
}
void StandardMessageWriter::write(const Float64List& list) {
  writeNumbers(kFloat64ListTag, list);
}

void StandardMessageWriter::write(const List& list) {
  writeByte(kListTag);
  writeSize(list.size());
  for (const auto& element : list) writeValue(element);
}

void StandardMessageWriter::write(const Map& map) {
  writeByte(kMapTag);
  writeSize(map.size());
  for (const auto& [key, value] : map.entries()) {
    writeValue(key);
    writeValue(value);
  }
}

void StandardMessageWriter::writeSize(std::size_t size) {
  if (size < kSize16) return writeByte(static_cast<std::uint8_t>(size));
  if (size <= UINT16_MAX) {
    const auto narrow = static_cast<std::uint16_t>(size);
    writeByte(kSize16);
    return writeRaw(&narrow, sizeof(narrow));
  }
  if (size > UINT32_MAX) throw std::length_error("a value of over 4 GiB cannot be encoded");
  const auto wide = static_cast<std::uint32_t>(size);
  writeByte(kSize32);
  writeRaw(&wide, sizeof(wide));
}

void StandardMessageWriter::writeRaw(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  buffer_.insert(buffer_.end(), bytes, bytes + size);
}

void StandardMessageWriter::align(std::size_t width) {
  while ((message_.size() + buffer_.size()) % width != 0) writeByte(0);
}

template <class T>
void StandardMessageWriter::writeNumbers(std::uint8_t tag, const std::vector<T>& list) {
  writeByte(tag);
  writeSize(list.size());
  align(sizeof(T));
  writeRaw(list.data(), list.size() * sizeof(T));
}

void StandardMessageWriter::flush() {
  message_.append(std::exchange(buffer_, {}));
}

}  // namespace brevanholt::platform
