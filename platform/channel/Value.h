#pragma once

#include "platform/foundation/Bytes.h"

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace brevanholt::platform {

class Value;
struct MapEntry;

using List = std::vector<Value>;
using Int32List = std::vector<std::int32_t>;
using Int64List = std::vector<std::int64_t>;
using Float32List = std::vector<float>;
using Float64List = std::vector<double>;

// The codec's map: entries in the order in which they were written. A key that was written twice
// answers with its later value.
class Map {
 public:
  Map();
  Map(std::initializer_list<std::pair<std::string_view, Value>> entries);
  Map(const Map&);
  Map(Map&&) noexcept;
  Map& operator=(const Map&);
  Map& operator=(Map&&) noexcept;
  ~Map();

  void reserve(std::size_t size);
  void add(Value key, Value value);
  // A further entry, of two nulls, to fill in; valid until the next.
  MapEntry& add();
  // Null where there is no such string key.
  [[nodiscard]] const Value* find(std::string_view key) const;
  [[nodiscard]] const std::vector<MapEntry>& entries() const { return entries_; }
  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] bool hasOnlyStringKeys() const;

  friend bool operator==(const Map&, const Map&);

 private:
  std::vector<MapEntry> entries_;
};

template <class T>
concept ValueAlternative =
    std::same_as<T, bool> || std::same_as<T, std::int32_t> || std::same_as<T, std::int64_t> ||
    std::same_as<T, double> || std::same_as<T, std::string> || std::same_as<T, Bytes> ||
    std::same_as<T, Int32List> || std::same_as<T, Int64List> || std::same_as<T, Float32List> ||
    std::same_as<T, Float64List> || std::same_as<T, List> || std::same_as<T, Map>;

// One value of the engine's standard message codec.
class Value {
 public:
  using Storage =
      std::variant<std::monostate, bool, std::int32_t, std::int64_t, double, std::string, Bytes,
                   Int32List, Int64List, Float32List, Float64List, List, Map>;

  Value() = default;
  Value(std::nullptr_t) {}
  template <ValueAlternative T>
  Value(T value) : storage_(std::move(value)) {}
  Value(const char* text) : storage_(std::string(text)) {}
  Value(std::string_view text) : storage_(std::string(text)) {}

  [[nodiscard]] bool isNull() const { return std::holds_alternative<std::monostate>(storage_); }
  // Null where the value is of another type.
  template <ValueAlternative T>
  [[nodiscard]] const T* getIf() const {
    return std::get_if<T>(&storage_);
  }
  // An integer of either width.
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  // A number as a fraction. Integers count: a UI written in JavaScript cannot tell 1 from 1.0.
  [[nodiscard]] std::optional<double> number() const;
  [[nodiscard]] const Storage& storage() const { return storage_; }
  // Becomes a value of that type, made from the arguments.
  template <ValueAlternative T, class... Arguments>
  T& become(Arguments&&... arguments) {
    return storage_.emplace<T>(std::forward<Arguments>(arguments)...);
  }

  friend bool operator==(const Value&, const Value&) = default;

 private:
  Storage storage_;
};

struct MapEntry {
  Value key;
  Value value;
  friend bool operator==(const MapEntry&, const MapEntry&) = default;
};

}  // namespace brevanholt::platform
