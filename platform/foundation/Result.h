#pragma once

#include "platform/foundation/PlatformError.h"

#include <utility>
#include <variant>

namespace brevanholt::platform {

// What an operation that finishes later hands to its callback: the value, or why there is none.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : outcome_(std::in_place_index<0>, std::move(value)) {}
  Result(PlatformError error) : outcome_(std::in_place_index<1>, std::move(error)) {}

  [[nodiscard]] bool ok() const { return outcome_.index() == 0; }
  explicit operator bool() const { return ok(); }

  // Throws the error where there is no value.
  [[nodiscard]] T& value() & { return check(), std::get<0>(outcome_); }
  [[nodiscard]] const T& value() const& { return check(), std::get<0>(outcome_); }
  [[nodiscard]] T&& value() && { return check(), std::get<0>(std::move(outcome_)); }
  // Only where !ok().
  [[nodiscard]] const PlatformError& error() const { return std::get<1>(outcome_); }

 private:
  void check() const {
    if (!ok()) throw error();
  }

  std::variant<T, PlatformError> outcome_;
};

// The result of an operation that has nothing to say but that it was done.
struct Done {};

}  // namespace brevanholt::platform
