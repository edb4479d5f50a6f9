#pragma once

#include "platform/foundation/Bytes.h"

#include <cstddef>
#include <vector>

namespace brevanholt::platform {

// An encoded message as the parts it is written from, in order: a large byte list is a part of its
// own that shares the value's storage, so encoding copies none of it.
class Message {
 public:
  Message() = default;
  explicit Message(Bytes part) { append(std::move(part)); }

  void append(Bytes part) {
    if (part.empty()) return;
    size_ += part.size();
    parts_.push_back(std::move(part));
  }

  [[nodiscard]] const std::vector<Bytes>& parts() const { return parts_; }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }
  // The whole message in one piece; copies unless there is just one part.
  [[nodiscard]] Bytes joined() const;

 private:
  std::vector<Bytes> parts_;
  std::size_t size_ = 0;
};

}  // namespace brevanholt::platform
