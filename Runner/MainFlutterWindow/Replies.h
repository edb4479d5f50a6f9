#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/desktop/Workspace.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Result.h"

#include <exception>
#include <filesystem>
#include <string>

namespace brevanholt {

// The error of the channel for any failure but a notification's, with the failure's own message.
[[nodiscard]] platform::MethodError platformError(const std::exception& error);

// Replies with a failure.
void replyError(platform::MethodResult result, const std::exception& error);

// A callback that replies with a path, or with the failure.
[[nodiscard]] platform::UniqueFunction<void(platform::Result<std::filesystem::path>)> replyPath(
    platform::MethodResult result);

// A callback that replies null, or an error with that message; the failure's own text is logged.
[[nodiscard]] platform::Workspace::Callback replyDone(platform::MethodResult result,
                                                      std::string failureMessage);

}  // namespace brevanholt
