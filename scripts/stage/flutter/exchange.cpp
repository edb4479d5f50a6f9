// A window with a Flutter bundle in it, in which this program stands in for two of the bundle's
// plugins. It writes down what the Dart code calls, and does what it is told, a line at a time.
//
//   flutter_exchange BUNDLE [ARGUMENT...]
//
//   event NAME      sends the event to the Dart code, and writes "handled NAME" once it has run
//   echoes COUNT    sends as many calls, one after another, and writes how long each took
//   payload BYTES   sends a call with as many bytes
//   error METHOD    replies to that method with an error from now on, and writes this line
//   nothing METHOD  likewise, with "not implemented"
//   hold METHOD     likewise, but does not reply
//   end             removes the engine, whether it owes replies or not, and ends

#include "platform/channel/MethodChannel.h"
#include "platform/engine/flutter/FlutterEngine.h"
#include "platform/gtk/JournalLog.h"

#include <gtkmm/main.h>
#include <gtkmm/window.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <sstream>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace brevanholt::platform {
namespace {

using Clock = std::chrono::steady_clock;

// Values of the types that plugins of windows are given.
void print(std::ostream& out, const Value& value) {
  if (const auto* text = value.getIf<std::string>()) {
    out << '"' << *text << '"';
  } else if (const auto* flag = value.getIf<bool>()) {
    out << (*flag ? "true" : "false");
  } else if (const auto number = value.number()) {
    out << *number;
  } else if (const auto* map = value.getIf<Map>()) {
    out << '{';
    for (const auto& [key, entry] : map->entries()) {
      print(out << ' ', key);
      print(out << ": ", entry);
    }
    out << " }";
  } else {
    out << (value.isNull() ? "null" : "?");
  }
}

// The results of the calls that have one, as the real plugins' are.
Reply replyTo(const MethodCall& call) {
  static const Map kDisplay{{"id", "only"},
                            {"name", "only"},
                            {"size", Map{{"width", 1600.0}, {"height", 1200.0}}},
                            {"visiblePosition", Map{{"dx", 0.0}, {"dy", 0.0}}},
                            {"visibleSize", Map{{"width", 1600.0}, {"height", 1200.0}}},
                            {"scaleFactor", 1.0}};
  static const std::map<std::string, Reply> kReplies{
      {"getBounds", Value(Map{{"x", 40.0}, {"y", 60.0}, {"width", 640.0}, {"height", 480.0}})},
      {"getPrimaryDisplay", Value(kDisplay)},
      {"getAllDisplays", Value(Map{{"displays", List{kDisplay}}})},
      {"getCursorScreenPoint", Value(Map{{"dx", 5.0}, {"dy", 6.0}})}};
  if (call.method.starts_with("is")) return Value(false);
  const auto found = kReplies.find(call.method);
  return found != kReplies.end() ? found->second : Reply(Value(true));
}

class Exchange {
 public:
  Exchange(const FlutterBundle& bundle, const std::vector<std::string>& arguments)
      : engine_(std::make_unique<FlutterEngine>(bundle, arguments)) {
    for (auto* channel : {&window_, &screen_}) {
      channel->emplace(
          channel == &window_ ? "window_manager" : "dev.leanflutter.plugins/screen_retriever",
          engine_->binaryMessenger());
      (*channel)->setMethodCallHandler(
          [this](const MethodCall& call, MethodResult result) { called(call, std::move(result)); });
    }
    frame_.set_default_size(640, 480);
    frame_.add(dynamic_cast<GtkNativeView&>(engine_->view()).widget());
    frame_.show_all();
    orders_ = LoopSource::whenReadable(STDIN_FILENO, [this] { follow(); });
  }

 private:
  void called(const MethodCall& call, MethodResult result) {
    std::ostringstream arguments;
    print(arguments, call.arguments);
    std::cerr << "call " << call.method << ' ' << arguments.str().substr(0, 1000) << '\n';
    const std::string& manner = manners_[call.method];
    if (manner == "hold") return held_.push_back(std::move(result));
    if (manner == "nothing") return std::move(result).notImplemented();
    if (manner == "error") {
      return std::move(result).error({"refused", "This is not done here.", Value(7)});
    }
    std::move(result).reply(replyTo(call));
  }

  void follow() {
    std::string line;
    if (!std::getline(std::cin, line)) return end();
    std::istringstream words(line);
    std::string order;
    std::string argument;
    words >> order >> argument;
    if (order == "event") {
      window_->invokeMethodUntilHandled("onEvent", Map{{"eventName", argument}},
                                        [argument] { std::cerr << "handled " + argument + "\n"; });
    } else if (order == "echoes") {
      echo(std::stoi(argument), Clock::now(), std::stoi(argument));
    } else if (order == "payload") {
      payload(std::stoul(argument));
    } else if (order == "end") {
      end();
    } else {
      manners_[argument] = order;
      std::cerr << order << ' ' << argument << '\n';
    }
  }

  void echo(int count, Clock::time_point start, int left) {
    if (left == 0) {
      const std::chrono::duration<double, std::milli> time = Clock::now() - start;
      std::cerr << "echoed " << count << ' ' << time.count() / count << " ms each\n";
      return;
    }
    // Dart answers a method that it does not have without asking anybody.
    window_->invokeMethodUntilHandled("echo", {},
                                      [this, count, start, left] { echo(count, start, left - 1); });
  }

  void payload(std::size_t size) {
    const auto start = Clock::now();
    const Bytes bytes(std::vector<std::uint8_t>(size, 7));
    window_->invokeMethodUntilHandled("payload", bytes, [size, start] {
      const std::chrono::duration<double, std::milli> time = Clock::now() - start;
      std::cerr << "carried " << size << ' ' << time.count() << " ms\n";
    });
  }

  void end() {
    orders_.stop();
    window_.reset();
    screen_.reset();
    engine_.reset();
    held_.clear();  // too late for the Dart code
    Gtk::Main::quit();
  }

  Gtk::Window frame_;
  std::unique_ptr<FlutterEngine> engine_;
  std::optional<MethodChannel> window_;
  std::optional<MethodChannel> screen_;
  std::vector<MethodResult> held_;
  std::map<std::string, std::string> manners_;  // by method, the order
  LoopSource orders_;
};

}  // namespace
}  // namespace brevanholt::platform

int main(int argc, char** argv) {
  using namespace brevanholt::platform;
  installJournalLog();
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  Gtk::Main main;
  {
    const Exchange exchange(FlutterBundle(arguments.at(0)),
                            {arguments.begin() + 1, arguments.end()});
    Gtk::Main::run();
  }
#ifdef __SANITIZE_ADDRESS__
  __lsan_do_leak_check();  // where an engine ran, the process ends without what runs at an exit
#endif
}
