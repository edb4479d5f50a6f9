#include "platform/channel/StandardMessageReader.h"

#include "platform/channel/StandardMessageTags.h"
#include "platform/channel/StandardMethodCodec.h"
#include "platform/foundation/Utf8.h"

#include <algorithm>
#include <cstring>

namespace brevanholt::platform {
namespace {

using Cause = CodecError::Cause;

// The most elements that memory is reserved for before they have been read.
constexpr std::size_t kTrustedElements = 256;

// A decoded value takes up to forty times the memory of its encoding (a null is one byte), so the
// decoded size has a limit of its own.
constexpr std::size_t kMemoryOfAnyMessage = 64 << 20;
constexpr std::size_t kMemoryPerByte = 16;

class DepthGuard {
 public:
  explicit DepthGuard(int& depth) : depth_(depth) {
    if (++depth_ > StandardMethodCodec::kMaximumDepth) {
      --depth_;
      throw CodecError(Cause::kTooDeep, "lists and maps are nested too deeply");
    }
  }
  ~DepthGuard() { --depth_; }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;

 private:
  int& depth_;
};

}  // namespace

StandardMessageReader::StandardMessageReader(Bytes message)
    : message_(std::move(message)),
      budget_(std::max(kMemoryOfAnyMessage, message_.size() * kMemoryPerByte)) {}

std::uint8_t StandardMessageReader::readByte() {
  return *take(1);
}

Value StandardMessageReader::readValue() {
  Value value;
  readInto(value);
  return value;
}

void StandardMessageReader::readInto(Value& value) {
  switch (readByte()) {
    case kNullTag:
      return;
    case kTrueTag:
      value.become<bool>(true);
      return;
    case kFalseTag:
      value.become<bool>(false);
      return;
    case kInt32Tag:
      value.become<std::int32_t>(readNumber<std::int32_t>());
      return;
    case kInt64Tag:
      value.become<std::int64_t>(readNumber<std::int64_t>());
      return;
    case kFloat64Tag:
      align(sizeof(double));
      value.become<double>(readNumber<double>());
      return;
    case kStringTag:
      value.become<std::string>(readString());
      return;
    case kBytesTag:
      value.become<Bytes>(readBytes());
      return;
    case kInt32ListTag:
      value.become<Int32List>(readNumbers<std::int32_t>());
      return;
    case kInt64ListTag:
      value.become<Int64List>(readNumbers<std::int64_t>());
      return;
    case kFloat32ListTag:
      value.become<Float32List>(readNumbers<float>());
      return;
    case kFloat64ListTag:
      value.become<Float64List>(readNumbers<double>());
      return;
    case kListTag:
      return readListInto(value.become<List>());
    case kMapTag:
      return readMapInto(value.become<Map>());
    default:
      throw CodecError(Cause::kUnknownTag, "a value has an unknown type");
  }
}

void StandardMessageReader::expectEnd() const {
  if (remaining() != 0) throw CodecError(Cause::kTrailingBytes, "bytes follow the last value");
}

std::size_t StandardMessageReader::readSize() {
  const std::uint8_t first = readByte();
  if (first == kSize16) return readNumber<std::uint16_t>();
  if (first == kSize32) return readNumber<std::uint32_t>();
  return first;
}

std::string_view StandardMessageReader::readString() {
  const std::size_t size = readSize();
  const std::string_view text(reinterpret_cast<const char*>(take(size)), size);
  if (!isValidUtf8(text)) throw CodecError(Cause::kInvalidUtf8, "a string is not UTF-8");
  return text;
}

Bytes StandardMessageReader::readBytes() {
  const std::size_t size = readSize();
  static_cast<void>(take(size));
  return message_.slice(position_ - size, size);
}

void StandardMessageReader::readListInto(List& list) {
  const DepthGuard guard(depth_);
  const std::size_t size = readSize();
  if (size > remaining()) throw CodecError(Cause::kTruncated, "a list is cut short");
  charge(size, sizeof(Value));
  list.reserve(std::min(size, kTrustedElements));
  for (std::size_t index = 0; index < size; ++index) readInto(list.emplace_back());
}

void StandardMessageReader::readMapInto(Map& map) {
  const DepthGuard guard(depth_);
  const std::size_t size = readSize();
  if (size > remaining() / 2) throw CodecError(Cause::kTruncated, "a map is cut short");
  charge(size, sizeof(MapEntry));
  map.reserve(std::min(size, kTrustedElements));
  for (std::size_t index = 0; index < size; ++index) {
    MapEntry& entry = map.add();
    readInto(entry.key);
    readInto(entry.value);
  }
}

template <class T>
T StandardMessageReader::readNumber() {
  T number;
  std::memcpy(&number, take(sizeof(T)), sizeof(T));
  return number;
}

template <class T>
std::vector<T> StandardMessageReader::readNumbers() {
  const std::size_t size = readSize();
  align(sizeof(T));
  if (size > remaining() / sizeof(T)) throw CodecError(Cause::kTruncated, "a list is cut short");
  std::vector<T> list(size);
  if (size != 0) std::memcpy(list.data(), take(size * sizeof(T)), size * sizeof(T));
  return list;
}

const std::uint8_t* StandardMessageReader::take(std::size_t size) {
  if (size > remaining()) throw CodecError(Cause::kTruncated, "the message is cut short");
  const auto* start = message_.data() + position_;
  position_ += size;
  return start;
}

void StandardMessageReader::charge(std::size_t count, std::size_t elementSize) {
  if (count > budget_ / elementSize) {
    throw CodecError(Cause::kTooLarge, "the values take too much memory");
  }
  budget_ -= count * elementSize;
}

void StandardMessageReader::align(std::size_t width) {
  const std::size_t past = position_ % width;
  if (past != 0) static_cast<void>(take(width - past));
}

}  // namespace brevanholt::platform
