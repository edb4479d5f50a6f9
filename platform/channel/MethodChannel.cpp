#include "platform/channel/MethodChannel.h"

#include "platform/foundation/Log.h"

#include <new>

namespace brevanholt::platform {
namespace {

constexpr const char* kNoMemory = "There is not enough memory for the message.";

Message encoded(const Reply& answer) {
  try {
    return StandardMethodCodec::encodeReply(answer);
  } catch (const std::bad_alloc&) {
    return StandardMethodCodec::encodeReply(MethodError{"platform_error", kNoMemory, {}});
  }
}

}  // namespace

void MethodChannel::setMethodCallHandler(Handler handler) {
  if (!handler) return messenger_.setMessageHandler(name_, nullptr);
  messenger_.setMessageHandler(
      name_, [name = name_, handler = std::move(handler)](const Bytes& message, BinaryReply reply) {
        MethodResult result(
            [reply = std::move(reply)](const Reply& answer) mutable { reply(encoded(answer)); });
        MethodCall call;
        try {
          call = StandardMethodCodec::decodeMethodCall(message);
        } catch (const CodecError& error) {
          logWarning("a message on channel " + name + " is not a method call: " + error.what());
          return std::move(result).error({"malformed_message", error.what(), {}});
        } catch (const std::bad_alloc&) {
          logWarning("there is no memory for a message on channel " + name);
          return std::move(result).error({"malformed_message", kNoMemory, {}});
        }
        handler(std::move(call), std::move(result));
      });
}

void MethodChannel::invokeMethod(std::string method, Value arguments) {
  messenger_.send(name_, StandardMethodCodec::encodeMethodCall(
                             {.method = std::move(method), .arguments = std::move(arguments)}));
}

void MethodChannel::invokeMethodUntilHandled(std::string method, Value arguments,
                                             UniqueFunction<void()> handled) {
  messenger_.sendUntilHandled(name_,
                              StandardMethodCodec::encodeMethodCall(
                                  {.method = std::move(method), .arguments = std::move(arguments)}),
                              std::move(handled));
}

}  // namespace brevanholt::platform
