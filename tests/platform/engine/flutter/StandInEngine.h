#pragma once

#include "platform/engine/flutter/FlutterFunctions.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// The messages of an engine library written for tests, seen from its Dart code: that listens on
// nothing until it is told to, and keeps one message for each channel as Dart does.
class StandInDart {
 public:
  struct Event {
    std::string channel;
    std::string text;
    GTask* answer = nullptr;  // null where nobody asks
  };

  static StandInDart& instance();

  void listen(const std::string& channel);
  // Calls the host, and returns the call's number. -1 for a channel without a handler.
  int call(const std::string& channel, const std::string& text);
  // The first event without an answer, if there is one.
  std::optional<std::string> next();
  // Answers the event that next() returned.
  void handle();
  // Forgets everything, as when the Dart code ends. Messages under way are answered as unhandled.
  void end();

  void arrived(Event event);

  std::map<int, std::vector<std::string>> replies;  // to a call, all that came

  struct Handler {
    FlMessageHandler function;
    gpointer data;
  };
  std::map<std::string, Handler> handlers;

 private:
  std::vector<Event> events_;
  std::map<std::string, Event> buffered_;
  std::vector<std::string> listening_;
  int calls_ = 0;
};

// The functions of that library.
[[nodiscard]] FlutterFunctions standInFunctions();

}  // namespace brevanholt::platform
