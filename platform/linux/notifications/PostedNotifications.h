#pragma once

#include "platform/services/UserDefaults.h"

#include <cstdint>
#include <string>

namespace brevanholt::platform {

// The numbers that a notification server gave to the notifications it still shows, by the
// application's own identifiers. They are kept for the next run, and are worth nothing to any other
// server, nor to the same one once it was started again.
class PostedNotifications {
 public:
  explicit PostedNotifications(UserDefaults& store) : store_(store) {}

  // Switches to this server's records, by a name that no other server ever has.
  void useServer(const std::string& server);
  // Zero where there is none.
  [[nodiscard]] std::uint32_t find(const std::string& identifier) const;
  [[nodiscard]] bool contains(std::uint32_t number) const;
  void keep(const std::string& identifier, std::uint32_t number);
  void forget(std::uint32_t number);

 private:
  void save();

  UserDefaults& store_;
  std::string server_;
  std::map<std::string, std::uint32_t> numbers_;
};

}  // namespace brevanholt::platform
