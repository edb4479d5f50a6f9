#pragma once

#include "platform/desktop/Image.h"
#include "platform/desktop/Menu.h"

#include <string>

namespace brevanholt::platform {

// The application's item among the desktop's status icons. There from the start to the end of the
// process, whether or not anything on the desktop shows it.
class StatusItem {
 public:
  virtual ~StatusItem() = default;
  virtual void setImage(const Image& image) = 0;
  virtual void setToolTip(const std::string& text) = 0;
  virtual void setAccessibilityLabel(const std::string& text) = 0;
  // Borrowed; what the item opens.
  virtual void setMenu(const Menu& menu) = 0;
};

}  // namespace brevanholt::platform
