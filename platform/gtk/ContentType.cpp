#include "platform/gtk/ContentType.h"

#include "platform/files/Files.h"
#include "platform/gtk/GLibPointers.h"

#include <array>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kLongestStart = 16 << 10;

}  // namespace

std::string contentTypeOf(const std::filesystem::path& file) {
  const FileDescriptor descriptor = openRegularFile(file);
  std::array<unsigned char, kLongestStart> start{};
  const ssize_t length = ::read(descriptor.get(), start.data(), start.size());
  const GCharPointer byContent(g_content_type_guess(
      nullptr, start.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)), nullptr));
  const GCharPointer byName(g_content_type_guess(file.filename().c_str(), nullptr, 0, nullptr));
  const bool isMoreExact = g_content_type_is_a(byName.get(), byContent.get()) != FALSE;
  return isMoreExact ? byName.get() : byContent.get();
}

}  // namespace brevanholt::platform
