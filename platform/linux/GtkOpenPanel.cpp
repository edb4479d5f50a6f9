#include "platform/linux/GtkOpenPanel.h"

#include <gtk/gtk.h>

namespace brevanholt::platform {

GtkOpenPanel::GtkOpenPanel(Gtk::Window& parent) : parent_(parent), folder_(g_get_home_dir()) {}

GtkOpenPanel::~GtkOpenPanel() {
  panel_.reset();
  for (auto& [choice, callback] : std::exchange(waiting_, {})) callback({});
}

void GtkOpenPanel::choose(Choice choice, Callback callback) {
  waiting_.emplace_back(choice, std::move(callback));
  if (waiting_.size() == 1) showNext();
}

void GtkOpenPanel::showNext() {
  const bool wantsFolder = waiting_.front().first == Choice::kFolder;
  panel_ = Gtk::FileChooserNative::create(
      wantsFolder ? "Choose a Folder to Send" : "Choose Files to Send", parent_,
      wantsFolder ? Gtk::FILE_CHOOSER_ACTION_SELECT_FOLDER : Gtk::FILE_CHOOSER_ACTION_OPEN,
      "_Select", "_Cancel");
  panel_->set_select_multiple(!wantsFolder);
  panel_->set_modal(true);
  panel_->set_current_folder(folder_);
  panel_->signal_response().connect([this](int response) { answered(response); });
  panel_->show();
}

void GtkOpenPanel::answered(int response) {
  Locations chosen;
  if (response == GTK_RESPONSE_ACCEPT) {
    folder_ = panel_->get_current_folder();
    for (const std::string& path : panel_->get_filenames()) chosen.emplace_back(path);
  }
  // Kept until this is over: it is in the middle of its own signal.
  const auto finished = std::exchange(panel_, {});
  Callback callback = std::move(waiting_.front().second);
  waiting_.pop_front();
  if (!waiting_.empty()) showNext();
  callback(std::move(chosen));
}

}  // namespace brevanholt::platform
