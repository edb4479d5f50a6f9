#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/Replies.h"
#include "platform/files/Files.h"
#include "platform/formats/Url.h"

namespace brevanholt {

using platform::Map;
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

Value MainFlutterWindow::platformEventsReady(const CallArguments& /*arguments*/) {
  bridge_.setDartReady();
  bridge_.flushIfReady();
  return {};
}

Value MainFlutterWindow::appSupportPath(const CallArguments& /*arguments*/) {
  platform::createDirectories(appSupport());
  return appSupport().string();
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

void MainFlutterWindow::openExternalUrl(const CallArguments& arguments, MethodResult result) {
  const auto& url = arguments.required<std::string>("url");
  if (!isWebLink(url)) return replyError(std::move(result), PlatformError(kLinkFailure));
  services_.workspace.openUrl(url, replyDone(std::move(result), kLinkFailure));
}

}  // namespace brevanholt
