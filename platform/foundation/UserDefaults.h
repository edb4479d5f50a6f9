#pragma once

#include "platform/foundation/Bytes.h"

#include <map>
#include <optional>
#include <string>

namespace brevanholt::platform {

// What lasts from one run to the next, by key; keys are identifiers. Safe on any thread.
//
// A value of another type than the one asked for counts as missing. Reading throws PlatformError
// when it cannot be told what is kept: whoever takes that for missing would put something new in
// the place of something good. Setting throws PlatformError when the value could not be kept; what
// was kept before is kept still.
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
