#include "platform/linux/menu/GtkMenuRow.h"

#include "platform/foundation/DisplayText.h"
#include "platform/linux/menu/ViewStructure.h"

#include <gtkmm/box.h>
#include <gtkmm/drawingarea.h>
#include <gtkmm/label.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include <pangomm/attrlist.h>

namespace brevanholt::platform {
namespace {

constexpr int kBarHeight = 6;
constexpr std::size_t kMostColumnsInRow = 280;  // no row has room for more

Pango::Weight pangoWeight(FontWeight weight) {
  switch (weight) {
    case FontWeight::kRegular:
      return Pango::WEIGHT_NORMAL;
    case FontWeight::kMedium:
      return Pango::WEIGHT_MEDIUM;
    case FontWeight::kSemibold:
      return Pango::WEIGHT_SEMIBOLD;
  }
  return Pango::WEIGHT_NORMAL;
}

guint16 channel(double value) {
  return static_cast<guint16>(std::lround(value * G_MAXUINT16));
}

void drawBar(const Cairo::RefPtr<Cairo::Context>& context, const Rgba& color, double width) {
  constexpr double kRadius = kBarHeight / 2.0;
  const double end = std::max(width, double{kBarHeight});
  context->set_source_rgba(color.red, color.green, color.blue, color.alpha);
  context->begin_new_path();
  context->arc(kRadius, kRadius, kRadius, std::numbers::pi / 2, -std::numbers::pi / 2);
  context->arc(end - kRadius, kRadius, kRadius, -std::numbers::pi / 2, std::numbers::pi / 2);
  context->fill();
}

Pango::AttrList attributesOf(const TextStyle& style, const Rgba& color) {
  Pango::AttrList attributes;
  auto size = Pango::Attribute::create_attr_size_absolute(
      static_cast<int>(std::lround(style.size * PANGO_SCALE)));
  auto weight = Pango::Attribute::create_attr_weight(pangoWeight(style.weight));
  auto foreground = Pango::Attribute::create_attr_foreground(
      channel(color.red), channel(color.green), channel(color.blue));
  auto alpha = Pango::Attribute(pango_attr_foreground_alpha_new(channel(color.alpha)), false);
  attributes.insert(size);
  attributes.insert(weight);
  attributes.insert(foreground);
  attributes.insert(alpha);
  return attributes;
}

class DotArea final : public Gtk::DrawingArea {
 public:
  explicit DotArea(double diameter) : diameter_(diameter) {
    const int size = static_cast<int>(std::lround(diameter));
    set_size_request(size, size);
    set_valign(Gtk::ALIGN_CENTER);
  }
  void setColor(const Rgba& color) {
    if (std::exchange(color_, color) != color) queue_draw();
  }

 protected:
  bool on_draw(const Cairo::RefPtr<Cairo::Context>& context) override {
    const double radius = diameter_ / 2;
    context->set_source_rgba(color_.red, color_.green, color_.blue, color_.alpha);
    context->arc(radius, radius, radius, 0, 2 * std::numbers::pi);
    context->fill();
    return true;
  }

 private:
  double diameter_;
  Rgba color_;
};

// Not the toolkit's own bar, which greys out in a row that cannot be chosen.
class BarArea final : public Gtk::DrawingArea {
 public:
  BarArea(const Rgba& track, const Rgba& fill) : track_(track), fill_(fill) {
    set_size_request(-1, kBarHeight);
  }
  void setValue(double value) {
    if (std::exchange(value_, value) != value) queue_draw();
  }

 protected:
  bool on_draw(const Cairo::RefPtr<Cairo::Context>& context) override {
    const int width = get_allocated_width();
    if (get_direction() == Gtk::TEXT_DIR_RTL) {
      context->translate(width, 0);
      context->scale(-1, 1);
    }
    drawBar(context, track_, width);
    if (value_ > 0) drawBar(context, fill_, width * value_);
    return true;
  }

 private:
  Rgba track_;
  Rgba fill_;
  double value_ = 0;
};

void showText(Gtk::Label& widget, const Label& label) {
  const auto cut = label.style().truncation == Truncation::kMiddle ? Cut::kMiddle : Cut::kTail;
  const Glib::ustring text =
      directionIsolated(cutToColumns(onOneLine(label.text()), kMostColumnsInRow, cut));
  if (widget.get_text() != text) widget.set_text(text);
}

}  // namespace

// Makes the widgets of a view, still empty.
class GtkMenuRow::Maker final : public ViewVisitor {
 public:
  explicit Maker(GtkMenuRow& row) : row_(row) {}

  Gtk::Widget* make(const View& view) {
    view.accept(*this);
    return made_;
  }

  void visit(const Label& label) override {
    auto* widget = Gtk::make_managed<Gtk::Label>();
    const TextStyle& style = label.style();
    auto attributes = attributesOf(style, colorBeside(style.color, row_.textColor_));
    widget->set_attributes(attributes);
    widget->set_ellipsize(style.truncation == Truncation::kMiddle ? Pango::ELLIPSIZE_MIDDLE
                                                                  : Pango::ELLIPSIZE_END);
    widget->set_single_line_mode(true);
    widget->set_max_width_chars(1);  // a long text does not widen its row
    widget->set_xalign(0);
    makeLeaf(widget);
  }
  void visit(const Dot& dot) override { makeLeaf(Gtk::make_managed<DotArea>(dot.diameter())); }
  void visit(const ProgressBar&) override {
    makeLeaf(Gtk::make_managed<BarArea>(colorBeside(SystemColor::kTertiaryLabel, row_.textColor_),
                                        colorBeside(SystemColor::kBlue, row_.textColor_)));
  }
  void visit(const Stack& stack) override {
    const bool isColumn = stack.axis() == Stack::Axis::kVertical;
    auto* box = Gtk::make_managed<Gtk::Box>(
        isColumn ? Gtk::ORIENTATION_VERTICAL : Gtk::ORIENTATION_HORIZONTAL,
        static_cast<int>(std::lround(stack.spacing())));
    for (const auto& child : stack.children()) {
      const bool isLast = child == stack.children().back();
      box->pack_start(*make(*child), !isColumn && isLast, true);
    }
    made_ = box;
  }
  void visit(const FixedView& view) override {
    auto* box = Gtk::make_managed<Gtk::Box>();
    const int padding = static_cast<int>(std::lround(view.horizontalPadding()));
    box->set_size_request(static_cast<int>(std::lround(view.width())),
                          static_cast<int>(std::lround(view.height())));
    Gtk::Widget* content = make(view.content());
    content->set_valign(Gtk::ALIGN_CENTER);
    content->set_margin_start(padding);
    content->set_margin_end(padding);
    box->pack_start(*content, true, true);
    made_ = box;
  }

 private:
  void makeLeaf(Gtk::Widget* widget) {
    row_.leaves_.push_back(widget);
    made_ = widget;
  }

  GtkMenuRow& row_;
  Gtk::Widget* made_ = nullptr;
};

// Puts a view's contents into the leaves, and has them follow it.
class GtkMenuRow::Filler final : public ViewVisitor {
 public:
  explicit Filler(GtkMenuRow& row) : row_(row) {}

  void visit(const Label& label) override {
    auto& widget = next<Gtk::Label>();
    showText(widget, label);
    follow(label.changed, [&widget, &label] { showText(widget, label); });
  }
  void visit(const Dot& dot) override {
    next<DotArea>().setColor(colorBeside(dot.color(), row_.textColor_));
  }
  void visit(const ProgressBar& bar) override {
    auto& widget = next<BarArea>();
    widget.setValue(bar.shownValue());
    follow(bar.changed, [&widget, &bar] { widget.setValue(bar.shownValue()); });
  }
  void visit(const Stack& stack) override {
    for (const auto& child : stack.children()) child->accept(*this);
  }
  void visit(const FixedView& view) override { view.content().accept(*this); }

 private:
  // The structure says which kind it is.
  template <class Leaf>
  Leaf& next() {
    return *static_cast<Leaf*>(row_.leaves_[index_++]);
  }
  void follow(Signal& changed, Signal::Slot slot) {
    row_.connections_.push_back(changed.connect(std::move(slot)));
  }

  GtkMenuRow& row_;
  std::size_t index_ = 0;
};

GtkMenuRow::GtkMenuRow(std::shared_ptr<const FixedView> view, const Rgba& textColor)
    : structure_(structureOf(*view)), textColor_(textColor), widget_(Maker(*this).make(*view)) {
  fill(std::move(view));
}

bool GtkMenuRow::show(const std::shared_ptr<const FixedView>& view) {
  if (view == view_) return true;
  if (structureOf(*view) != structure_) return false;
  fill(view);
  return true;
}

void GtkMenuRow::fill(std::shared_ptr<const FixedView> view) {
  connections_.clear();
  view_ = std::move(view);
  Filler filler(*this);
  view_->accept(filler);
}

}  // namespace brevanholt::platform
