#pragma once

#include "platform/linux/bus/Bus.h"
#include "platform/services/HostName.h"

#include <filesystem>

namespace brevanholt::platform {

// The pretty host name, else the kernel's host name. The pretty one is read from machine-info(5) at
// once, and then from org.freedesktop.hostname1, whose changes are followed. A service that fails
// or ends takes no known name away.
class HostnamedHostName final : public HostName {
 public:
  explicit HostnamedHostName(Bus& systemBus,
                             const std::filesystem::path& machineInfo = "/etc/machine-info");
  [[nodiscard]] std::string localizedName() const override;

 private:
  void refresh();

  Bus& systemBus_;
  std::string prettyName_;
  BusSubscription changes_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
