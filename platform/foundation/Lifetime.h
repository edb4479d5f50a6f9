#pragma once

#include <memory>
#include <utility>

namespace brevanholt::platform {

// Ties callbacks to their owner: what bind() returned does nothing once the owner is gone. Make it
// the last member, so that it goes first. For the owner's own thread only.
class Lifetime {
 public:
  template <class F>
  [[nodiscard]] auto bind(F function) const {
    return [alive = std::weak_ptr<void>(token_),
            function = std::move(function)](auto&&... arguments) mutable {
      if (!alive.expired()) function(std::forward<decltype(arguments)>(arguments)...);
    };
  }

 private:
  std::shared_ptr<void> token_ = std::make_shared<char>();
};

}  // namespace brevanholt::platform
