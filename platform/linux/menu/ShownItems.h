#pragma once

#include "platform/desktop/Menu.h"

#include <memory>
#include <vector>

namespace brevanholt::platform {

// The most views that a menu shows. Commands and separators are always shown.
inline constexpr int kMostShownViews = 200;

[[nodiscard]] inline std::vector<std::shared_ptr<const MenuItem>> shownItems(const Menu& menu) {
  std::vector<std::shared_ptr<const MenuItem>> shown;
  int views = 0;
  for (const auto& item : menu.items()) {
    if (item->view() == nullptr || ++views <= kMostShownViews) shown.push_back(item);
  }
  return shown;
}

}  // namespace brevanholt::platform
