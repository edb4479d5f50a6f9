#pragma once

#include "platform/linux/Bus.h"
#include "platform/services/HostName.h"

#include <optional>
#include <vector>

namespace brevanholt::platform {

// The pretty host name that org.freedesktop.hostname1 keeps, else the kernel's host name.
class HostnamedHostName final : public HostName {
 public:
  explicit HostnamedHostName(Bus& systemBus);
  void localizedName(UniqueFunction<void(std::string)> callback) override;

 private:
  void refresh();
  void known(std::string prettyName);

  Bus& systemBus_;
  std::optional<std::string> prettyName_;  // once the service, or its absence, has answered
  std::vector<UniqueFunction<void(std::string)>> waiting_;
  BusSubscription changes_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
