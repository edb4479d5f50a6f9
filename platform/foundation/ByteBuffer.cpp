#include "platform/foundation/ByteBuffer.h"

#include <new>

#include <sys/mman.h>

namespace brevanholt::platform {
namespace {

constexpr std::align_val_t kHugePage{2 << 20};
constexpr std::size_t kLarge = 4 << 20;

std::shared_ptr<std::uint8_t[]> largeStorage(std::size_t size) {
  std::shared_ptr<std::uint8_t[]> storage(
      static_cast<std::uint8_t*>(::operator new(size, kHugePage)),
      [](std::uint8_t* bytes) { ::operator delete(bytes, kHugePage); });
  ::madvise(storage.get(), size, MADV_HUGEPAGE);
  return storage;
}

}  // namespace

ByteBuffer::ByteBuffer(std::size_t size)
    : size_(size),
      storage_(size < kLarge ? std::make_shared_for_overwrite<std::uint8_t[]>(size)
                             : largeStorage(size)) {}

Bytes ByteBuffer::finish() && {
  const std::span<const std::uint8_t> view(storage_.get(), size_);
  return {view, std::move(storage_)};
}

}  // namespace brevanholt::platform
