#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// A URL taken apart (RFC 3986). Scheme and host are as they were written, so that they can be
// compared exactly.
class Url {
 public:
  // Nothing where `text` is no absolute URL; white space and control characters make it none.
  [[nodiscard]] static std::optional<Url> parse(std::string_view text);

  [[nodiscard]] const std::string& scheme() const { return scheme_; }
  [[nodiscard]] const std::string& host() const { return host_; }
  // The decoded value of the first query item of that name; nothing where there is none, or
  // where it has no value. Items are separated by "&".
  [[nodiscard]] std::optional<std::string> queryItem(std::string_view name) const;

 private:
  std::string scheme_;
  std::string host_;
  std::string query_;  // encoded
};

}  // namespace brevanholt::platform
