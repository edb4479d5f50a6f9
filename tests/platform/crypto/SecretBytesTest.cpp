#include "platform/crypto/SecretBytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

namespace {

// The storage whose release a test watches, and its content at that moment.
const void* watched = nullptr;
std::vector<std::uint8_t>* contentWhenFreed = nullptr;
constexpr std::size_t kWatchedSize = 32;

void release(void* storage) {
  if (storage != nullptr && storage == watched) {
    const auto* bytes = static_cast<const std::uint8_t*>(storage);
    watched = nullptr;
    contentWhenFreed->assign(bytes, bytes + kWatchedSize);
  }
  std::free(storage);
}

}  // namespace

void* operator new[](std::size_t size) {
  void* storage = std::malloc(size);
  if (storage == nullptr) throw std::bad_alloc();
  return storage;
}
void operator delete[](void* storage) noexcept {
  release(storage);
}
void operator delete[](void* storage, std::size_t) noexcept {
  release(storage);
}

namespace brevanholt::platform {
namespace {

using Octets = std::vector<std::uint8_t>;

class SecretBytesTest : public testing::Test {
 protected:
  void SetUp() override { contentWhenFreed = &content_; }
  void TearDown() override { watched = nullptr; }

  Octets content_;
};

TEST_F(SecretBytesTest, AreWipedBeforeTheirStorageIsFreed) {
  {
    const SecretBytes secret{Octets(kWatchedSize, 0xA5)};
    watched = secret.data();
  }
  EXPECT_EQ(content_, Octets(kWatchedSize, 0));
}

TEST_F(SecretBytesTest, AreWipedAsSharedBytesToo) {
  {
    const Bytes shared = SecretBytes(Octets(kWatchedSize, 0xA5)).intoBytes();
    watched = shared.data();
    const Bytes slice = shared.slice(1, 2);
    EXPECT_EQ(shared, Bytes(Octets(kWatchedSize, 0xA5)));
  }
  EXPECT_EQ(content_, Octets(kWatchedSize, 0));
}

}  // namespace
}  // namespace brevanholt::platform
