#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace brevanholt::platform {

// An immutable run of bytes that shares its storage: copying one, or taking a slice, copies no
// byte. Payloads of tens of megabytes travel as these, from the message they came in to the cipher.
class Bytes {
 public:
  Bytes() = default;
  Bytes(std::vector<std::uint8_t> storage) {
    auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(storage));
    view_ = *owner;
    owner_ = std::move(owner);
  }
  // `owner` keeps `view` alive.
  Bytes(std::span<const std::uint8_t> view, std::shared_ptr<const void> owner)
      : view_(view), owner_(std::move(owner)) {}

  [[nodiscard]] const std::uint8_t* data() const { return view_.data(); }
  [[nodiscard]] std::size_t size() const { return view_.size(); }
  [[nodiscard]] bool empty() const { return view_.empty(); }
  [[nodiscard]] std::span<const std::uint8_t> span() const { return view_; }
  [[nodiscard]] auto begin() const { return view_.begin(); }
  [[nodiscard]] auto end() const { return view_.end(); }

  // `offset` and `length` must lie inside.
  [[nodiscard]] Bytes slice(std::size_t offset, std::size_t length) const {
    return {view_.subspan(offset, length), owner_};
  }

  friend bool operator==(const Bytes& left, const Bytes& right) {
    return std::ranges::equal(left.view_, right.view_);
  }

 private:
  std::span<const std::uint8_t> view_;
  std::shared_ptr<const void> owner_;
};

}  // namespace brevanholt::platform
