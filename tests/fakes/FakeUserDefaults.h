#pragma once

#include "platform/foundation/PlatformError.h"
#include "platform/services/UserDefaults.h"

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
  int writes = 0;

 private:
  template <class T>
  std::optional<T> find(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    if (refusesReading) throw PlatformError("the defaults cannot be read");
    const auto found = values_.find(key);
    if (found == values_.end() || !std::holds_alternative<T>(found->second)) return std::nullopt;
    return std::get<T>(found->second);
  }
  void set(const std::string& key, const std::variant<Bytes, StringDictionary>& value) {
    const std::lock_guard lock(mutex_);
    if (refusesSetting) throw PlatformError("the defaults cannot be kept");
    values_[key] = value;
    ++writes;
  }

  mutable std::mutex mutex_;
  std::map<std::string, std::variant<Bytes, StringDictionary>> values_;
};

}  // namespace brevanholt::platform
