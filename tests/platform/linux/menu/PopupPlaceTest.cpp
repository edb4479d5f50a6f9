#include "platform/linux/menu/PopupPlace.h"

#include <gtest/gtest.h>

#include <ostream>

namespace brevanholt::platform {

void PrintTo(const ScreenPoint& point, std::ostream* stream) {
  *stream << point.x << ',' << point.y;
}

namespace {

TEST(PopupPlaceTest, TakesAPlaceNearThePointerInEitherUnit) {
  const ScreenPoint pointer{.x = 604, .y = 12};
  EXPECT_EQ(popupPlace({.x = 590, .y = 26}, pointer, 1), (ScreenPoint{.x = 590, .y = 26}));
  EXPECT_EQ(popupPlace({.x = 590, .y = 26}, pointer, 2), (ScreenPoint{.x = 590, .y = 26}));
  EXPECT_EQ(popupPlace({.x = 1180, .y = 52}, pointer, 2), (ScreenPoint{.x = 590, .y = 26}));
}

TEST(PopupPlaceTest, TakesThePointerWhereThePlaceIsElsewhere) {
  const ScreenPoint pointer{.x = 604, .y = 12};
  EXPECT_EQ(popupPlace({.x = 0, .y = 27}, pointer, 1), pointer);
  EXPECT_EQ(popupPlace({.x = 590, .y = 726}, pointer, 2), pointer);
}

}  // namespace
}  // namespace brevanholt::platform
