#pragma once

#include "platform/channel/StandardMethodCodec.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace brevanholt {

// The UI broke the channel's contract. Logs the method and the key, and ends the process.
[[noreturn]] void preconditionFailure(std::string_view method, std::string_view key);

// The arguments of one call. Borrows the call.
class CallArguments {
 public:
  explicit CallArguments(const platform::MethodCall& call) : call_(call) {}

  // All of them; the process ends where they are not a map whose keys are all strings.
  [[nodiscard]] const platform::Map& map() const;

  // A required argument; the process ends where it is absent or of another type.
  template <platform::ValueAlternative T>
  [[nodiscard]] const T& required(std::string_view key) const {
    const auto* value = optional<T>(key);
    if (value == nullptr) preconditionFailure(call_.method, key);
    return *value;
  }

  // A required string as a path. Nothing where no path can hold it.
  [[nodiscard]] std::optional<std::filesystem::path> path(std::string_view key) const;

  // Null where the argument is absent or of another type.
  template <platform::ValueAlternative T>
  [[nodiscard]] const T* optional(std::string_view key) const {
    const auto* value = map().find(key);
    return value != nullptr ? value->getIf<T>() : nullptr;
  }

  // A Boolean that counts as false where it is absent or of another type.
  [[nodiscard]] bool isTrue(std::string_view key) const {
    const auto* value = optional<bool>(key);
    return value != nullptr && *value;
  }

 private:
  const platform::MethodCall& call_;
};

}  // namespace brevanholt
