#include "platform/channel/MethodResult.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {

MethodResult::~MethodResult() {
  if (!sink_) return;
  logError("a method call was dropped without a reply");
  send(MethodError{"platform_error", "The call was not answered.", {}});
}

void MethodResult::send(Reply reply) {
  if (!sink_) return logError("a method call was answered twice; the second reply is dropped");
  std::exchange(sink_, nullptr)(std::move(reply));
}

}  // namespace brevanholt::platform
