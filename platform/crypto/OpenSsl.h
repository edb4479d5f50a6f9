#pragma once

#include <memory>

namespace brevanholt::platform::openssl {

template <auto free>
struct FreeWith {
  template <class T>
  void operator()(T* object) const {
    free(object);
  }
};

// Owns what the library hands out and frees it with `free`.
template <class T, auto free>
using Owned = std::unique_ptr<T, FreeWith<free>>;

// Empties the library's list of this thread's errors, for a failure that is told in other words.
void forgetErrors();

// For what fails only when the library or the machine is broken: throws PlatformError with the
// library's own text.
void require(bool succeeded);

}  // namespace brevanholt::platform::openssl
