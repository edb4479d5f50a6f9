#pragma once

#include "platform/foundation/UniqueFunction.h"

#include <gtkmm/messagedialog.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace brevanholt::platform {

// Tells that the program was replaced on the disk since this process started, and offers to
// restart.
class UpdateNotice {
 public:
  // `restart` runs where the person wants that; it may be late.
  UpdateNotice(std::filesystem::path executable, Gtk::Window& parent,
               std::function<void()> restart);

  // Looks, and tells. To be called when the person starts the program while it runs.
  void check();

 private:
  [[nodiscard]] bool isReplaced() const;
  void show();

  std::filesystem::path executable_;
  Gtk::Window& parent_;
  std::function<void()> restart_;
  std::unique_ptr<Gtk::MessageDialog> dialog_;
};

}  // namespace brevanholt::platform
