#include "platform/engine/web/sockets/OwedReply.h"

#include "platform/engine/web/link/EngineArguments.h"

#include <utility>

namespace brevanholt::platform {

MethodError socketError(const std::exception& error) {
  return engineError("socket_error", error);
}

void OwedReply::take(MethodResult& result) {
  if (result_) throw PlatformError("The socket is busy with an earlier call of this kind.");
  result_.emplace(std::move(result));
}

void OwedReply::succeed(Value value) {
  auto owed = std::exchange(result_, std::nullopt);
  if (owed) std::move(*owed).success(std::move(value));
}

void OwedReply::fail(const std::exception& error) {
  auto owed = std::exchange(result_, std::nullopt);
  if (owed) std::move(*owed).error(socketError(error));
}

}  // namespace brevanholt::platform
