#pragma once

#include "platform/desktop/Application.h"
#include "platform/linux/window/LaunchOptions.h"

#include <gtkmm/application.h>

#include <filesystem>
#include <functional>

namespace brevanholt::platform {

// The program on this desktop: one instance a session where there is a session bus, several where
// there is none.
//
// Other programs reach it by org.freedesktop.Application: Activate, Open, and the action "share"
// with the files' URIs and a text, of which the files come first: ActivateAction("share", [<(as,
// s)>], {}). "choose-files", "share-clipboard" and "quit" take nothing.
class GtkApplicationHost final : public Application {
 public:
  // Registers with the session bus. Throws PlatformError where there is no display, and for a
  // service that runs already.
  GtkApplicationHost(const std::string& identifier, bool isService);

  // Whether another instance runs already. Then forward() is all there is to do.
  [[nodiscard]] bool isRemote() const { return application_->is_remote(); }
  // Asks the running instance; returns an exit status.
  int forward(const LaunchRequest& request);
  // Runs until terminate(); borrows the delegate. The request is the first that it is told of.
  // `atEnd` ends the delegate and all that works for it while this instance still has its name on
  // the bus, so that no second one starts beside it.
  int run(ApplicationDelegate& delegate, const LaunchRequest& request,
          const std::function<void()>& atEnd);

  // Runs each time the person starts the program while it runs.
  void setStartedAgainHandler(std::function<void()> handler) { startedAgain_ = std::move(handler); }
  // Where pictures are saved that are pasted.
  void setPastedPictures(std::filesystem::path folder) { pastedPictures_ = std::move(folder); }
  void shareClipboard() { application_->activate_action(kShareClipboardAction); }
  // Ends as terminate() does; wantsRestart() says that the program is to be started anew then.
  void restart();
  [[nodiscard]] bool wantsRestart() const { return wantsRestart_; }

  void setActivationPolicy(ActivationPolicy policy) override;
  void activate() override {}
  void deactivate() override {}
  void terminate() override { application_->quit(); }

  [[nodiscard]] const Glib::RefPtr<Gtk::Application>& gtk() const { return application_; }

 private:
  void addActions();
  void perform(const LaunchRequest& request);
  void activated();
  // The delegate, launched; null where nobody serves any more.
  ApplicationDelegate* launchedDelegate();
  [[nodiscard]] bool hasVisibleWindows() const;

  Glib::RefPtr<Gtk::Application> application_;
  bool isService_;
  LaunchRequest firstRequest_;
  ApplicationDelegate* delegate_ = nullptr;
  bool isLaunched_ = false;
  bool wantsRestart_ = false;
  std::function<void()> startedAgain_ = [] {};
  std::filesystem::path pastedPictures_;
  sigc::connection idleService_;
};

}  // namespace brevanholt::platform
