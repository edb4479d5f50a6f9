#include "platform/channel/StandardMethodCodec.h"

#include "platform/channel/StandardMessageReader.h"
#include "platform/channel/StandardMessageWriter.h"

namespace brevanholt::platform {
namespace {

using Cause = CodecError::Cause;

constexpr std::uint8_t kSuccessEnvelope = 0;
constexpr std::uint8_t kErrorEnvelope = 1;

struct ReplyWriter {
  StandardMessageWriter& writer;
  void operator()(const Value& value) const {
    writer.writeByte(kSuccessEnvelope);
    writer.writeValue(value);
  }
  void operator()(const MethodError& error) const {
    writer.writeByte(kErrorEnvelope);
    writer.writeString(error.code);
    writer.writeString(error.message);
    writer.writeValue(error.details);
  }
  void operator()(NotImplemented) const {}
};

MethodError readError(StandardMessageReader& reader) {
  const Value code = reader.readValue();
  const Value message = reader.readValue();
  if (code.getIf<std::string>() == nullptr) {
    throw CodecError(Cause::kNotAnEnvelope, "an error has no code");
  }
  const auto* text = message.getIf<std::string>();
  return {*code.getIf<std::string>(), text != nullptr ? *text : "", reader.readValue()};
}

}  // namespace

Message StandardMethodCodec::encodeMessage(const Value& value) {
  StandardMessageWriter writer;
  writer.writeValue(value);
  return std::move(writer).finish();
}

Value StandardMethodCodec::decodeMessage(const Bytes& message) {
  StandardMessageReader reader(message);
  Value value = reader.readValue();
  reader.expectEnd();
  return value;
}

Message StandardMethodCodec::encodeMethodCall(const MethodCall& call) {
  StandardMessageWriter writer;
  writer.writeString(call.method);
  writer.writeValue(call.arguments);
  return std::move(writer).finish();
}

MethodCall StandardMethodCodec::decodeMethodCall(const Bytes& message) {
  StandardMessageReader reader(message);
  const Value method = reader.readValue();
  if (method.getIf<std::string>() == nullptr) {
    throw CodecError(Cause::kNotAMethodCall, "a method call does not begin with a name");
  }
  MethodCall call{*method.getIf<std::string>(), reader.readValue()};
  reader.expectEnd();
  return call;
}

Message StandardMethodCodec::encodeReply(const Reply& reply) {
  StandardMessageWriter writer;
  std::visit(ReplyWriter{writer}, reply);
  return std::move(writer).finish();
}

Reply StandardMethodCodec::decodeReply(const Bytes& message) {
  if (message.empty()) return NotImplemented{};
  StandardMessageReader reader(message);
  const std::uint8_t kind = reader.readByte();
  if (kind != kSuccessEnvelope && kind != kErrorEnvelope) {
    throw CodecError(Cause::kNotAnEnvelope, "a reply is neither a success nor an error");
  }
  Reply reply = kind == kSuccessEnvelope ? Reply(reader.readValue()) : Reply(readError(reader));
  reader.expectEnd();
  return reply;
}

}  // namespace brevanholt::platform
