#include "platform/channel/Value.h"

#include <algorithm>

namespace brevanholt::platform {

Map::Map() = default;
Map::Map(const Map&) = default;
Map::Map(Map&&) noexcept = default;
Map& Map::operator=(const Map&) = default;
Map& Map::operator=(Map&&) noexcept = default;
Map::~Map() = default;

Map::Map(std::initializer_list<std::pair<std::string_view, Value>> entries) {
  for (const auto& [key, value] : entries) add(key, value);
}

void Map::reserve(std::size_t size) {
  entries_.reserve(size);
}

void Map::add(Value key, Value value) {
  entries_.push_back({std::move(key), std::move(value)});
}

MapEntry& Map::add() {
  return entries_.emplace_back();
}

const Value* Map::find(std::string_view key) const {
  for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
    const auto* text = entry->key.getIf<std::string>();
    if (text != nullptr && *text == key) return &entry->value;
  }
  return nullptr;
}

std::size_t Map::size() const {
  return entries_.size();
}

bool Map::hasOnlyStringKeys() const {
  return std::ranges::all_of(
      entries_, [](const MapEntry& entry) { return entry.key.getIf<std::string>() != nullptr; });
}

bool operator==(const Map& left, const Map& right) {
  return left.entries_ == right.entries_;
}

std::optional<std::int64_t> Value::integer() const {
  if (const auto* narrow = getIf<std::int32_t>()) return *narrow;
  if (const auto* wide = getIf<std::int64_t>()) return *wide;
  return std::nullopt;
}

std::optional<double> Value::number() const {
  if (const auto* fraction = getIf<double>()) return *fraction;
  if (const auto whole = integer()) return static_cast<double>(*whole);
  return std::nullopt;
}

}  // namespace brevanholt::platform
