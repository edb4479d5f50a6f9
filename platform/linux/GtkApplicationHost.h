#pragma once

#include "platform/desktop/Application.h"

#include <gtkmm/application.h>

#include <functional>

namespace brevanholt::platform {

// The program on this desktop: one instance a session where there is a session bus, several where
// there is none.
class GtkApplicationHost final : public Application {
 public:
  // Registers with the session bus; throws PlatformError where there is no display.
  explicit GtkApplicationHost(const std::string& identifier);

  // Whether another instance runs already. Then forward() is all there is to do.
  [[nodiscard]] bool isRemote() const { return application_->is_remote(); }
  // Asks the running instance to present itself; returns an exit status.
  int forward();
  // Runs until terminate(); borrows the delegate.
  int run(ApplicationDelegate& delegate);

  void setActivationPolicy(ActivationPolicy policy) override;
  void activate() override {}
  void deactivate() override {}
  void terminate() override { application_->quit(); }

  [[nodiscard]] const Glib::RefPtr<Gtk::Application>& gtk() const { return application_; }

 private:
  void activated();
  [[nodiscard]] bool hasVisibleWindows() const;

  Glib::RefPtr<Gtk::Application> application_;
  ApplicationDelegate* delegate_ = nullptr;
  bool isLaunched_ = false;
};

}  // namespace brevanholt::platform
