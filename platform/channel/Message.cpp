#include "platform/channel/Message.h"

namespace brevanholt::platform {

Bytes Message::joined() const {
  if (parts_.size() == 1) return parts_.front();
  std::vector<std::uint8_t> whole;
  whole.reserve(size_);
  for (const auto& part : parts_) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

}  // namespace brevanholt::platform
