#include "platform/linux/GtkPopupMenu.h"

#include "platform/linux/ThemeColor.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/accelgroup.h>
#include <gtkmm/box.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/label.h>
#include <gtkmm/separatormenuitem.h>

#include <cmath>
#include <memory>
#include <utility>

namespace brevanholt::platform {
namespace {

constexpr int kCommandMargin = 6;  // with the theme's own padding, in line with the rows

struct FreeEvent {
  void operator()(GdkEvent* event) const { gdk_event_free(event); }
};

// A row that only shows something: it never lights up under the pointer.
Gtk::MenuItem* viewItem(Gtk::Widget& content) {
  auto* item = Gtk::make_managed<Gtk::MenuItem>();
  item->add(content);
  item->set_sensitive(false);
  auto css = Gtk::CssProvider::create();
  css->load_from_data("menuitem { padding: 0; }");
  item->get_style_context()->add_provider(css, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  return item;
}

// The key stands in the row's own width: an accelerator label would widen every row by its key.
Gtk::MenuItem* commandItem(const std::shared_ptr<MenuItem>& command) {
  auto* item = Gtk::make_managed<Gtk::MenuItem>();
  auto* row = Gtk::make_managed<Gtk::Box>();
  row->set_margin_start(kCommandMargin);
  row->set_margin_end(kCommandMargin);
  row->pack_start(*Gtk::make_managed<Gtk::Label>(command->title()), false, false);
  if (!command->keyEquivalent().empty()) {
    const guint key = gdk_keyval_from_name(command->keyEquivalent().c_str());
    auto* label = Gtk::make_managed<Gtk::Label>(Gtk::AccelGroup::get_label(key, Gdk::CONTROL_MASK));
    label->get_style_context()->add_class("dim-label");
    row->pack_end(*label, false, false);
  }
  item->add(*row);
  item->signal_activate().connect([command] { command->activate(); });
  return item;
}

// The event that opens the menu. Where the tray told of a click on the bus, there is none of this
// process, and the toolkit wants one.
std::unique_ptr<GdkEvent, FreeEvent> triggerOn(GdkWindow* window) {
  std::unique_ptr<GdkEvent, FreeEvent> event(gtk_get_current_event());
  if (event) return event;
  event.reset(gdk_event_new(GDK_BUTTON_PRESS));
  event->button.window = GDK_WINDOW(g_object_ref(window));
  GdkSeat* seat = gdk_display_get_default_seat(gdk_window_get_display(window));
  gdk_event_set_device(event.get(), gdk_seat_get_pointer(seat));
  return event;
}

}  // namespace

GtkPopupMenu::GtkPopupMenu(const Menu& menu)
    : menu_(menu),
      itemsConnection_(menu.itemsChanged.connect([this] { rebuild(); })),
      cancelConnection_(menu.trackingCancelled.connect([this] { popDown(); })) {
  widget_.set_size_request(static_cast<int>(std::lround(menu.minimumWidth)), -1);
  widget_.set_reserve_toggle_size(false);
  widget_.signal_style_updated().connect([this] { themeChanged(); });
  textColor_ = textColorOf(widget_);
  rebuild();
}

GtkPopupMenu::~GtkPopupMenu() {
  rows_.clear();
}

void GtkPopupMenu::popUpAt(int x, int y) {
  menu_.willOpen();
  GdkWindow* root = gdk_get_default_root_window();
  const int scale = gdk_window_get_scale_factor(root);
  const GdkRectangle place{x / scale, y / scale, 1, 1};
  gtk_menu_popup_at_rect(widget_.gobj(), root, &place, GDK_GRAVITY_SOUTH_WEST,
                         GDK_GRAVITY_NORTH_WEST, triggerOn(root).get());
}

void GtkPopupMenu::popDown() {
  widget_.popdown();
}

void GtkPopupMenu::themeChanged() {
  const Rgba color = textColorOf(widget_);
  if (std::exchange(textColor_, color) != color) rebuild();
}

void GtkPopupMenu::rebuild() {
  rows_.clear();
  for (Gtk::Widget* child : widget_.get_children()) widget_.remove(*child);
  for (const auto& item : menu_.items()) {
    if (item->isSeparator()) {
      widget_.append(*Gtk::make_managed<Gtk::SeparatorMenuItem>());
    } else if (item->isCommand()) {
      widget_.append(*commandItem(item));
    } else {
      rows_.emplace_back(item->view(), textColor_);
      widget_.append(*viewItem(rows_.back().widget()));
    }
  }
  widget_.show_all();
}

}  // namespace brevanholt::platform
