#include "platform/foundation/Url.h"

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

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
  if (std::ranges::any_of(text, isBlankOrControl)) return std::nullopt;
  const std::string whole(text);
  char* host = nullptr;
  char* query = nullptr;
  const bool isUrl = g_uri_split(whole.c_str(), G_URI_FLAGS_ENCODED_QUERY, nullptr, nullptr, &host,
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
  GUriParamsIter items;
  g_uri_params_iter_init(&items, query_.c_str(), -1, "&", G_URI_PARAMS_NONE);
  char* key = nullptr;
  char* value = nullptr;
  while (g_uri_params_iter_next(&items, &key, &value, nullptr) != FALSE) {
    const Text ownedKey(key);
    const Text ownedValue(value);
    if (name == key) return toString(ownedValue);
  }
  return std::nullopt;
}

}  // namespace brevanholt::platform
