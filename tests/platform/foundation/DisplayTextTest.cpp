#include "platform/foundation/DisplayText.h"

#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

TEST(DisplayTextTest, PutsTextOnOneLine) {
  EXPECT_EQ(onOneLine("a\r\nb\tc\u2028d\u0085e"), "a  b c d e");
  EXPECT_EQ(onOneLine("Grüße, 世界"), "Grüße, 世界");
}

TEST(DisplayTextTest, KeepsDirectionsToTheTextThatSetsThem) {
  EXPECT_EQ(directionIsolated("holiday.zip, 12 MB"), "holiday.zip, 12 MB");
  EXPECT_EQ(directionIsolated("תמונות 7"), "\u2068תמונות 7\u2069");
  EXPECT_EQ(directionIsolated("\u202Egpj.exe"), "\u2068\u202Egpj.exe\u202C\u2069");
  EXPECT_EQ(directionIsolated("\u2067a\u202Eb"), "\u2068\u2067a\u202Eb\u202C\u2069\u2069");
  EXPECT_EQ(directionIsolated("\u2067a\u202Eb\u2069c"), "\u2068\u2067a\u202Eb\u202C\u2069c\u2069");
  EXPECT_EQ(directionIsolated("\u2069\u202C\u202Ea"), "\u2068\u202Ea\u202C\u2069")
      << "what closes more than it opened does not leave the isolate";
}

TEST(DisplayTextTest, CutsBetweenCharactersToAWidth) {
  EXPECT_EQ(cutToColumns("0123456789", 10, Cut::kTail), "0123456789");
  EXPECT_EQ(cutToColumns("0123456789a", 10, Cut::kTail), "012345678…");
  EXPECT_EQ(cutToColumns("0123456789a", 10, Cut::kMiddle), "01234…789a");
  EXPECT_EQ(cutToColumns("世界世界世界", 6, Cut::kMiddle), "世…界") << "a wide one takes two";
  EXPECT_EQ(cutToColumns("👩‍👩‍👧👩‍👩‍👧👩‍👩‍👧👩‍👩‍👧",
                         5, Cut::kTail),
            "👩‍👩‍👧👩‍👩‍👧…");
  EXPECT_EQ(cutToColumns("e\u0301e\u0301e\u0301e\u0301", 3, Cut::kTail), "e\u0301e\u0301…");
  EXPECT_EQ(cutToColumns("\u2068\u202E0123456789\u202C\u2069 Failed", 12, Cut::kMiddle),
            "\u2068\u2068\u202E0123\u202C\u2069\u2069…ailed");
}

}  // namespace
}  // namespace brevanholt::platform
