#include "platform/formats/Base64.h"

#include "platform/foundation/SecretText.h"

#include <glib.h>

namespace brevanholt::platform {

template <class Text>
Text toBase64(std::string_view bytes) {
  Text text((bytes.size() / 3 + 1) * 4, '\0');
  int state = 0;
  int saved = 0;
  gsize size = g_base64_encode_step(reinterpret_cast<const guchar*>(bytes.data()), bytes.size(),
                                    FALSE, text.data(), &state, &saved);
  size += g_base64_encode_close(FALSE, text.data() + size, &state, &saved);
  text.resize(size);
  return text;
}

template <class Text>
std::optional<Text> fromBase64(std::string_view text) {
  Text bytes(text);
  int state = 0;
  unsigned saved = 0;
  bytes.resize(g_base64_decode_step(text.data(), text.size(),
                                    reinterpret_cast<guchar*>(bytes.data()), &state, &saved));
  // The decoder skips over what is not base64.
  if (toBase64<Text>(std::string_view(bytes.data(), bytes.size())) != text) return std::nullopt;
  return bytes;
}

template std::string toBase64(std::string_view);
template SecretText toBase64(std::string_view);
template std::optional<std::string> fromBase64(std::string_view);
template std::optional<SecretText> fromBase64(std::string_view);

}  // namespace brevanholt::platform
