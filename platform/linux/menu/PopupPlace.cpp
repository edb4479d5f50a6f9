#include "platform/linux/menu/PopupPlace.h"

#include <cstdlib>

namespace brevanholt::platform {
namespace {

constexpr int kNear = 64;  // more than a panel is high

bool isNear(ScreenPoint place, ScreenPoint pointer) {
  return std::abs(place.x - pointer.x) <= kNear && std::abs(place.y - pointer.y) <= kNear;
}

}  // namespace

ScreenPoint popupPlace(ScreenPoint given, ScreenPoint pointer, int scale) {
  if (isNear(given, pointer)) return given;
  const ScreenPoint scaled{.x = given.x / scale, .y = given.y / scale};
  return isNear(scaled, pointer) ? scaled : pointer;
}

}  // namespace brevanholt::platform
