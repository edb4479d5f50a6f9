#pragma once

#include "platform/channel/StandardMethodCodec.h"

#include <gtest/gtest.h>

#include <ostream>

namespace brevanholt::platform {

// How values and replies read in a failed test.
void PrintTo(const Value& value, std::ostream* out);

struct ValuePrinter {
  std::ostream& out;
  void operator()(std::monostate) const { out << "null"; }
  void operator()(bool value) const { out << (value ? "true" : "false"); }
  void operator()(const std::string& text) const { out << '"' << text << '"'; }
  void operator()(const Bytes& bytes) const { out << bytes.size() << " bytes"; }
  void operator()(const List& list) const {
    out << '[';
    for (const auto& element : list) PrintTo(element, &(out << ' '));
    out << " ]";
  }
  void operator()(const Map& map) const {
    out << '{';
    for (const auto& [key, value] : map.entries()) {
      PrintTo(key, &(out << ' '));
      PrintTo(value, &(out << ": "));
    }
    out << " }";
  }
  template <class T>
  void operator()(const std::vector<T>& numbers) const {
    out << numbers.size() << " numbers";
  }
  template <class T>
  void operator()(T number) const {
    out << number;
  }
};

inline void PrintTo(const Value& value, std::ostream* out) {
  std::visit(ValuePrinter{*out}, value.storage());
}

}  // namespace brevanholt::platform

namespace testing::internal {

// Replies are a standard variant, for which the library has a printer of its own.
template <>
class UniversalPrinter<brevanholt::platform::Reply> {
 public:
  static void Print(const brevanholt::platform::Reply& reply, std::ostream* out) {
    using namespace brevanholt::platform;
    if (const auto* value = std::get_if<Value>(&reply)) return PrintTo(*value, out);
    if (const auto* error = std::get_if<MethodError>(&reply)) {
      *out << "error " << error->code << ": " << error->message;
    } else {
      *out << "not implemented";
    }
  }
};

}  // namespace testing::internal
