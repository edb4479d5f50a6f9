#pragma once

#include "Runner/MainFlutterWindow/BrevanholtSharedItemsBridge.h"
#include "Runner/MainFlutterWindow/CallArguments.h"
#include "Runner/MainFlutterWindow/FileDropView.h"
#include "Runner/MainFlutterWindow/OrderedLists.h"
#include "Runner/MainFlutterWindow/PickedFiles.h"
#include "Shared/BrevanholtNativeShareStore.h"
#include "platform/Services.h"
#include "platform/channel/MethodChannel.h"
#include "platform/crypto/P256PrivateKey.h"
#include "platform/foundation/Lifetime.h"

#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
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
  void handlePlatformCall(platform::MethodCall call, platform::MethodResult result);

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

  // Runs `answer` and replies with its value, or with its error as "platform_error".
  static void reply(platform::MethodResult result,
                    platform::UniqueFunction<platform::Value()> answer);
  // The reply to a request that only succeeds or fails with the one message.
  static platform::Workspace::Callback replyDone(platform::MethodResult result,
                                                 std::string failureMessage);

  // Inline services.
  void deviceName(const CallArguments& arguments, platform::MethodResult& result);
  platform::Value platformEventsReady(const CallArguments& arguments);
  platform::Value appSupportPath(const CallArguments& arguments);
  platform::Value appVersion(const CallArguments& arguments);
  platform::Value writeClipboardText(const CallArguments& arguments);
  void openExternalUrl(const CallArguments& arguments, platform::MethodResult& result);
  platform::Value enableMulticast(const CallArguments& arguments);

  // Desktop shell.
  platform::Value launchAtStartupEnabled(const CallArguments& arguments);
  platform::Value setLaunchAtStartup(const CallArguments& arguments);
  platform::Value updateDesktopShell(const CallArguments& arguments);
  platform::Value setBackgroundMode(const CallArguments& arguments);

  // Discovery recovery.
  void configureDiscoveryRecovery();

  // Notifications.
  void requestNotificationPermission(const CallArguments& arguments,
                                     platform::MethodResult& result);
  void showNotification(const CallArguments& arguments, platform::MethodResult& result);
  platform::Value clearNotification(const CallArguments& arguments);

  // Pickers and bookmarks.
  void pickFiles(const CallArguments& arguments, platform::MethodResult& result);
  void pickFolder(const CallArguments& arguments, platform::MethodResult& result);
  // Shows a panel, keeps what was chosen, and has `use` answer with it.
  void choose(
      platform::OpenPanel::Choice choice, platform::MethodResult result,
      platform::UniqueFunction<void(const PickedFiles::Locations&, OrderedLists::Deliver)> use);
  platform::Value restorePickedFiles(const CallArguments& arguments);
  platform::Value releasePickedFiles(const CallArguments& arguments);

  // Receive location.
  [[nodiscard]] std::filesystem::path brevanholtDownloadsDirectory() const;
  void tryPrepareReceiveDirectory();
  [[nodiscard]] const std::filesystem::path& requiredReceiveDirectory() const;
  platform::Value prepareReceiveLocation(const CallArguments& arguments);
  platform::Value setReceiveFolderName(const CallArguments& arguments);
  void openReceiveFolder(const CallArguments& arguments, platform::MethodResult& result);
  platform::Value temporaryReceivePath(const CallArguments& arguments);

  // Migration. Neither fails, and neither replaces or removes anything that holds something.
  void migrateLegacyReceivedItems(const std::filesystem::path& receiveFolder) const;
  static void pruneEmptyLegacyDirectories(std::filesystem::path directory,
                                          const std::filesystem::path& receiveFolder);

  // Publishing.
  void publishReceivedFile(const CallArguments& arguments, platform::MethodResult& result);
  void copyReceivedFile(std::filesystem::path source, std::filesystem::path destination,
                        platform::MethodResult result);
  void finishCopy();
  platform::Value publishReceivedDirectory(const CallArguments& arguments);

  // Received items.
  platform::Value receivedFileExists(const CallArguments& arguments);
  void openReceivedFile(const CallArguments& arguments, platform::MethodResult& result);
  platform::Value revealReceivedFile(const CallArguments& arguments);
  platform::Value locateReceivedFiles(const CallArguments& arguments);

  // Identity.
  platform::Value cryptoCreateIdentity(const CallArguments& arguments);
  platform::Value cryptoDeriveSharedKey(const CallArguments& arguments);
  platform::Value cryptoEncrypt(const CallArguments& arguments);
  platform::Value cryptoDecrypt(const CallArguments& arguments);

  // Previews.
  void receivedFilePreview(const CallArguments& arguments, platform::MethodResult& result);
  void receivedFilePreview(const std::filesystem::path& file, int maximumDimension,
                           platform::MethodResult result);
  void imagePreviewData(const std::filesystem::path& file, int maximumDimension,
                        platform::ImagePreviewer::Callback callback);
  void documentPreview(const std::filesystem::path& file, int maximumDimension,
                       platform::MethodResult result);

  platform::Services services_;
  AppDelegate* delegate_;
  BrevanholtSharedItemsBridge& bridge_;

  platform::P256PrivateKey agreementKey_;
  std::optional<std::filesystem::path> receiveDirectory_;
  std::string receiveFolderName_ = "Brevanholt";
  std::unique_ptr<platform::ProcessActivity> transferActivity_;
  std::shared_ptr<platform::MethodChannel> platformChannel_;
  std::vector<platform::Connection> wakeObservers_;

  PickedFiles pickedFiles_;
  OrderedLists pickAnswers_;
  BrevanholtNativeShareStore shareStore_;
  std::unique_ptr<FileDropView> dropView_;

  // While a file is copied into place, the calls that must see the outcome wait here.
  bool isCopying_ = false;
  std::deque<std::pair<platform::MethodCall, platform::MethodResult>> callsBehindCopy_;
};

}  // namespace brevanholt
