#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

// Every occasion asks, unfiltered; the UI decides what comes of it, and how often.
void MainFlutterWindow::configureDiscoveryRecovery() {
  const auto request = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->requestDiscoveryRecovery();
  };
  services_.networkMonitor.start(
      "brevanholt.network-monitor",
      [&mainQueue = services_.mainQueue, request] { mainQueue.post(request); });
  wakeObservers_.push_back(services_.wakeNotices.systemDidWake.connect(request));
  wakeObservers_.push_back(services_.wakeNotices.screensDidWake.connect(request));
}

void MainFlutterWindow::requestDiscoveryRecovery() {
  if (platformChannel_) platformChannel_->invokeMethod("discoveryRecoveryRequested");
}

}  // namespace brevanholt
