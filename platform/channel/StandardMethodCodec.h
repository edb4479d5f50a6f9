#pragma once

#include "platform/channel/Message.h"
#include "platform/channel/Value.h"

#include <stdexcept>
#include <string>
#include <variant>

namespace brevanholt::platform {

struct MethodCall {
  std::string method;
  Value arguments;
};

struct MethodError {
  std::string code;
  std::string message;
  Value details;
  friend bool operator==(const MethodError&, const MethodError&) = default;
};

struct NotImplemented {
  friend bool operator==(const NotImplemented&, const NotImplemented&) = default;
};

// What a method call is answered with.
using Reply = std::variant<Value, MethodError, NotImplemented>;

// Why bytes are not a message of this codec.
class CodecError : public std::runtime_error {
 public:
  enum class Cause {
    kTruncated,       // a size or a value reaches past the end
    kTrailingBytes,   // something follows the last value
    kUnknownTag,      // a type that the codec does not have
    kInvalidUtf8,     // a string that is not UTF-8
    kTooLarge,        // values that take far more memory than the message
    kTooDeep,         // lists and maps nested beyond StandardMethodCodec::kMaximumDepth
    kNotAMethodCall,  // well-formed values, but the first is not a method's name
    kNotAnEnvelope,   // a reply whose first byte is neither success nor error, or a nameless error
  };
  CodecError(Cause cause, const char* text) : std::runtime_error(text), cause_(cause) {}
  [[nodiscard]] Cause cause() const { return cause_; }

 private:
  Cause cause_;
};

// The UI engine's standard method codec: a tag byte a value, little-endian numbers, sizes in one,
// three or five bytes, and numbers wider than four bytes aligned to their width from the start of
// the message.
//
// Decoding takes any bytes: whatever is not a message is a CodecError, and what it allocates
// follows the bytes that are there, never a size that they claim: lists and maps take at most
// sixteen times the message's size, or 64 MiB. Byte lists are slices of the
// message. Encoding repairs strings that are not UTF-8, so that a reply is never lost over a file's
// name.
class StandardMethodCodec {
 public:
  static constexpr int kMaximumDepth = 128;

  [[nodiscard]] static Message encodeMessage(const Value& value);
  [[nodiscard]] static Value decodeMessage(const Bytes& message);

  [[nodiscard]] static Message encodeMethodCall(const MethodCall& call);
  [[nodiscard]] static MethodCall decodeMethodCall(const Bytes& message);

  // "Not implemented" is the empty message.
  [[nodiscard]] static Message encodeReply(const Reply& reply);
  [[nodiscard]] static Reply decodeReply(const Bytes& message);
};

}  // namespace brevanholt::platform
