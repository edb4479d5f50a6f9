#pragma once

#include "platform/desktop/Image.h"

#include <string>

namespace brevanholt::platform {

// Pictures that gdk-pixbuf reads, and icons of the icon theme.
class GdkImages final : public Images {
 public:
  explicit GdkImages(std::string applicationIcon) : applicationIcon_(std::move(applicationIcon)) {}
  [[nodiscard]] bool isPicture(const std::filesystem::path& path) const override;
  [[nodiscard]] bool hasApplicationIcon() const override;

 private:
  std::string applicationIcon_;
};

}  // namespace brevanholt::platform
