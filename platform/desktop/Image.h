#pragma once

#include <filesystem>
#include <variant>

namespace brevanholt::platform {

// In logical pixels, from the top left.
struct Rectangle {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

// An image as what is to be drawn, so that it can be drawn for any scale.
struct Image {
  // A part of a picture file, scaled into a part of the image.
  struct PictureDrawing {
    std::filesystem::path picture;
    Rectangle source;
    Rectangle destination;
    friend bool operator==(const PictureDrawing&, const PictureDrawing&) = default;
  };
  // The application's own icon, filling the image.
  struct ApplicationIcon {
    friend bool operator==(const ApplicationIcon&, const ApplicationIcon&) = default;
  };
  struct Nothing {
    friend bool operator==(const Nothing&, const Nothing&) = default;
  };

  double width = 0;
  double height = 0;
  std::variant<Nothing, ApplicationIcon, PictureDrawing> content;
  // The part of the image that counts when it is aligned with others.
  Rectangle alignment;
  // Only the shape counts; the desktop gives it the colour of what stands beside it.
  bool isTemplate = false;
};

// What pictures there are.
class Images {
 public:
  virtual ~Images() = default;
  // Whether the file holds a picture that can be drawn.
  [[nodiscard]] virtual bool isPicture(const std::filesystem::path& path) const = 0;
  [[nodiscard]] virtual bool hasApplicationIcon() const = 0;
};

}  // namespace brevanholt::platform
