#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/PersistentAgreementKey.h"

namespace brevanholt {

using platform::MethodCall;
using platform::MethodChannel;

MainFlutterWindow::MainFlutterWindow(const platform::Services& services, AppDelegate* delegate,
                                     BrevanholtSharedItemsBridge& bridge)
    : services_(services),
      delegate_(delegate),
      bridge_(bridge),
      agreementKey_(PersistentAgreementKey(services.userDefaults)),
      receiveFolder_(services.folders, services.mainQueue),
      pickedFiles_(services.securityScopes, services.userDefaults),
      pageFiles_(ownFolders(), receiveFolder_, pickedFiles_),
      pickAnswers_(services.mainQueue),
      shareStore_(services.folders.downloads) {
  window().setDelegate(this);
  services_.engine.setFileAccess(&pageFiles_);
}

MainFlutterWindow::~MainFlutterWindow() {
  services_.networkMonitor.cancel();
  services_.engine.setFileAccess(nullptr);
  window().setDelegate(nullptr);
  if (bridge_.channel() == platformChannel_.get()) bridge_.setChannel(nullptr);
}

void MainFlutterWindow::awakeFromNib() {
  const platform::Frame frame = window().frame();
  platformChannel_ =
      std::make_shared<MethodChannel>("brevanholt/platform", services_.engine.binaryMessenger());
  platformChannel_->setMethodCallHandler(
      [weak = weak_from_this()](const MethodCall& call, MethodResult result) {
        const auto self = weak.lock();
        if (!self) return std::move(result).drop();
        self->handlePlatformCall(call, std::move(result));
      });
  bridge_.setChannel(platformChannel_);
  bridge_.flushIfReady();
  dropView_ =
      std::make_unique<FileDropView>(platformChannel_, services_.dropContainer, pickedFiles_);
  services_.dropContainer.addSubview(services_.engine.view());
  window().setContentView(services_.dropContainer.view());
  window().setFrame(frame);
  receiveFolder_.prepare();
  configureDiscoveryRecovery();
  // The next page declares its own background mode.
  uiObserver_ = services_.engine.uiDidEnd.connect([this] { transferActivity_.reset(); });
}

std::vector<std::filesystem::path> MainFlutterWindow::ownFolders() const {
  auto folders = services_.engine.bundleNeeds().folders;
  folders.push_back(appSupport());
  return folders;
}

void MainFlutterWindow::performClose() {
  if (delegate_ == nullptr) return window().close();
  delegate_->hideToBackground();
}

void MainFlutterWindow::windowDidBecomeKey() {
  if (delegate_ != nullptr) delegate_->applicationDidBecomeActive();
  requestDiscoveryRecovery();
}

// Every event sends a request; the UI decides how often it looks for devices.
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
