#pragma once

#include "platform/desktop/OpenPanel.h"
#include "platform/services/UserDefaults.h"

#include <gtkmm/filechooserdialog.h>
#include <gtkmm/filechoosernative.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/window.h>

#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

namespace brevanholt::platform {

// GTK's file chooser (the portal's in a sandbox), modal for the window that it is given. It begins
// in the folder in which something was chosen last, in this run or another. Names can be typed into
// it, so what it answers is checked; GTK's stays open while nothing of that can be taken.
class GtkOpenPanel final : public OpenPanel {
 public:
  GtkOpenPanel(Gtk::Window& parent, UserDefaults& defaults);
  // Cancels what is still open.
  ~GtkOpenPanel() override;
  void choose(Choice choice, Callback callback) override;

 private:
  void showNext();
  void showPortal(Choice choice);
  void showDialog(Choice choice);
  void prepare(Gtk::FileChooser& panel, Choice choice) const;
  [[nodiscard]] std::string lastFolder() const;
  void rememberFolder(const std::filesystem::path& folder);
  void portalAnswered(int response);
  void dialogAnswered(int response);
  void finish(Locations chosen);
  void explain(Gtk::Window& over, const std::string& problems);

  Gtk::Window& parent_;
  UserDefaults& defaults_;
  std::deque<std::pair<Choice, Callback>> waiting_;  // the first is the one that is shown
  Glib::RefPtr<Gtk::FileChooserNative> portal_;      // in a sandbox
  std::unique_ptr<Gtk::FileChooserDialog> dialog_;   // elsewhere
  std::unique_ptr<Gtk::MessageDialog> explanation_;
};

}  // namespace brevanholt::platform
