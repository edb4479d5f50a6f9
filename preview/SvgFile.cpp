#include "preview/SvgFile.h"

#include <algorithm>

namespace brevanholt::preview {
namespace {

constexpr std::size_t kLongestProlog = 64 << 10;
constexpr std::string_view kWhiteSpace = " \t\r\n";

// Takes `open` … `close` off the front, or all there is where it does not close. False where the
// text does not begin with it.
bool skip(std::string_view& text, std::string_view open, std::string_view close) {
  if (!text.starts_with(open)) return false;
  const std::size_t end = text.find(close, open.size());
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + close.size());
  return true;
}

// A document type may hold declarations in brackets.
bool skipDocumentType(std::string_view& text) {
  constexpr std::string_view kOpen = "<!DOCTYPE";
  const bool hasDeclarations = text.find('[') < text.find('>');
  if (!skip(text, kOpen, hasDeclarations ? "]" : ">")) return false;
  return !hasDeclarations || skip(text, "", ">");
}

}  // namespace

bool isSvg(ByteSpan file) {
  std::string_view rest = text(from(file, 0, kLongestProlog));
  skip(rest, "\xEF\xBB\xBF", "");
  do {
    rest.remove_prefix(std::min(rest.find_first_not_of(kWhiteSpace), rest.size()));
  } while (skip(rest, "<?", "?>") || skip(rest, "<!--", "-->") || skipDocumentType(rest));
  if (!rest.starts_with('<')) return false;
  const std::string_view name = rest.substr(1, rest.find_first_of(" \t\r\n/>") - 1);
  return name == "svg" || name.ends_with(":svg");
}

}  // namespace brevanholt::preview
