#pragma once

#include "platform/linux/storage/KeyFileText.h"
#include "platform/services/UserDefaults.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>

namespace brevanholt::platform {

// User defaults in one key file that only this user may read: data as base64, dictionaries in
// GVariant's text format.
//
// The file is replaced whole, and only once the new one is on the disk: whenever the power goes, it
// is the old one or the new one. Keys and comments of others stay, and so does a link in the file's
// place. A file that cannot be read, or is not a key file, counts as empty; setting a value then
// renames it first. Other processes are kept out while a value is set; where one of them keeps this
// one out for a second, setting fails.
class KeyFileUserDefaults final : public UserDefaults {
 public:
  // The file need not exist, nor its folder. What killed processes left beside it is removed.
  explicit KeyFileUserDefaults(std::filesystem::path file);

  [[nodiscard]] std::optional<Bytes> data(const std::string& key) const override;
  void setData(const std::string& key, const Bytes& data) override;
  [[nodiscard]] StringDictionary stringDictionary(const std::string& key) const override;
  void setStringDictionary(const std::string& key, const StringDictionary& value) override;

 private:
  // Nothing where the file is not a key file.
  [[nodiscard]] std::optional<KeyFileText> load() const;
  // As it stands in the file.
  [[nodiscard]] std::optional<SecretText> value(const std::string& key) const;
  void setValue(const std::string& key, std::string_view text);
  // The file itself, where the path leads over links.
  [[nodiscard]] std::filesystem::path target() const;
  void setAside() const;
  void removeLeftovers() const;

  std::filesystem::path file_;
  std::mutex mutex_;  // one change at a time
};

}  // namespace brevanholt::platform
