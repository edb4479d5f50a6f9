#pragma once

#include "platform/foundation/PlatformError.h"
#include "platform/foundation/UserDefaults.h"

#include <mutex>
#include <variant>

namespace brevanholt::platform {

// User defaults in memory.
class FakeUserDefaults final : public UserDefaults {
 public:
  [[nodiscard]] std::optional<Bytes> data(const std::string& key) const override {
    return find<Bytes>(key);
  }
  void setData(const std::string& key, const Bytes& data) override { set(key, data); }
  [[nodiscard]] StringDictionary stringDictionary(const std::string& key) const override {
    return find<StringDictionary>(key).value_or(StringDictionary());
  }
  void setStringDictionary(const std::string& key, const StringDictionary& value) override {
    set(key, value);
  }

  bool refusesReading = false;
  bool refusesSetting = false;

 private:
  using Stored = std::variant<Bytes, StringDictionary>;

  template <class T>
  std::optional<T> find(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    if (refusesReading) throw PlatformError("the defaults cannot be read");
    const auto found = values_.find(key);
    const auto* value = found != values_.end() ? std::get_if<T>(&found->second) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
  }
  void set(const std::string& key, Stored value) {
    const std::lock_guard lock(mutex_);
    if (refusesSetting) throw PlatformError("the defaults cannot be kept");
    values_[key] = std::move(value);
  }

  mutable std::mutex mutex_;
  std::map<std::string, Stored> values_;
};

}  // namespace brevanholt::platform
