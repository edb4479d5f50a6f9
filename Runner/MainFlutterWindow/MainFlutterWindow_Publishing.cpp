#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/PathRules.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/MoveIntoPlace.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::MethodResult;
using platform::PlatformError;
using platform::Value;

void MainFlutterWindow::publishReceivedFile(const CallArguments& arguments, MethodResult& result) {
  const fs::path source = arguments.required<std::string>("path");
  const auto* name = arguments.optional<std::string>("name");
  const std::string fileName = receivedFileName(name != nullptr ? *name : "");
  const auto* relativePath = arguments.optional<std::string>("relativePath");
  const std::string relative = safeRelativePath(relativePath != nullptr ? *relativePath : fileName);

  // The relative path only chooses the subfolder; its last piece gives way to the name.
  const fs::path folder = (requiredReceiveDirectory() / relative).parent_path();
  platform::createDirectories(folder);
  const fs::path destination = uniqueDestination(folder, fileName, platform::nameIsTaken);
  if (!platform::renameIntoPlace(source, destination)) {
    return copyReceivedFile(source, destination, std::move(result));
  }
  std::move(result).success(destination.string());
}

void MainFlutterWindow::copyReceivedFile(fs::path source, fs::path destination,
                                         MethodResult result) {
  isCopying_ = true;
  services_.utilityQueue.async([&mainQueue = services_.mainQueue, weak = weak_from_this(),
                                source = std::move(source), destination = std::move(destination),
                                result = std::move(result)]() mutable {
    std::optional<PlatformError> failure;
    try {
      platform::copyIntoPlace(source, destination);
    } catch (const PlatformError& error) {
      failure = error;
    }
    mainQueue.post([weak = std::move(weak), destination = std::move(destination), failure,
                    result = std::move(result)]() mutable {
      reply(std::move(result), [&]() -> Value {
        if (failure) throw PlatformError(*failure);
        return destination.string();
      });
      if (const auto self = weak.lock()) self->finishCopy();
    });
  });
}

void MainFlutterWindow::finishCopy() {
  isCopying_ = false;
  while (!isCopying_ && !callsBehindCopy_.empty()) {
    auto [call, result] = std::move(callsBehindCopy_.front());
    callsBehindCopy_.pop_front();
    handlePlatformCall(std::move(call), std::move(result));
  }
}

Value MainFlutterWindow::publishReceivedDirectory(const CallArguments& arguments) {
  const std::string relative = safeRelativePath(arguments.required<std::string>("relativePath"));
  const fs::path directory = requiredReceiveDirectory() / relative;
  platform::createDirectories(directory);
  return directory.string();
}

}  // namespace brevanholt
