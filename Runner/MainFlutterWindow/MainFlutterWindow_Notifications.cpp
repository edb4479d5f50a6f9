#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::Result;
using platform::Value;

void MainFlutterWindow::requestNotificationPermission(const CallArguments& /*arguments*/,
                                                      MethodResult result) {
  services_.notificationCenter.requestAuthorization([result = std::move(result)](
                                                        Result<bool> granted) mutable {
    if (granted.ok()) return std::move(result).success(granted.value());
    std::move(result).error({"notification_permission_error", granted.error().message(), Value()});
  });
}

void MainFlutterWindow::showNotification(const CallArguments& arguments, MethodResult result) {
  const auto& title = arguments.required<std::string>("title");
  const auto& body = arguments.required<std::string>("body");
  const auto& identifier = arguments.required<std::string>("id");
  services_.notificationCenter.add(
      {.identifier = identifier, .title = title, .body = body},
      [result = std::move(result)](const Result<platform::Done>& added) mutable {
        if (added.ok()) return std::move(result).success();
        std::move(result).error({"notification_error", added.error().message(), Value()});
      });
}

Value MainFlutterWindow::clearNotification(const CallArguments& arguments) {
  services_.notificationCenter.remove(arguments.required<std::string>("id"));
  return {};
}

}  // namespace brevanholt
