#include "platform/channel/MethodChannel.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {

void MethodChannel::setMethodCallHandler(Handler handler) {
  if (!handler) return messenger_.setMessageHandler(name_, nullptr);
  messenger_.setMessageHandler(
      name_, [name = name_, handler = std::move(handler)](const Bytes& message, BinaryReply reply) {
        MethodResult result([reply = std::move(reply)](const Reply& answer) mutable {
          reply(StandardMethodCodec::encodeReply(answer));
        });
        MethodCall call;
        try {
          call = StandardMethodCodec::decodeMethodCall(message);
        } catch (const CodecError& error) {
          logWarning("a message on channel " + name + " is not a method call: " + error.what());
          return std::move(result).error({"malformed_message", error.what(), {}});
        }
        handler(std::move(call), std::move(result));
      });
}

void MethodChannel::invokeMethod(std::string method, Value arguments) {
  messenger_.send(name_, StandardMethodCodec::encodeMethodCall(
                             {.method = std::move(method), .arguments = std::move(arguments)}));
}

}  // namespace brevanholt::platform
