#include "Shared/JsonScalar.h"

#include <cstddef>

namespace brevanholt {
namespace {

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isHexDigit(char character) {
  return isDigit(character) || (character >= 'a' && character <= 'f') ||
         (character >= 'A' && character <= 'F');
}

bool take(std::string_view& text, std::string_view anyOf) {
  if (text.empty() || anyOf.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

bool takeDigits(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && isDigit(text[count])) ++count;
  text.remove_prefix(count);
  return count > 0;
}

bool isNumber(std::string_view token) {
  take(token, "-");
  if (!take(token, "0") && !takeDigits(token)) return false;
  if (take(token, ".") && !takeDigits(token)) return false;
  if (take(token, "eE")) {
    take(token, "+-");
    if (!takeDigits(token)) return false;
  }
  return token.empty();
}

}  // namespace

bool isJsonStringContent(std::string_view content) {
  for (std::size_t at = content.find('\\'); at != std::string_view::npos;
       at = content.find('\\', at)) {
    if (++at == content.size()) return false;
    const char escape = content[at++];
    if (std::string_view("\"\\/bfnrtu").find(escape) == std::string_view::npos) return false;
    if (escape != 'u') continue;
    for (const std::size_t end = at + 4; at < end; ++at) {
      if (at >= content.size() || !isHexDigit(content[at])) return false;
    }
  }
  return true;
}

bool isJsonScalar(std::string_view token) {
  if (token.size() >= 2 && token.front() == '"' && token.back() == '"') {
    return isJsonStringContent(token.substr(1, token.size() - 2));
  }
  return token == "true" || token == "false" || token == "null" || isNumber(token);
}

}  // namespace brevanholt
