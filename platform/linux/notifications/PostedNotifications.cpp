#include "platform/linux/notifications/PostedNotifications.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <algorithm>
#include <charconv>

namespace brevanholt::platform {
namespace {

constexpr const char* kKey = "postedNotifications";

UserDefaults::StringDictionary stored(const UserDefaults& store) {
  try {
    return store.stringDictionary(kKey);
  } catch (const PlatformError& error) {
    logWarning("notifications of earlier runs are forgotten: " + error.message());
    return {};
  }
}

}  // namespace

void PostedNotifications::useServer(const std::string& server) {
  if (server == server_) return;
  server_ = server;
  numbers_.clear();
  // "<number> <server>"
  for (const auto& [identifier, text] : stored(store_)) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    if (std::string(parsed.ptr, end) == " " + server) numbers_[identifier] = number;
  }
}

std::uint32_t PostedNotifications::find(const std::string& identifier) const {
  const auto found = numbers_.find(identifier);
  return found != numbers_.end() ? found->second : 0;
}

bool PostedNotifications::contains(std::uint32_t number) const {
  return std::any_of(numbers_.begin(), numbers_.end(),
                     [number](const auto& posted) { return posted.second == number; });
}

void PostedNotifications::keep(const std::string& identifier, std::uint32_t number) {
  if (find(identifier) == number) return;
  numbers_[identifier] = number;
  save();
}

void PostedNotifications::forget(std::uint32_t number) {
  const auto forgotten =
      std::erase_if(numbers_, [number](const auto& posted) { return posted.second == number; });
  if (forgotten > 0) save();
}

void PostedNotifications::save() {
  UserDefaults::StringDictionary texts;
  for (const auto& [identifier, number] : numbers_) {
    texts[identifier] = std::to_string(number) + " " + server_;
  }
  try {
    store_.setStringDictionary(kKey, texts);
  } catch (const PlatformError& error) {
    logWarning("the next run will not know its notifications: " + error.message());
  }
}

}  // namespace brevanholt::platform
