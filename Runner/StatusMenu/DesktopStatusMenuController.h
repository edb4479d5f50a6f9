#pragma once

#include "Runner/StatusMenu/DesktopTransferSnapshot.h"
#include "platform/channel/Value.h"
#include "platform/desktop/Menu.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace brevanholt {

// Owns the status item's menu: whether the device is visible, the transfer in progress, the recent
// ones, and the commands to open and to quit. It knows nothing of windows or channels; its
// callbacks do.
//
// While only the progress of a transfer changes, the menu keeps its items: two views change in
// place.
class DesktopStatusMenuController final : public platform::MenuDelegate {
 public:
  DesktopStatusMenuController();

  [[nodiscard]] const platform::Menu& menu() const { return menu_; }
  std::function<void()> onOpen;
  std::function<void()> onQuit;
  // Each time the menu is about to open.
  std::function<void()> onWake;

  // Takes over the shell's state as the UI sent it; `active` may be null.
  void update(bool available, const platform::Value* active, const platform::List& recent);

  void menuWillOpen() override;

 private:
  void rebuild();
  void openApp() const;
  void quitApp() const;

  [[nodiscard]] std::shared_ptr<platform::FixedView> headerView() const;
  [[nodiscard]] std::shared_ptr<platform::FixedView> activeView(
      const DesktopTransferSnapshot& snapshot);

  platform::Menu menu_;
  bool isAvailable_ = true;
  std::optional<DesktopTransferSnapshot> activeTransfer_;
  std::vector<DesktopTransferSnapshot> recentTransfers_;
  std::weak_ptr<platform::ProgressBar> activeProgress_;
  std::weak_ptr<platform::Label> activeProgressLabel_;
};

}  // namespace brevanholt
