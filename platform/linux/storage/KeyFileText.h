#pragma once

#include "platform/foundation/SecretText.h"

#include <optional>
#include <string_view>

namespace brevanholt::platform {

// The text of a key file, of which one group is read and changed; other groups and comments stay as
// they are. GLib's parser is not used because it leaves copies of every value in memory.
class KeyFileText {
 public:
  // An empty file.
  KeyFileText() = default;
  // Nothing where the text is not a key file: every line must be blank, a comment ("#…"), a group
  // ("[…]") or, in a group, a key and its value ("key=value").
  [[nodiscard]] static std::optional<KeyFileText> parse(SecretText text);

  // As it stands in the file. Where the key stands several times, the last one counts.
  [[nodiscard]] std::optional<SecretText> value(std::string_view group, std::string_view key) const;
  // `value` has no line break.
  void setValue(std::string_view group, std::string_view key, std::string_view value);

  [[nodiscard]] std::string_view text() const { return text_; }

 private:
  struct Line;

  [[nodiscard]] std::optional<Line> find(std::string_view group, std::string_view key) const;

  SecretText text_;
};

}  // namespace brevanholt::platform
