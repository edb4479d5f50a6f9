#include "platform/linux/menu/GtkPopupMenu.h"

#include "platform/linux/menu/PopupPlace.h"
#include "platform/linux/menu/ShownItems.h"

#include <gdk/gdkkeysyms.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kFollowInterval = 16ms;  // a frame

struct FreeEvent {
  void operator()(GdkEvent* event) const { gdk_event_free(event); }
};

GdkDevice* pointerOf(GdkWindow* window) {
  return gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_window_get_display(window)));
}

// The event that opens the menu. Where the tray told of a click on the bus, there is none of this
// process, and the toolkit wants one.
std::unique_ptr<GdkEvent, FreeEvent> triggerOn(GdkWindow* window) {
  std::unique_ptr<GdkEvent, FreeEvent> event(gtk_get_current_event());
  if (event) return event;
  event.reset(gdk_event_new(GDK_BUTTON_PRESS));
  event->button.window = GDK_WINDOW(g_object_ref(window));
  gdk_event_set_device(event.get(), pointerOf(window));
  return event;
}

// Whether a key is the one that types a letter; with a layout that has no such letters, the one
// that does so in another layout of the user's.
bool isKeyOf(const GdkEventKey& event, const std::string& letter) {
  const guint wanted = gdk_keyval_from_name(letter.c_str());
  if (gdk_keyval_to_lower(event.keyval) == wanted) return true;
  if (event.keyval <= 0xFF) return false;  // a Latin letter
  GdkKeymapKey* keys = nullptr;
  int count = 0;
  gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(gdk_display_get_default()), wanted,
                                    &keys, &count);
  const bool found = std::any_of(keys, keys + count, [&event](const GdkKeymapKey& key) {
    return key.keycode == event.hardware_keycode;
  });
  g_free(keys);
  return found;
}

// Gives the window of an open menu the size that its items want. The toolkit fixes it when the menu
// opens, and would scroll or leave a blank.
void fitWindow(GtkMenu* menu) {
  GtkWidget* window = gtk_widget_get_toplevel(GTK_WIDGET(menu));
  GdkWindow* surface = gtk_widget_get_window(window);
  if (surface == nullptr || gtk_widget_get_visible(GTK_WIDGET(menu)) == FALSE) return;
  GtkRequisition natural{};
  gtk_widget_get_preferred_size(GTK_WIDGET(menu), nullptr, &natural);
  gdk_window_resize(surface, natural.width, natural.height);
  gtk_window_resize(GTK_WINDOW(window), natural.width, natural.height);
  gtk_menu_reposition(menu);
}

}  // namespace

GtkPopupMenu::GtkPopupMenu(const Menu& menu)
    : menu_(menu),
      itemsConnection_(menu.itemsChanged.connect([this] { modelChanged(); })),
      cancelConnection_(menu.trackingCancelled.connect([this] { popDown(); })) {
  widget_.set_size_request(static_cast<int>(std::lround(menu.minimumWidth)), -1);
  widget_.set_reserve_toggle_size(false);
  widget_.signal_style_updated().connect([this] { themeChanged(); });
  widget_.signal_button_press_event().connect(
      [this](GdkEventButton*) {
        buttonChanged(true);
        return false;
      },
      false);
  widget_.signal_button_release_event().connect(
      [this](GdkEventButton*) {
        buttonChanged(false);
        return false;
      },
      false);
  widget_.signal_key_press_event().connect(
      [this](GdkEventKey* event) { return keyPressed(*event); }, false);
  textColor_ = textColorOf(widget_);
}

GtkPopupMenu::~GtkPopupMenu() {
  items_.clear();
}

void GtkPopupMenu::popUpNear(int x, int y) {
  menu_.willOpen();
  isButtonDown_ = false;
  follow();
  GdkWindow* root = gdk_get_default_root_window();
  ScreenPoint pointer;
  gdk_device_get_position(pointerOf(root), nullptr, &pointer.x, &pointer.y);
  const auto place = popupPlace({.x = x, .y = y}, pointer, gdk_window_get_scale_factor(root));
  const GdkRectangle area{place.x, place.y, 1, 1};
  gtk_menu_popup_at_rect(widget_.gobj(), root, &area, GDK_GRAVITY_SOUTH_WEST,
                         GDK_GRAVITY_NORTH_WEST, triggerOn(root).get());
}

void GtkPopupMenu::popDown() {
  widget_.popdown();
}

void GtkPopupMenu::themeChanged() {
  const Rgba color = textColorOf(widget_);
  if (std::exchange(textColor_, color) == color) return;
  isStale_ = true;
  modelChanged();
}

void GtkPopupMenu::modelChanged() {
  if (!widget_.get_visible() || isButtonDown_ || following_) return;
  following_ = LoopSource::after(kFollowInterval, [this] { follow(); });
}

void GtkPopupMenu::buttonChanged(bool isDown) {
  if (isDown) following_.stop();
  if (std::exchange(isButtonDown_, isDown) && !isDown) modelChanged();
}

bool GtkPopupMenu::keyPressed(const GdkEventKey& event) {
  const auto modifiers = static_cast<guint>(gtk_accelerator_get_default_mod_mask());
  if ((event.state & modifiers) != GDK_CONTROL_MASK) return false;
  const auto named = std::ranges::find_if(menu_.items(), [&event](const auto& item) {
    return !item->keyEquivalent().empty() && isKeyOf(event, item->keyEquivalent());
  });
  if (named == menu_.items().end()) return false;
  // Popping down may rebuild the menu.
  auto item = *named;  // NOLINT(performance-unnecessary-copy-initialization)
  popDown();
  item->activate();
  return true;
}

void GtkPopupMenu::follow() {
  following_.stop();
  if (std::exchange(isStale_, false)) items_.clear();
  const auto shown = shownItems(menu_);

  // What is the same from the top and from the bottom keeps its widgets; what is between goes or
  // comes.
  std::size_t top = 0;
  const std::size_t most = std::min(items_.size(), shown.size());
  while (top < most && items_[top]->show(shown[top])) ++top;
  std::size_t bottom = 0;
  while (bottom < most - top &&
         items_[items_.size() - 1 - bottom]->show(shown[shown.size() - 1 - bottom])) {
    ++bottom;
  }
  if (top == items_.size() && top == shown.size()) return;
  const auto begin = items_.begin() + static_cast<Items::difference_type>(top);
  items_.erase(begin, items_.end() - static_cast<Items::difference_type>(bottom));
  Items added;
  for (std::size_t index = top; index < shown.size() - bottom; ++index) {
    added.push_back(std::make_unique<GtkPopupItem>(shown[index], textColor_));
    widget_.insert(added.back()->widget(), static_cast<int>(index));
  }
  items_.insert(items_.begin() + static_cast<Items::difference_type>(top),
                std::move_iterator(added.begin()), std::move_iterator(added.end()));
  fitWindow(widget_.gobj());
}

}  // namespace brevanholt::platform
