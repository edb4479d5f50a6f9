#include "platform/linux/window/UpdateNotice.h"

#include <sys/stat.h>

namespace brevanholt::platform {

UpdateNotice::UpdateNotice(std::filesystem::path executable, Gtk::Window& parent,
                           std::function<void()> restart)
    : executable_(std::move(executable)), parent_(parent), restart_(std::move(restart)) {}

void UpdateNotice::check() {
  if (isReplaced()) show();
}

// A package manager puts a new file in the old one's place; this process keeps the old one.
bool UpdateNotice::isReplaced() const {
  struct stat running {};
  struct stat installed {};
  if (::stat("/proc/self/exe", &running) != 0) return false;
  if (::stat(executable_.c_str(), &installed) != 0) return false;
  return running.st_dev != installed.st_dev || running.st_ino != installed.st_ino;
}

void UpdateNotice::show() {
  if (!dialog_) {
    dialog_ =
        std::make_unique<Gtk::MessageDialog>(parent_, "A new version of Brevanholt is installed",
                                             false, Gtk::MESSAGE_INFO, Gtk::BUTTONS_NONE);
    dialog_->set_title("Brevanholt");
    dialog_->set_secondary_text(
        "It is used after a restart. A running transfer is finished first.");
    dialog_->add_button("_Later", Gtk::RESPONSE_CLOSE);
    dialog_->add_button("_Restart", Gtk::RESPONSE_ACCEPT);
    dialog_->set_default_response(Gtk::RESPONSE_ACCEPT);
    dialog_->signal_response().connect([this](int response) {
      dialog_->hide();
      if (response == Gtk::RESPONSE_ACCEPT) restart_();
    });
  }
  dialog_->present();
}

}  // namespace brevanholt::platform
