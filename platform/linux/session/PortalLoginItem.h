#pragma once

#include "platform/linux/portal/PortalRequest.h"
#include "platform/services/LoginItem.h"
#include "platform/services/UserDefaults.h"

#include <memory>

namespace brevanholt::platform {

// Start at login, and running with no window, by org.freedesktop.portal.Background.
//
// The portal answers later, may ask a person first, and cannot be asked what it decided before; so
// its last answer is kept in `store`. Until it answers, and where it refuses, the item requires
// approval. Each request says both whether to start at login and that the program runs hidden.
class PortalLoginItem final : public LoginItem {
 public:
  // `command` is what the portal starts inside the sandbox.
  PortalLoginItem(Bus& sessionBus, UserDefaults& store, std::vector<std::string> command);

  [[nodiscard]] Status status() const override;
  void registerItem() override;
  void unregisterItem() override;

  // Asks that the program may go on without a window; once in each run is enough.
  void askToRunInBackground();

 private:
  void keep(const std::string& state);
  void request(bool startsAtLogin);
  void answered(bool wantedStart, const Result<GVariantPointer>& results);

  Bus& sessionBus_;
  UserDefaults& store_;
  std::vector<std::string> command_;
  bool hasAsked_ = false;
  std::unique_ptr<PortalRequest> request_;
};

}  // namespace brevanholt::platform
