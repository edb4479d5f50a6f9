#pragma once

#include "platform/desktop/OpenPanel.h"

#include <gtkmm/filechoosernative.h>
#include <gtkmm/window.h>

#include <deque>
#include <utility>

namespace brevanholt::platform {

// GTK's file chooser (the portal's in a sandbox), modal for the window that it is given. It begins
// in the folder in which something was chosen last.
class GtkOpenPanel final : public OpenPanel {
 public:
  explicit GtkOpenPanel(Gtk::Window& parent);
  // Cancels what is still open.
  ~GtkOpenPanel() override;
  void choose(Choice choice, Callback callback) override;

 private:
  void showNext();
  void answered(int response);

  Gtk::Window& parent_;
  std::string folder_;
  std::deque<std::pair<Choice, Callback>> waiting_;  // the first is the one that is shown
  Glib::RefPtr<Gtk::FileChooserNative> panel_;
};

}  // namespace brevanholt::platform
