#pragma once

#include "Runner/Intake/BrevanholtSharedItemsBridge.h"
#include "Runner/Intake/DeliveryOrder.h"
#include "Runner/Intake/FileDropView.h"
#include "Runner/Intake/PickedFiles.h"
#include "Runner/MainFlutterWindow/CallArguments.h"
#include "Runner/MainFlutterWindow/PageFiles.h"
#include "Runner/ReceiveFolder/ReceiveFolder.h"
#include "Shared/BrevanholtNativeShareStore.h"
#include "platform/Services.h"
#include "platform/channel/MethodChannel.h"
#include "platform/crypto/P256PrivateKey.h"

#include <memory>
#include <vector>

namespace brevanholt {

class AppDelegate;

// The one window, and the owner of most of the host's state. It holds the channel to the UI and
// answers every call on it. Closing it hides it; it lives as long as the application.
class MainFlutterWindow final : public platform::WindowDelegate,
                                public std::enable_shared_from_this<MainFlutterWindow> {
 public:
  // Without a delegate, closing the window closes it for good.
  MainFlutterWindow(const platform::Services& services, AppDelegate* delegate,
                    BrevanholtSharedItemsBridge& bridge = BrevanholtSharedItemsBridge::shared());
  ~MainFlutterWindow() override;

  // Builds the window's content and opens the channel.
  void awakeFromNib();
  void handlePlatformCall(const platform::MethodCall& call, platform::MethodResult result);

  void performClose() override;
  void windowDidBecomeKey() override;

  [[nodiscard]] platform::Window& window() { return services_.mainWindow; }
  // Asks the UI to look for nearby devices anew.
  void requestDiscoveryRecovery();
  // Null until awakeFromNib().
  [[nodiscard]] platform::MethodChannel* platformChannel() { return platformChannel_.get(); }
  [[nodiscard]] PickedFiles& pickedFiles() { return pickedFiles_; }

 private:
  friend struct PlatformMethod;

  using Arguments = const CallArguments&;
  using MethodResult = platform::MethodResult;
  using Value = platform::Value;

  void configureDiscoveryRecovery();

  // The handlers of the dispatcher's table that are not just its rows.
  Value platformEventsReady(Arguments);
  [[nodiscard]] std::filesystem::path appSupport() const {
    return services_.folders.applicationSupport / "Brevanholt";
  }
  [[nodiscard]] std::vector<std::filesystem::path> ownFolders() const;
  Value appSupportPath(Arguments);
  Value appVersion(Arguments);
  Value writeClipboardText(Arguments);
  void openExternalUrl(Arguments, MethodResult);
  Value launchAtStartupEnabled(Arguments);
  Value setLaunchAtStartup(Arguments);
  Value updateDesktopShell(Arguments);
  Value setBackgroundMode(Arguments);
  void pickFiles(Arguments, MethodResult);
  void pickFolder(Arguments, MethodResult);
  Value restorePickedFiles(Arguments);
  void releasePickedFiles(Arguments, MethodResult);
  Value setReceiveFolderName(Arguments);
  Value temporaryReceivePath(Arguments);
  void openReceiveFolder(Arguments, MethodResult);
  void publishReceivedFile(Arguments, MethodResult);
  void openReceivedFile(Arguments, MethodResult);
  Value revealReceivedFile(Arguments);
  void locateReceivedFiles(Arguments, MethodResult);
  void receivedFilePreview(Arguments, MethodResult);
  void requestNotificationPermission(Arguments, MethodResult);
  void showNotification(Arguments, MethodResult);
  Value clearNotification(Arguments);

  // Shows a panel, keeps what was chosen, and has `use` answer with it.
  void choose(
      platform::OpenPanel::Choice choice, MethodResult result,
      platform::UniqueFunction<void(const PickedFiles::Locations&, DeliveryOrder::Deliver)> use);
  using PreviewCallback = platform::ImagePreviewer::Callback;
  void receivedFilePreview(const std::filesystem::path& file, int maximumDimension,
                           MethodResult result);
  void imagePreviewData(const std::filesystem::path& file, int maximumDimension, PreviewCallback);
  void documentPreview(const std::filesystem::path& file, int maximumDimension,
                       MethodResult result);

  platform::Services services_;
  AppDelegate* delegate_;
  BrevanholtSharedItemsBridge& bridge_;
  platform::P256PrivateKey agreementKey_;
  ReceiveFolder receiveFolder_;
  std::unique_ptr<platform::ProcessActivity> transferActivity_;
  std::shared_ptr<platform::MethodChannel> platformChannel_;
  std::vector<platform::Connection> wakeObservers_;
  platform::Connection uiObserver_;

  PickedFiles pickedFiles_;
  PageFiles pageFiles_;
  DeliveryOrder pickAnswers_;
  BrevanholtNativeShareStore shareStore_;
  std::unique_ptr<FileDropView> dropView_;
};

}  // namespace brevanholt
