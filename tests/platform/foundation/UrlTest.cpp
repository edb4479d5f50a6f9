#include "platform/foundation/Url.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

TEST(UrlTest, KeepsSchemeAndHostAsTheyWereWritten) {
  const auto url = Url::parse("BrevanHolt://Share/x?id=%41b%20c&ID=no&id=later&empty=#f");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->scheme(), "BrevanHolt");
  EXPECT_EQ(url->host(), "Share");
  EXPECT_EQ(url->queryItem("id"), "Ab c");
  EXPECT_EQ(url->queryItem("empty"), "");
  EXPECT_EQ(url->queryItem("Id"), std::nullopt);
  EXPECT_EQ(Url::parse("mailto:a@b")->scheme(), "mailto");
}

TEST(UrlTest, RefusesWhatIsNoAbsoluteUrl) {
  for (const char* text : {"", "https", "a/b:c", "?x:y", ":x", "/etc/passwd", "https://a b",
                           "https://a\nb", " https://a", "https://[::1", "https://a/%zz"}) {
    EXPECT_FALSE(Url::parse(text)) << text;
  }
}

}  // namespace
}  // namespace brevanholt::platform
