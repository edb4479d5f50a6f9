#include "Runner/MainFlutterWindow/Replies.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/Text.h"

namespace brevanholt {

using platform::MethodError;
using platform::MethodResult;
using platform::PlatformError;
using platform::Result;

MethodError platformError(const std::exception& error) {
  const auto* withText = dynamic_cast<const PlatformError*>(&error);
  const std::string text = withText != nullptr ? withText->message() : error.what();
  return {"platform_error", platform::withoutNuls(text), {}};
}

void replyError(MethodResult result, const std::exception& error) {
  std::move(result).error(platformError(error));
}

platform::UniqueFunction<void(Result<std::filesystem::path>)> replyPath(MethodResult result) {
  return [result = std::move(result)](const Result<std::filesystem::path>& outcome) mutable {
    if (!outcome.ok()) return replyError(std::move(result), outcome.error());
    std::move(result).success(outcome.value().string());
  };
}

platform::Workspace::Callback replyDone(MethodResult result, std::string failureMessage) {
  return [result = std::move(result), failureMessage = std::move(failureMessage)](
             const Result<platform::Done>& outcome) mutable {
    if (outcome.ok()) return std::move(result).success();
    platform::logInfo(failureMessage + " " + outcome.error().message());
    replyError(std::move(result), PlatformError(failureMessage));
  };
}

}  // namespace brevanholt
