#pragma once

#include "platform/channel/StandardMethodCodec.h"
#include "platform/foundation/UniqueFunction.h"

namespace brevanholt::platform {

// The pending reply to a method call: sending consumes it, and it is sent exactly once. If it is
// destroyed unsent, that is logged and the call gets the error "platform_error"; sending a second
// time is a logged fault.
class MethodResult {
 public:
  using Sink = UniqueFunction<void(Reply)>;

  explicit MethodResult(Sink sink) : sink_(std::move(sink)) {}
  MethodResult(MethodResult&&) noexcept = default;
  MethodResult& operator=(MethodResult&&) = delete;
  ~MethodResult();

  void success(Value value = {}) && { send(std::move(value)); }
  void error(MethodError error) && { send(std::move(error)); }
  void notImplemented() && { send(NotImplemented{}); }
  void reply(Reply reply) && { send(std::move(reply)); }
  // Sends no reply, because the caller no longer waits for one.
  void drop() && { sink_ = nullptr; }

 private:
  void send(Reply reply);

  Sink sink_;
};

}  // namespace brevanholt::platform
