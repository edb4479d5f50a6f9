#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/PersistentAgreementKey.h"

namespace brevanholt {

using platform::MethodCall;
using platform::MethodChannel;
using platform::MethodResult;

MainFlutterWindow::MainFlutterWindow(const platform::Services& services, AppDelegate* delegate,
                                     BrevanholtSharedItemsBridge& bridge)
    : services_(services),
      delegate_(delegate),
      bridge_(bridge),
      agreementKey_(PersistentAgreementKey(services.userDefaults)),
      pickedFiles_(services.securityScopes, services.userDefaults),
      pickAnswers_(services.mainQueue, services.utilityQueue),
      shareStore_(services.folders.downloads) {
  window().setDelegate(this);
}

MainFlutterWindow::~MainFlutterWindow() {
  services_.networkMonitor.cancel();
  window().setDelegate(nullptr);
  if (bridge_.channel() == platformChannel_.get()) bridge_.setChannel(nullptr);
}

void MainFlutterWindow::awakeFromNib() {
  const platform::Frame frame = window().frame();
  platformChannel_ =
      std::make_shared<MethodChannel>("brevanholt/platform", services_.engine.binaryMessenger());
  platformChannel_->setMethodCallHandler(
      [weak = weak_from_this()](MethodCall call, MethodResult result) {
        if (const auto self = weak.lock()) {
          self->handlePlatformCall(std::move(call), std::move(result));
        }
      });
  bridge_.setChannel(platformChannel_);
  bridge_.flushIfReady();
  dropView_ =
      std::make_unique<FileDropView>(platformChannel_, services_.dropContainer, pickedFiles_);
  services_.dropContainer.addSubview(services_.engine.view());
  window().setContentView(services_.dropContainer.view());
  window().setFrame(frame);
  tryPrepareReceiveDirectory();
  configureDiscoveryRecovery();
}

void MainFlutterWindow::performClose() {
  if (delegate_ == nullptr) return window().close();
  delegate_->hideToBackground();
}

void MainFlutterWindow::windowDidBecomeKey() {
  if (delegate_ != nullptr) delegate_->applicationDidBecomeActive();
  requestDiscoveryRecovery();
}

}  // namespace brevanholt
