#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <string.h>

namespace brevanholt::platform {

// Overwrites memory before it is freed.
template <class T>
struct WipingAllocator {
  using value_type = T;

  WipingAllocator() = default;
  template <class U>
  WipingAllocator(const WipingAllocator<U>& /*other*/) {}

  T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
  void deallocate(T* memory, std::size_t count) {
    ::explicit_bzero(memory, count * sizeof(T));
    std::allocator<T>().deallocate(memory, count);
  }
  friend bool operator==(const WipingAllocator&, const WipingAllocator&) { return true; }
};

// Text that may hold a key: what it occupied is overwritten when it grows or goes. Only for texts
// of more than fifteen bytes, since the string itself holds shorter ones.
using SecretText = std::basic_string<char, std::char_traits<char>, WipingAllocator<char>>;

}  // namespace brevanholt::platform
