#pragma once

#include "platform/channel/BinaryMessenger.h"
#include "platform/channel/MethodResult.h"

#include <functional>
#include <string>

namespace brevanholt::platform {

// A named channel of method calls in the standard method codec. Borrows its messenger.
class MethodChannel {
 public:
  using Handler = std::function<void(MethodCall call, MethodResult result)>;

  MethodChannel(std::string name, BinaryMessenger& messenger)
      : name_(std::move(name)), messenger_(messenger) {}
  ~MethodChannel() { setMethodCallHandler(nullptr); }
  MethodChannel(const MethodChannel&) = delete;
  MethodChannel& operator=(const MethodChannel&) = delete;

  // A message that is not a method call never reaches the handler: it is answered with the error
  // "malformed_message".
  void setMethodCallHandler(Handler handler);
  // Calls a method of the UI; no reply is expected.
  void invokeMethod(std::string method, Value arguments = {});
  // The same for what must not be lost: see BinaryMessenger::sendUntilHandled().
  void invokeMethodUntilHandled(std::string method, Value arguments,
                                UniqueFunction<void()> handled);

 private:
  std::string name_;
  BinaryMessenger& messenger_;
};

}  // namespace brevanholt::platform
