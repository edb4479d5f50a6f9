#include "platform/foundation/Base64.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

TEST(Base64Test, EncodesAsTheRfcDoes) {
  const std::pair<const char*, const char*> vectors[] = {// RFC 4648, section 10
                                                         {"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(toBase64(bytes), text);
    EXPECT_EQ(fromBase64(text), bytes);
  }
  const std::string every("\0\xFF\xFB/\n", 5);
  EXPECT_EQ(fromBase64(toBase64(every)), every);
  EXPECT_EQ(toBase64(std::string(300, 'x')).find('\n'), std::string::npos);
}

TEST(Base64Test, RefusesWhatIsNotExactlyBase64) {
  for (const std::string text :
       {"Zg", "Zg=", "Zm9v\n", " Zm9v", "Zm9v-_", "not base64!", "Zh==", "====", "Zg==Zg=="}) {
    EXPECT_EQ(fromBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(fromBase64(std::string("Zm9v\0", 5)), std::nullopt);
}

}  // namespace
}  // namespace brevanholt::platform
