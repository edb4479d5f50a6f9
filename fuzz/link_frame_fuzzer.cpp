#include "platform/engine/web/link/LinkFrame.h"

#include <cstdlib>

#include "fuzz/FuzzInput.h"

using brevanholt::platform::Bytes;
using brevanholt::platform::LinkFrame;
using brevanholt::platform::Message;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes = brevanholt::fuzz::input(data, size);
  const auto frame = LinkFrame::parse(bytes);
  if (!frame) return 0;
  const Bytes encoded =
      LinkFrame::encode(frame->kind, frame->channel, frame->number, Message(frame->message))
          .joined();
  const auto again = LinkFrame::parse(
      encoded.slice(LinkFrame::kSizePrefix, encoded.size() - LinkFrame::kSizePrefix));
  const bool isSame = again && again->kind == frame->kind && again->channel == frame->channel &&
                      again->number == frame->number && again->message == frame->message;
  if (!isSame) std::abort();
  return 0;
}
