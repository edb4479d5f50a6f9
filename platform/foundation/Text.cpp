#include "platform/foundation/Text.h"

#include "platform/foundation/Utf8.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace brevanholt::platform {
namespace {

bool isWhitespaceOrNewline(UChar32 codePoint) {
  if (codePoint < 0) return false;
  if ((codePoint >= 0x09 && codePoint <= 0x0D) || codePoint == 0x85) return true;
  return (U_GET_GC_MASK(codePoint) & (U_GC_ZS_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) != 0;
}

}  // namespace

std::string trimmed(std::string_view text) {
  std::size_t start = text.size();  // of the first code point that stays
  std::size_t end = text.size();    // of the last one
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t at = position;
    if (isWhitespaceOrNewline(nextCodePoint(text, position))) continue;
    start = std::min(start, at);
    end = position;
  }
  return std::string(text.substr(start, end - start));
}

std::vector<std::size_t> characterEnds(std::string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  const std::unique_ptr<UText, decltype(&utext_close)> source(
      utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status),
      utext_close);
  if (U_SUCCESS(status)) characters->setText(source.get(), status);
  if (U_FAILURE(status)) throw std::runtime_error("ICU has no rules for characters");
  std::vector<std::size_t> ends;
  for (int end = characters->next(); end != icu::BreakIterator::DONE; end = characters->next()) {
    ends.push_back(static_cast<std::size_t>(end));
  }
  return ends;
}

std::size_t characterCount(std::string_view text) {
  return characterEnds(text).size();
}

std::string withoutNuls(std::string_view text) {
  std::string cleaned;
  for (std::size_t nul = 0; (nul = text.find('\0')) != std::string_view::npos;) {
    cleaned.append(text.substr(0, nul)).append("\xEF\xBF\xBD");
    text.remove_prefix(nul + 1);
  }
  return cleaned.append(text);
}

std::string_view fittedTo(std::size_t mostBytes, std::string_view text) {
  if (text.size() <= mostBytes) return text;
  const std::vector<std::size_t> ends = characterEnds(text);
  const auto tooFar = std::ranges::upper_bound(ends, mostBytes);
  return text.substr(0, tooFar == ends.begin() ? 0 : *std::prev(tooFar));
}

}  // namespace brevanholt::platform
