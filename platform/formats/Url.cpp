#include "platform/formats/Url.h"

#include <glib.h>

#include <algorithm>
#include <memory>

namespace brevanholt::platform {
namespace {

struct Free {
  void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, Free>;

bool isBlankOrControl(unsigned char byte) {
  return byte <= 0x20 || byte == 0x7F;
}

std::string toString(const Text& text) {
  return text ? text.get() : "";
}

// Nothing where an escape stands for no character.
std::optional<std::string> decoded(std::string_view text) {
  const Text result(g_uri_unescape_segment(text.data(), text.data() + text.size(), nullptr));
  return result ? std::optional(toString(result)) : std::nullopt;
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  if (std::ranges::any_of(text, isBlankOrControl)) return std::nullopt;
  const std::string whole(text);
  char* host = nullptr;
  char* query = nullptr;
  const bool isUrl = g_uri_split(whole.c_str(), G_URI_FLAGS_ENCODED, nullptr, nullptr, &host,
                                 nullptr, nullptr, &query, nullptr, nullptr) != FALSE;
  const Text ownedHost(host);
  const Text ownedQuery(query);
  const std::size_t colon = whole.find(':');
  // Without a colon before the first of these it is a relative reference.
  const bool hasScheme = colon != std::string::npos && colon < whole.find_first_of("/?#");
  if (!isUrl || !hasScheme || colon == 0) return std::nullopt;
  Url url;
  url.scheme_ = whole.substr(0, colon);  // the parser lowers its letters
  url.host_ = toString(ownedHost);
  url.query_ = toString(ownedQuery);
  return url;
}

std::optional<std::string> Url::queryItem(std::string_view name) const {
  for (std::string_view rest = query_; !rest.empty();) {
    const std::string_view item = rest.substr(0, rest.find('&'));
    rest.remove_prefix(std::min(item.size() + 1, rest.size()));
    const std::size_t equals = item.find('=');
    if (decoded(item.substr(0, equals)) != name) continue;
    if (equals == std::string_view::npos) return std::nullopt;
    return decoded(item.substr(equals + 1));
  }
  return std::nullopt;
}

}  // namespace brevanholt::platform
