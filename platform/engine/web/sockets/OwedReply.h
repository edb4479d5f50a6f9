#pragma once

#include "platform/channel/MethodResult.h"
#include "platform/channel/Value.h"
#include "platform/foundation/PlatformError.h"

#include <exception>
#include <optional>

namespace brevanholt::platform {

// The error of the page's sockets.
[[nodiscard]] MethodError socketError(const std::exception& error);

// A reply that may be owed for as long as a socket is open. Destroying it answers with ECANCELED.
class OwedReply {
 public:
  ~OwedReply() { fail(SystemError("wait for the socket", ECANCELED)); }
  OwedReply() = default;
  OwedReply(const OwedReply&) = delete;
  OwedReply& operator=(const OwedReply&) = delete;

  // Throws PlatformError where one is owed already.
  void take(MethodResult& result);
  void succeed(Value value);
  void fail(const std::exception& error);

 private:
  std::optional<MethodResult> result_;
};

}  // namespace brevanholt::platform
