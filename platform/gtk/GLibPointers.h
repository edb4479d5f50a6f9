#pragma once

#include <gio/gio.h>

#include <memory>

namespace brevanholt::platform {

template <auto free>
struct FreeWith {
  template <class T>
  void operator()(T* pointer) const {
    free(pointer);
  }
};

// Owners of what GLib hands out.
template <class T>
using GObjectPointer = std::unique_ptr<T, FreeWith<g_object_unref>>;
using GErrorPointer = std::unique_ptr<GError, FreeWith<g_error_free>>;
using GVariantPointer = std::unique_ptr<GVariant, FreeWith<g_variant_unref>>;
using GVariantTypePointer = std::unique_ptr<GVariantType, FreeWith<g_variant_type_free>>;
using GBytesPointer = std::unique_ptr<GBytes, FreeWith<g_bytes_unref>>;
using GCharPointer = std::unique_ptr<char, FreeWith<g_free>>;

// A new reference to an object that has another owner.
template <class T>
[[nodiscard]] GObjectPointer<T> retained(T* object) {
  return GObjectPointer<T>(static_cast<T*>(g_object_ref(object)));
}

}  // namespace brevanholt::platform
