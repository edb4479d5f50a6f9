#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/PersistentAgreementKey.h"

namespace brevanholt {

using platform::MethodCall;
using platform::MethodChannel;
using platform::MethodResult;

MainFlutterWindow::MainFlutterWindow(const platform::Services& services, AppDelegate* delegate)
    : services_(services),
      delegate_(delegate),
      agreementKey_(PersistentAgreementKey(services.userDefaults)) {
  window().setDelegate(this);
}

MainFlutterWindow::~MainFlutterWindow() {
  services_.networkMonitor.cancel();
  window().setDelegate(nullptr);
}

void MainFlutterWindow::awakeFromNib() {
  const platform::Frame frame = window().frame();
  platformChannel_ =
      std::make_unique<MethodChannel>("brevanholt/platform", services_.engine.binaryMessenger());
  platformChannel_->setMethodCallHandler(
      [weak = weak_from_this()](MethodCall call, MethodResult result) {
        if (const auto self = weak.lock()) {
          self->handlePlatformCall(std::move(call), std::move(result));
        }
      });
  window().setContentView(services_.engine.view());
  window().setFrame(frame);
  tryPrepareReceiveDirectory();
  configureDiscoveryRecovery();
}

void MainFlutterWindow::performClose() {
  if (delegate_ == nullptr) return window().close();
  delegate_->hideToBackground();
}

void MainFlutterWindow::windowDidBecomeKey() {
  requestDiscoveryRecovery();
}

}  // namespace brevanholt
