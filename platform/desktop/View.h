#pragma once

#include "platform/desktop/Color.h"
#include "platform/foundation/Signal.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brevanholt::platform {

// A tree of plain descriptions of what is to be seen. Renderers walk it, connect to `changed` of
// what can change, and show it in their own way. Sizes are in logical pixels.

class Label;
class Dot;
class ProgressBar;
class Stack;
class FixedView;

class ViewVisitor {
 public:
  virtual ~ViewVisitor() = default;
  virtual void visit(const Label& label) = 0;
  virtual void visit(const Dot& dot) = 0;
  virtual void visit(const ProgressBar& bar) = 0;
  virtual void visit(const Stack& stack) = 0;
  virtual void visit(const FixedView& view) = 0;
};

class View {
 public:
  View() = default;
  virtual ~View() = default;
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  virtual void accept(ViewVisitor& visitor) const = 0;
};

enum class FontWeight { kRegular, kMedium, kSemibold };
enum class Truncation { kTail, kMiddle };

struct TextStyle {
  double size = 0;
  FontWeight weight = FontWeight::kRegular;
  SystemColor color = SystemColor::kLabel;
  Truncation truncation = Truncation::kTail;
  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

// One line of text that can be neither edited nor selected.
class Label final : public View {
 public:
  Label(std::string text, TextStyle style) : text_(std::move(text)), style_(style) {}

  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const TextStyle& style() const { return style_; }
  void setText(std::string text) {
    if (std::exchange(text_, std::move(text)) != text_) changed.emit();
  }
  void accept(ViewVisitor& visitor) const override { visitor.visit(*this); }

  mutable Signal changed;

 private:
  std::string text_;
  TextStyle style_;
};

// A filled circle.
class Dot final : public View {
 public:
  Dot(SystemColor color, double diameter) : color_(color), diameter_(diameter) {}

  [[nodiscard]] SystemColor color() const { return color_; }
  [[nodiscard]] double diameter() const { return diameter_; }
  void accept(ViewVisitor& visitor) const override { visitor.visit(*this); }

 private:
  SystemColor color_;
  double diameter_;
};

// A small determinate bar from 0 to 1, as wide as the stack it is in.
class ProgressBar final : public View {
 public:
  explicit ProgressBar(double value) : value_(value) {}

  // As it was set.
  [[nodiscard]] double value() const { return value_; }
  // Within the bar's own range.
  [[nodiscard]] double shownValue() const { return value_ > 0 ? std::min(value_, 1.0) : 0.0; }
  void setValue(double value) {
    if (std::exchange(value_, value) != value) changed.emit();
  }
  void accept(ViewVisitor& visitor) const override { visitor.visit(*this); }

  mutable Signal changed;

 private:
  double value_;
};

// Views one after another: side by side, centred on each other, or in a column, beginning at the
// same edge.
class Stack final : public View {
 public:
  enum class Axis { kHorizontal, kVertical };

  Stack(Axis axis, double spacing, std::vector<std::shared_ptr<View>> children)
      : axis_(axis), spacing_(spacing), children_(std::move(children)) {}

  [[nodiscard]] Axis axis() const { return axis_; }
  [[nodiscard]] double spacing() const { return spacing_; }
  [[nodiscard]] const std::vector<std::shared_ptr<View>>& children() const { return children_; }
  void accept(ViewVisitor& visitor) const override { visitor.visit(*this); }

 private:
  Axis axis_;
  double spacing_;
  std::vector<std::shared_ptr<View>> children_;
};

// A view of a given size around its content, which is centred in its height.
class FixedView final : public View {
 public:
  FixedView(double width, double height, double horizontalPadding, std::shared_ptr<View> content)
      : width_(width),
        height_(height),
        horizontalPadding_(horizontalPadding),
        content_(std::move(content)) {}

  [[nodiscard]] double width() const { return width_; }
  [[nodiscard]] double height() const { return height_; }
  [[nodiscard]] double horizontalPadding() const { return horizontalPadding_; }
  [[nodiscard]] const View& content() const { return *content_; }
  void accept(ViewVisitor& visitor) const override { visitor.visit(*this); }

 private:
  double width_;
  double height_;
  double horizontalPadding_;
  std::shared_ptr<View> content_;
};

}  // namespace brevanholt::platform
