#include "platform/linux/window/GtkPasteboard.h"

#include <gtkmm/clipboard.h>

namespace brevanholt::platform {

bool GtkPasteboard::setText(const std::string& text) {
  const auto clipboard = Gtk::Clipboard::get();
  std::vector<Gtk::TargetEntry> targets;
  for (const char* name :
       {"UTF8_STRING", "TEXT", "STRING", "text/plain;charset=utf-8", "text/plain"}) {
    targets.emplace_back(name);
  }
  const bool accepted = clipboard->set(
      targets, [text](Gtk::SelectionData& selection, guint) { selection.set_text(text); }, [] {});
  if (accepted) clipboard->set_can_store();
  return accepted;
}

}  // namespace brevanholt::platform
