#pragma once

#include "platform/channel/MethodChannel.h"

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

  explicit EngineApplication(BinaryMessenger& messenger);

  void answer(const std::string& method, Answer answer);
  void answerLater(const std::string& method, LaterAnswer answer);
  void tell(const std::string& event, Value detail = {});

 private:
  MethodChannel channel_;
  std::map<std::string, LaterAnswer> answers_;
};

}  // namespace brevanholt::platform
