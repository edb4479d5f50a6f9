#include "platform/foundation/Base64.h"

#include <glib.h>

#include <memory>

namespace brevanholt::platform {

std::string toBase64(std::string_view bytes) {
  const std::unique_ptr<char, decltype(&g_free)> text(
      g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()), g_free);
  return text.get();
}

std::optional<std::string> fromBase64(const std::string& text) {
  gsize size = 0;
  const std::unique_ptr<guchar, decltype(&g_free)> decoded(g_base64_decode(text.c_str(), &size),
                                                           g_free);
  std::string bytes(reinterpret_cast<const char*>(decoded.get()), size);
  // The decoder skips over what is not base64.
  if (toBase64(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace brevanholt::platform
