#include "platform/linux/storage/KeyFileText.h"

#include <algorithm>
#include <string>

namespace brevanholt::platform {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

std::string_view keyOf(std::string_view line) {
  return withoutBlanks(line.substr(0, line.find('=')));
}

bool isComment(std::string_view line) {
  return line.empty() || line.front() == '#';
}

bool isGroup(std::string_view line) {
  return line.size() > 2 && line.front() == '[' && line.back() == ']';
}

}  // namespace

// A line without its end, by position; beyond the text there is none.
struct KeyFileText::Line {
  static Line at(std::string_view text, std::size_t start) {
    return {start, std::min(text.find('\n', start), text.size())};
  }
  [[nodiscard]] Line next(std::string_view text) const { return at(text, end + 1); }
  [[nodiscard]] bool exists(std::string_view text) const { return start < text.size(); }
  [[nodiscard]] std::string_view in(std::string_view text) const {
    return withoutBlanks(text.substr(start, end - start));
  }

  std::size_t start = 0;
  std::size_t end = 0;
};

std::optional<KeyFileText> KeyFileText::parse(SecretText text) {
  const std::string_view all = text;
  if (all.find('\0') != std::string_view::npos) return std::nullopt;
  bool isInGroup = false;
  for (Line line = Line::at(all, 0); line.exists(all); line = line.next(all)) {
    const std::string_view content = line.in(all);
    if (isComment(content)) continue;
    if (isGroup(content)) {
      isInGroup = true;
    } else if (!isInGroup || content.find('=') == std::string_view::npos ||
               keyOf(content).empty()) {
      return std::nullopt;
    }
  }
  KeyFileText file;
  file.text_ = std::move(text);
  return file;
}

std::optional<KeyFileText::Line> KeyFileText::find(std::string_view group,
                                                   std::string_view key) const {
  const std::string_view all = text_;
  const std::string header = "[" + std::string(group) + "]";
  bool isInGroup = false;
  std::optional<Line> found;
  for (Line line = Line::at(all, 0); line.exists(all); line = line.next(all)) {
    const std::string_view content = line.in(all);
    if (isComment(content)) continue;
    if (isGroup(content)) {
      isInGroup = content == header;
      if (isInGroup && key.empty()) found = line;
    } else if (isInGroup && keyOf(content) == key) {
      found = line;
    }
  }
  return found;
}

std::optional<SecretText> KeyFileText::value(std::string_view group, std::string_view key) const {
  const auto line = find(group, key);
  if (!line) return std::nullopt;
  const std::string_view content = line->in(text_);
  return SecretText(withoutBlanks(content.substr(content.find('=') + 1)));
}

void KeyFileText::setValue(std::string_view group, std::string_view key, std::string_view value) {
  SecretText line(key);
  line.append("=").append(value);
  if (const auto old = find(group, key)) {
    text_.replace(old->start, old->end - old->start, line);
    return;
  }
  const auto header = find(group, {});
  if (header) {
    text_.insert(header->end, SecretText("\n").append(line));
    return;
  }
  if (!text_.empty() && !text_.ends_with('\n')) text_.append("\n");
  text_.append("[").append(group).append("]\n").append(line).append("\n");
}

}  // namespace brevanholt::platform
