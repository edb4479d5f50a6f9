#include "platform/linux/GtkMenuRow.h"

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

}  // namespace

// Makes one widget for each view.
class GtkMenuRow::Maker final : public ViewVisitor {
 public:
  Maker(GtkMenuRow& row, const Rgba& textColor) : row_(row), textColor_(textColor) {}

  Gtk::Widget* make(const View& view) {
    view.accept(*this);
    return made_;
  }

  void visit(const Label& label) override {
    auto* widget = Gtk::make_managed<Gtk::Label>(label.text());
    const TextStyle& style = label.style();
    auto attributes = attributesOf(style, colorBeside(style.color, textColor_));
    widget->set_attributes(attributes);
    widget->set_ellipsize(style.truncation == Truncation::kMiddle ? Pango::ELLIPSIZE_MIDDLE
                                                                  : Pango::ELLIPSIZE_END);
    widget->set_single_line_mode(true);
    widget->set_max_width_chars(1);  // a long text does not widen its row
    widget->set_xalign(0);
    follow(label.changed, [widget, &label] { widget->set_text(label.text()); });
    made_ = widget;
  }

  void visit(const Dot& dot) override {
    auto* widget = Gtk::make_managed<Gtk::DrawingArea>();
    const int diameter = static_cast<int>(std::lround(dot.diameter()));
    widget->set_size_request(diameter, diameter);
    widget->set_valign(Gtk::ALIGN_CENTER);
    widget->signal_draw().connect(
        [color = colorBeside(dot.color(), textColor_),
         radius = dot.diameter() / 2](const Cairo::RefPtr<Cairo::Context>& context) {
          context->set_source_rgba(color.red, color.green, color.blue, color.alpha);
          context->arc(radius, radius, radius, 0, 2 * std::numbers::pi);
          context->fill();
          return true;
        });
    made_ = widget;
  }

  // Not the toolkit's own bar, which greys out in a row that cannot be chosen.
  void visit(const ProgressBar& bar) override {
    auto* widget = Gtk::make_managed<Gtk::DrawingArea>();
    widget->set_size_request(-1, kBarHeight);
    const Rgba track = colorBeside(SystemColor::kTertiaryLabel, textColor_);
    const Rgba fill = colorBeside(SystemColor::kBlue, textColor_);
    widget->signal_draw().connect(
        [widget, &bar, track, fill](const Cairo::RefPtr<Cairo::Context>& context) {
          const int width = widget->get_allocated_width();
          drawBar(context, track, width);
          if (bar.shownValue() > 0) drawBar(context, fill, width * bar.shownValue());
          return true;
        });
    follow(bar.changed, [widget] { widget->queue_draw(); });
    made_ = widget;
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
  void follow(Signal& changed, Signal::Slot slot) {
    row_.connections_.push_back(changed.connect(std::move(slot)));
  }

  GtkMenuRow& row_;
  const Rgba& textColor_;
  Gtk::Widget* made_ = nullptr;
};

GtkMenuRow::GtkMenuRow(std::shared_ptr<const FixedView> view, const Rgba& textColor)
    : view_(std::move(view)), widget_(Maker(*this, textColor).make(*view_)) {}

}  // namespace brevanholt::platform
