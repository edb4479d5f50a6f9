#include "platform/channel/StandardMethodCodec.h"

#include <cstdlib>

#include "fuzz/FuzzInput.h"

using brevanholt::platform::Bytes;
using brevanholt::platform::CodecError;
using brevanholt::platform::StandardMethodCodec;
using brevanholt::platform::Value;

namespace {

// Bytes of which a value was made once are bytes that make the same value again. Byte by byte,
// rather than value by value: not-a-number differs from itself.
void checkRoundTrip(const Bytes& message) {
  const Value value = StandardMethodCodec::decodeMessage(message);
  const Bytes once = StandardMethodCodec::encodeMessage(value).joined();
  const Bytes twice =
      StandardMethodCodec::encodeMessage(StandardMethodCodec::decodeMessage(once)).joined();
  if (once != twice) std::abort();
}

template <class Decode>
void tryTo(Decode decode, const Bytes& message) {
  try {
    static_cast<void>(decode(message));
  } catch (const CodecError&) {
    return;  // the one way to refuse
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes message = brevanholt::fuzz::input(data, size);
  tryTo([](const Bytes& bytes) { return checkRoundTrip(bytes), 0; }, message);
  tryTo(StandardMethodCodec::decodeMethodCall, message);
  tryTo(StandardMethodCodec::decodeReply, message);
  return 0;
}
