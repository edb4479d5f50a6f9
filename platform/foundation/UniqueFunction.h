#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace brevanholt::platform {

template <class Signature>
class UniqueFunction;

// A callable that need not be copyable, so that it can own what it will need once: a reply that is
// owed, a token to release. (std::move_only_function, which this compiler does not have yet.)
template <class R, class... Arguments>
class UniqueFunction<R(Arguments...)> {
 public:
  UniqueFunction() = default;
  UniqueFunction(std::nullptr_t) {}
  template <class F>
  requires(!std::same_as<std::remove_cvref_t<F>, UniqueFunction> &&
           std::is_invocable_r_v<R, F&, Arguments...>) UniqueFunction(F&& function)
      : callable_(std::make_unique<Holder<std::decay_t<F>>>(std::forward<F>(function))) {}

  explicit operator bool() const { return callable_ != nullptr; }
  R operator()(Arguments... arguments) {
    return callable_->call(std::forward<Arguments>(arguments)...);
  }

 private:
  struct Callable {
    virtual ~Callable() = default;
    virtual R call(Arguments... arguments) = 0;
  };
  template <class F>
  struct Holder final : Callable {
    template <class G>
    explicit Holder(G&& function) : function_(std::forward<G>(function)) {}
    R call(Arguments... arguments) override {
      return function_(std::forward<Arguments>(arguments)...);
    }
    F function_;
  };

  std::unique_ptr<Callable> callable_;
};

}  // namespace brevanholt::platform
