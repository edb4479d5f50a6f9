#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Url.h"

namespace brevanholt {

using platform::Map;
using platform::MethodResult;
using platform::PlatformError;
using platform::Value;

namespace {

constexpr const char* kLinkFailure = "The web link could not be opened.";

// The scheme is compared as written: "HTTPS" is refused.
bool isWebLink(const std::string& text) {
  const auto url = platform::Url::parse(text);
  return url && (url->scheme() == "https" || url->scheme() == "http");
}

}  // namespace

void MainFlutterWindow::deviceName(const CallArguments& /*arguments*/, MethodResult& result) {
  services_.hostName.localizedName([result = std::move(result)](std::string name) mutable {
    std::move(result).success(std::move(name));
  });
}

Value MainFlutterWindow::platformEventsReady(const CallArguments& /*arguments*/) {
  bridge_.setDartReady();
  bridge_.flushIfReady();
  return {};
}

Value MainFlutterWindow::appSupportPath(const CallArguments& /*arguments*/) {
  const std::filesystem::path path = services_.folders.applicationSupport / "Brevanholt";
  platform::createDirectories(path);
  return path.string();
}

Value MainFlutterWindow::appVersion(const CallArguments& /*arguments*/) {
  return Map{{"version", services_.bundleInfo.shortVersion},
             {"buildNumber", services_.bundleInfo.buildNumber}};
}

Value MainFlutterWindow::writeClipboardText(const CallArguments& arguments) {
  if (!services_.pasteboard.setText(arguments.required<std::string>("text"))) {
    throw PlatformError("Clipboard text could not be saved.");
  }
  return {};
}

void MainFlutterWindow::openExternalUrl(const CallArguments& arguments, MethodResult& result) {
  const auto& url = arguments.required<std::string>("url");
  if (!isWebLink(url)) throw PlatformError(kLinkFailure);
  services_.workspace.openUrl(url, replyDone(std::move(result), kLinkFailure));
}

Value MainFlutterWindow::enableMulticast(const CallArguments& /*arguments*/) {
  return {};
}

}  // namespace brevanholt
