#pragma once

#include "platform/linux/bus/Bus.h"

namespace brevanholt::platform {

inline constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
inline constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";

// A method of the desktop's portal.
constexpr BusMethod portalMethod(const char* interface, const char* method) {
  return {kPortal, kPortalPath, interface, method};
}

// A call of the portal whose answer comes later, by a signal of an object made for the call
// (org.freedesktop.portal.Request): a person may be asked in between, so it has no time limit.
// Destroyed before that, it is withdrawn and the callback never runs.
class PortalRequest {
 public:
  // The results; an error where the person or the portal refuses, or there is no portal.
  using Callback = UniqueFunction<void(Result<GVariantPointer> results)>;
  // Each value may be floating.
  struct Parameters {
    std::vector<GVariant*> arguments;  // before the options
    std::vector<std::pair<const char*, GVariant*>> options;
    FileDescriptor descriptor;  // index 0 for an argument of type "h"
  };

  PortalRequest(Bus& sessionBus, const BusMethod& method, Parameters parameters, Callback callback);
  ~PortalRequest();
  PortalRequest(const PortalRequest&) = delete;
  PortalRequest& operator=(const PortalRequest&) = delete;

 private:
  void listenAt(const std::string& path);
  void answered(GVariant* response);
  void finish(Result<GVariantPointer> results);

  Bus& sessionBus_;
  std::string path_;
  Callback callback_;
  BusSubscription response_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
