#include "platform/crypto/Hkdf.h"
#include "tests/support/Hex.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

// The bytes from `first` to `last`.
std::string run(int first, int last) {
  std::string bytes;
  for (int byte = first; byte <= last; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

std::string derive(const std::string& secret, const std::string& salt, const std::string& info,
                   std::size_t length) {
  const SecretBytes bytes({reinterpret_cast<const std::uint8_t*>(secret.data()), secret.size()});
  return toHex(hkdfSha256(bytes, salt, info, length).span());
}

TEST(HkdfTest, DerivesAsPublished) {
  EXPECT_EQ(derive(run(0, 0x4f), run(0x60, 0xaf), run(0xb0, 0xff), 82),
            "b11e398dc80327a1c8e7f78c596a49344f012eda2d4efad8a050cc4c19afa97c"
            "59045a99cac7827271cb41c65e590e09da3275600c2f09b8367793a9aca3db71"
            "cc30c58179ec3e87c14c01d5c1f3434f1d87")
      << "RFC 5869, A.2";
  EXPECT_EQ(derive(std::string(22, '\x0b'), "", "", 42),
            "8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d9d201395faa4b61a96c8")
      << "RFC 5869, A.3";
}

}  // namespace
}  // namespace brevanholt::platform
