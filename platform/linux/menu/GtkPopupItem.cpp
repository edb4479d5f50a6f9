#include "platform/linux/menu/GtkPopupItem.h"

#include <gtkmm/accelgroup.h>
#include <gtkmm/box.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/label.h>
#include <gtkmm/separatormenuitem.h>

namespace brevanholt::platform {
namespace {

constexpr int kCommandMargin = 6;  // with the theme's own padding, in line with the rows

const Glib::RefPtr<Gtk::CssProvider>& withoutPadding() {
  static const auto kCss = [] {
    auto css = Gtk::CssProvider::create();
    css->load_from_data("menuitem { padding: 0; }");
    return css;
  }();
  return kCss;
}

}  // namespace

GtkPopupItem::GtkPopupItem(std::shared_ptr<const MenuItem> item, const Rgba& textColor)
    : item_(std::move(item)) {
  if (item_->isSeparator()) {
    widget_ = std::make_unique<Gtk::SeparatorMenuItem>();
  } else if (item_->isCommand()) {
    makeCommand();
  } else {
    makeView(textColor);
  }
  widget_->show_all();
}

bool GtkPopupItem::show(const std::shared_ptr<const MenuItem>& item) {
  const bool fits = item->isSeparator() == item_->isSeparator() &&
                    item->title() == item_->title() &&
                    item->keyEquivalent() == item_->keyEquivalent() &&
                    (item->view() == nullptr) == !row_ && (!row_ || row_->show(item->view()));
  if (fits) item_ = item;
  return fits;
}

// A row that only shows something: it never lights up under the pointer.
void GtkPopupItem::makeView(const Rgba& textColor) {
  row_.emplace(item_->view(), textColor);
  widget_ = std::make_unique<Gtk::MenuItem>();
  widget_->add(row_->widget());
  widget_->set_sensitive(false);
  widget_->get_style_context()->add_provider(withoutPadding(),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

// The key stands in the row's own width: an accelerator label would widen every row by its key.
void GtkPopupItem::makeCommand() {
  widget_ = std::make_unique<Gtk::MenuItem>();
  auto* row = Gtk::make_managed<Gtk::Box>();
  row->set_margin_start(kCommandMargin);
  row->set_margin_end(kCommandMargin);
  row->pack_start(*Gtk::make_managed<Gtk::Label>(item_->title()), false, false);
  if (!item_->keyEquivalent().empty()) {
    const guint key = gdk_keyval_from_name(item_->keyEquivalent().c_str());
    auto* label = Gtk::make_managed<Gtk::Label>(Gtk::AccelGroup::get_label(key, Gdk::CONTROL_MASK));
    label->get_style_context()->add_class("dim-label");
    row->pack_end(*label, false, false);
  }
  widget_->add(*row);
  widget_->signal_activate().connect([this] {
    const auto item = item_;  // the menu may show another one when it has run
    item->activate();
  });
}

}  // namespace brevanholt::platform
