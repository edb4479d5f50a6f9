#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/Replies.h"
#include "Runner/MainFlutterWindow/TransferKey.h"
#include "platform/crypto/AesGcm.h"
#include "platform/files/Files.h"
#include "platform/foundation/Log.h"

#include <string_view>
#include <variant>

namespace brevanholt {

using platform::Bytes;
using platform::MethodCall;
using platform::MethodResult;
using platform::Value;

// One row of the dispatcher's table. A handler that answers at once returns the value or throws.
// One that answers later owns the result, and replies with its failures itself.
struct PlatformMethod {
  using AnswersAtOnce = Value (*)(MainFlutterWindow&, const CallArguments&);
  using AnswersLater = void (*)(MainFlutterWindow&, const CallArguments&, MethodResult);

  std::string_view name;
  std::variant<AnswersAtOnce, AnswersLater> handler;

  static const PlatformMethod* find(std::string_view name);
};

namespace {

template <Value (MainFlutterWindow::*handler)(const CallArguments&)>
Value atOnce(MainFlutterWindow& window, const CallArguments& arguments) {
  return (window.*handler)(arguments);
}

template <void (MainFlutterWindow::*handler)(const CallArguments&, MethodResult)>
void later(MainFlutterWindow& window, const CallArguments& arguments, MethodResult result) {
  (window.*handler)(arguments, std::move(result));
}

Value received(const CallArguments& arguments) {
  const auto location = arguments.path("location");
  return location && platform::fileExists(*location);
}

Value encrypted(const CallArguments& arguments) {
  return platform::sealAesGcm(arguments.required<Bytes>("key").span(),
                              arguments.required<Bytes>("data").span());
}

Value decrypted(const CallArguments& arguments) {
  return platform::openAesGcm(arguments.required<Bytes>("key").span(),
                              arguments.required<Bytes>("data").span());
}

}  // namespace

const PlatformMethod* PlatformMethod::find(std::string_view name) {
  using W = MainFlutterWindow;
  using A = const CallArguments&;
  using R = MethodResult;
  static constexpr PlatformMethod kPlatformMethods[] = {
      {"deviceName", [](W& w, A) -> Value { return w.services_.hostName.localizedName(); }},
      {"platformEventsReady", atOnce<&W::platformEventsReady>},
      {"appSupportPath", atOnce<&W::appSupportPath>},
      {"appVersion", atOnce<&W::appVersion>},
      {"launchAtStartupEnabled", atOnce<&W::launchAtStartupEnabled>},
      {"setLaunchAtStartup", atOnce<&W::setLaunchAtStartup>},
      {"updateDesktopShell", atOnce<&W::updateDesktopShell>},
      {"pickFiles", later<&W::pickFiles>},
      {"pickFolder", later<&W::pickFolder>},
      {"restorePickedFiles", atOnce<&W::restorePickedFiles>},
      {"releasePickedFiles", later<&W::releasePickedFiles>},
      {"prepareReceiveLocation", [](W& w, A) -> Value { return w.receiveFolder_.prepare(); }},
      {"writeClipboardText", atOnce<&W::writeClipboardText>},
      {"openExternalUrl", later<&W::openExternalUrl>},
      {"openReceiveFolder", later<&W::openReceiveFolder>},
      {"setReceiveFolderName", atOnce<&W::setReceiveFolderName>},
      {"temporaryReceivePath", atOnce<&W::temporaryReceivePath>},
      {"publishReceivedFile", later<&W::publishReceivedFile>},
      {"publishReceivedDirectory",
       [](W& w, A a, R result) {
         w.receiveFolder_.publishDirectory(a.required<std::string>("relativePath"),
                                           replyPath(std::move(result)));
       }},
      {"receivedFileExists", [](W&, A a) -> Value { return received(a); }},
      {"openReceivedFile", later<&W::openReceivedFile>},
      {"revealReceivedFile", atOnce<&W::revealReceivedFile>},
      {"receivedFilePreview", later<&W::receivedFilePreview>},
      {"locateReceivedFiles", later<&W::locateReceivedFiles>},
      {"enableMulticast", [](W&, A) -> Value { return {}; }},
      {"requestNotificationPermission", later<&W::requestNotificationPermission>},
      {"setBackgroundMode", atOnce<&W::setBackgroundMode>},
      {"showNotification", later<&W::showNotification>},
      {"clearNotification", atOnce<&W::clearNotification>},
      {"cryptoCreateIdentity", [](W& w, A) -> Value { return publicKeyOf(w.agreementKey_); }},
      {"cryptoDeriveSharedKey",
       [](W& w, A a) -> Value {
         return transferKey(w.agreementKey_, a.required<Bytes>("publicKey"));
       }},
      {"cryptoEncrypt", [](W&, A a) { return encrypted(a); }},
      {"cryptoDecrypt", [](W&, A a) { return decrypted(a); }},
  };
  for (const PlatformMethod& method : kPlatformMethods) {
    if (method.name == name) return &method;
  }
  return nullptr;
}

void MainFlutterWindow::handlePlatformCall(const MethodCall& call, MethodResult result) {
  const PlatformMethod* method = PlatformMethod::find(call.method);
  if (method == nullptr) return std::move(result).notImplemented();
  const CallArguments arguments(call);
  if (const auto* answerLater = std::get_if<PlatformMethod::AnswersLater>(&method->handler)) {
    return (*answerLater)(*this, arguments, std::move(result));
  }
  Value value;
  try {
    value = std::get<PlatformMethod::AnswersAtOnce>(method->handler)(*this, arguments);
  } catch (const std::exception& error) {
    return replyError(std::move(result), error);
  }
  std::move(result).success(std::move(value));
}

}  // namespace brevanholt
