#include "platform/engine/web/EngineApplication.h"

#include "platform/engine/web/link/EngineArguments.h"
#include "platform/foundation/PlatformError.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kChannel = "engine/application";

}  // namespace

EngineApplication::EngineApplication(WebBinaryMessenger& messenger)
    : messenger_(messenger), channel_(kChannel, messenger) {
  channel_.setMethodCallHandler([this](const MethodCall& call, MethodResult result) {
    const auto found = answers_.find(call.method);
    if (found == answers_.end()) return std::move(result).notImplemented();
    found->second(argumentsOf(call), std::move(result));
  });
}

void EngineApplication::answer(const std::string& method, Answer answer) {
  answerLater(method, [answer = std::move(answer)](const Map& arguments, MethodResult result) {
    Value value;
    try {
      value = answer(arguments);
    } catch (const PlatformError& error) {
      return std::move(result).error(engineError("application_error", error));
    }
    std::move(result).success(std::move(value));
  });
}

void EngineApplication::answerLater(const std::string& method, LaterAnswer answer) {
  answers_.insert_or_assign(method, std::move(answer));
}

void EngineApplication::tell(const std::string& event, Value detail) {
  channel_.invokeMethod(event, std::move(detail));
}

bool EngineApplication::isHeard() const {
  return messenger_.isHeard(kChannel);
}

}  // namespace brevanholt::platform
