#pragma once

namespace brevanholt::platform {

// Whether the session starts this application at login.
class LoginItem {
 public:
  enum class Status {
    kNotRegistered,
    kEnabled,
    kRequiresApproval,  // registered, and switched off in the desktop's own settings
    kNotFound,          // registered, but what it starts is not this program
  };

  virtual ~LoginItem() = default;
  [[nodiscard]] virtual Status status() const = 0;
  // Enables the item, whatever its status. Throws PlatformError.
  virtual void registerItem() = 0;
  // One that is not registered is fine. Throws PlatformError.
  virtual void unregisterItem() = 0;
};

}  // namespace brevanholt::platform
