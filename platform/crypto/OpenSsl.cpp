#include "platform/crypto/OpenSsl.h"

#include "platform/foundation/PlatformError.h"

#include <openssl/err.h>

#include <array>

namespace brevanholt::platform::openssl {

void forgetErrors() {
  ERR_clear_error();
}

void require(bool succeeded) {
  if (succeeded) return;
  std::array<char, 256> text{};
  ERR_error_string_n(ERR_get_error(), text.data(), text.size());
  forgetErrors();
  throw PlatformError("The cryptographic library failed: " + std::string(text.data()));
}

}  // namespace brevanholt::platform::openssl
