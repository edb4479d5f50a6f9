#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/foundation/Log.h"

#include <array>
#include <cstdlib>
#include <variant>

namespace brevanholt {

using platform::MethodCall;
using platform::MethodError;
using platform::MethodResult;
using platform::PlatformError;
using platform::Value;

// Calls that read or change the receive folder keep their order even while a copy into it runs.
enum class CallOrder { kAtOnce, kBehindCopies };

// One row of the dispatcher's table. A handler that answers at once returns the value; one that
// answers later takes the result. Either may throw instead.
struct PlatformMethod {
  using AnswersAtOnce = Value (MainFlutterWindow::*)(const CallArguments&);
  using AnswersLater = void (MainFlutterWindow::*)(const CallArguments&, MethodResult&);

  std::string_view name;
  std::variant<AnswersAtOnce, AnswersLater> handler;
  CallOrder order = CallOrder::kAtOnce;

  static const PlatformMethod* find(std::string_view name);
};

namespace {

MethodError platformError(const std::exception& error) {
  return {"platform_error", error.what(), {}};
}

}  // namespace

const PlatformMethod* PlatformMethod::find(std::string_view name) {
  using W = MainFlutterWindow;
  using enum CallOrder;
  static constexpr std::array kPlatformMethods{
      PlatformMethod{"deviceName", &W::deviceName},
      PlatformMethod{"platformEventsReady", &W::platformEventsReady},
      PlatformMethod{"appSupportPath", &W::appSupportPath},
      PlatformMethod{"appVersion", &W::appVersion},
      PlatformMethod{"launchAtStartupEnabled", &W::launchAtStartupEnabled},
      PlatformMethod{"setLaunchAtStartup", &W::setLaunchAtStartup},
      PlatformMethod{"updateDesktopShell", &W::updateDesktopShell},
      PlatformMethod{"pickFiles", &W::pickFiles},
      PlatformMethod{"pickFolder", &W::pickFolder},
      PlatformMethod{"restorePickedFiles", &W::restorePickedFiles},
      PlatformMethod{"releasePickedFiles", &W::releasePickedFiles},
      PlatformMethod{"prepareReceiveLocation", &W::prepareReceiveLocation, kBehindCopies},
      PlatformMethod{"writeClipboardText", &W::writeClipboardText},
      PlatformMethod{"openExternalUrl", &W::openExternalUrl},
      PlatformMethod{"openReceiveFolder", &W::openReceiveFolder, kBehindCopies},
      PlatformMethod{"setReceiveFolderName", &W::setReceiveFolderName, kBehindCopies},
      PlatformMethod{"temporaryReceivePath", &W::temporaryReceivePath},
      PlatformMethod{"publishReceivedFile", &W::publishReceivedFile, kBehindCopies},
      PlatformMethod{"publishReceivedDirectory", &W::publishReceivedDirectory, kBehindCopies},
      PlatformMethod{"receivedFileExists", &W::receivedFileExists, kBehindCopies},
      PlatformMethod{"openReceivedFile", &W::openReceivedFile, kBehindCopies},
      PlatformMethod{"revealReceivedFile", &W::revealReceivedFile, kBehindCopies},
      PlatformMethod{"receivedFilePreview", PlatformMethod::AnswersLater(&W::receivedFilePreview)},
      PlatformMethod{"locateReceivedFiles", &W::locateReceivedFiles, kBehindCopies},
      PlatformMethod{"enableMulticast", &W::enableMulticast},
      PlatformMethod{"requestNotificationPermission", &W::requestNotificationPermission},
      PlatformMethod{"setBackgroundMode", &W::setBackgroundMode},
      PlatformMethod{"showNotification", &W::showNotification},
      PlatformMethod{"clearNotification", &W::clearNotification},
      PlatformMethod{"cryptoCreateIdentity", &W::cryptoCreateIdentity},
      PlatformMethod{"cryptoDeriveSharedKey", &W::cryptoDeriveSharedKey},
      PlatformMethod{"cryptoEncrypt", &W::cryptoEncrypt},
      PlatformMethod{"cryptoDecrypt", &W::cryptoDecrypt},
  };
  for (const PlatformMethod& method : kPlatformMethods) {
    if (method.name == name) return &method;
  }
  return nullptr;
}

void MainFlutterWindow::handlePlatformCall(MethodCall call, MethodResult result) {
  const PlatformMethod* method = PlatformMethod::find(call.method);
  if (method == nullptr) return std::move(result).notImplemented();
  if (isCopying_ && method->order == CallOrder::kBehindCopies) {
    callsBehindCopy_.emplace_back(std::move(call), std::move(result));
    return;
  }
  const CallArguments arguments(call);
  if (const auto* handler = std::get_if<PlatformMethod::AnswersAtOnce>(&method->handler)) {
    return reply(std::move(result),
                 [this, handler, &arguments] { return (this->**handler)(arguments); });
  }
  const auto handler = std::get<PlatformMethod::AnswersLater>(method->handler);
  try {
    (this->*handler)(arguments, result);
  } catch (const std::exception& error) {
    std::move(result).error(platformError(error));
  }
}

void MainFlutterWindow::reply(MethodResult result, platform::UniqueFunction<Value()> answer) {
  Value value;
  try {
    value = answer();
  } catch (const std::exception& error) {
    return std::move(result).error(platformError(error));
  }
  std::move(result).success(std::move(value));
}

platform::Workspace::Callback MainFlutterWindow::replyDone(MethodResult result,
                                                           std::string failureMessage) {
  return [result = std::move(result), failureMessage = std::move(failureMessage)](
             const platform::Result<platform::Done>& outcome) mutable {
    if (outcome.ok()) return std::move(result).success();
    platform::logInfo(failureMessage + " " + outcome.error().message());
    std::move(result).error(platformError(PlatformError(failureMessage)));
  };
}

void preconditionFailure(std::string_view method, std::string_view key) {
  platform::logError("fatal: method \"" + std::string(method) + "\" was called without a valid \"" +
                     std::string(key) + "\"");
  std::abort();
}

}  // namespace brevanholt
