#pragma once

#include "platform/channel/MethodChannel.h"
#include "platform/engine/web/WebBinaryMessenger.h"

#include <functional>
#include <map>
#include <string>

namespace brevanholt::platform {

// What a page may ask of this run of the program besides the host's methods, and is told of it
// ("engine/application"). Borrows the messenger.
class EngineApplication {
 public:
  // Throws PlatformError for what is refused; the page sees its text.
  using Answer = std::function<Value(const Map& arguments)>;
  // For what is answered later.
  using LaterAnswer = std::function<void(const Map& arguments, MethodResult result)>;

  explicit EngineApplication(WebBinaryMessenger& messenger);

  void answer(const std::string& method, Answer answer);
  void answerLater(const std::string& method, LaterAnswer answer);
  void tell(const std::string& event, Value detail = {});
  // Whether the page that is loaded now takes what it is told.
  [[nodiscard]] bool isHeard() const;

 private:
  WebBinaryMessenger& messenger_;
  MethodChannel channel_;
  std::map<std::string, LaterAnswer> answers_;
};

}  // namespace brevanholt::platform
