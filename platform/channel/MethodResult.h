#pragma once

#include "platform/channel/StandardMethodCodec.h"
#include "platform/foundation/UniqueFunction.h"

namespace brevanholt::platform {

// The reply that a method call is owed: consumed by whoever sends it, and sent exactly once. One
// that is destroyed unsent is logged and answered with the error "platform_error"; sending a second
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
  // Nobody waits for the reply any more: none is sent.
  void drop() && { sink_ = nullptr; }

 private:
  void send(Reply reply);

  Sink sink_;
};

}  // namespace brevanholt::platform
