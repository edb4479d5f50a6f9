#pragma once

#include "platform/channel/Value.h"

#include <cstdint>
#include <string>

#include <netinet/in.h>
#include <sys/socket.h>

namespace brevanholt::platform {

// An internet address with its port, in the system's form.
class SocketAddress {
 public:
  SocketAddress() = default;
  // "192.0.2.1", "2001:db8::1", "fe80::1%eth0". Throws PlatformError for what is none; names are
  // not looked up.
  SocketAddress(const std::string& text, std::int64_t port);

  [[nodiscard]] static SocketAddress ofSocket(int descriptor);
  [[nodiscard]] static SocketAddress ofPeer(int descriptor);

  [[nodiscard]] int family() const { return storage_.ss_family; }
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::int32_t port() const;
  [[nodiscard]] const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage_); }
  // For the system to write to.
  [[nodiscard]] sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage_); }
  [[nodiscard]] socklen_t* sizePointer() { return &size_; }
  [[nodiscard]] socklen_t size() const { return size_; }

 private:
  sockaddr_storage storage_{};
  socklen_t size_ = sizeof(storage_);
};

// Every network interface that is up: [{name, index, isLoopback, canMulticast, addresses:
// [{address, prefix}]}].
[[nodiscard]] Value networkInterfaces();

}  // namespace brevanholt::platform
