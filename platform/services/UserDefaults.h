#pragma once

#include "platform/foundation/Bytes.h"

#include <map>
#include <optional>
#include <string>

namespace brevanholt::platform {

// Values that last from one run to the next, by key; keys are identifiers. Safe on any thread.
//
// A value of another type than the one asked for counts as missing. Reading throws PlatformError
// when the store cannot be read: a caller that took this for a missing value would overwrite a good
// one. Setting throws PlatformError when the value could not be stored; the old value stays.
class UserDefaults {
 public:
  using StringDictionary = std::map<std::string, std::string>;

  virtual ~UserDefaults() = default;
  [[nodiscard]] virtual std::optional<Bytes> data(const std::string& key) const = 0;
  virtual void setData(const std::string& key, const Bytes& data) = 0;
  // Any bytes, as paths have them. Empty where there is none.
  [[nodiscard]] virtual StringDictionary stringDictionary(const std::string& key) const = 0;
  virtual void setStringDictionary(const std::string& key, const StringDictionary& value) = 0;
};

}  // namespace brevanholt::platform
