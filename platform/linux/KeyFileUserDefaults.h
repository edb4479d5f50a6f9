#pragma once

#include "platform/foundation/UserDefaults.h"
#include "platform/linux/GPointers.h"

#include <filesystem>
#include <mutex>

namespace brevanholt::platform {

// User defaults in one key file that only this user may read: data as base64, dictionaries in
// GVariant's text format.
//
// The file is replaced whole, and only once the new one is on the disk: whenever the power goes, it
// is the old one or the new one. Keys and comments of others stay. A file that cannot be read, or
// is no key file, counts as empty; setting a value then puts it aside under another name first.
class KeyFileUserDefaults final : public UserDefaults {
 public:
  // The file need not exist, nor its folder.
  explicit KeyFileUserDefaults(std::filesystem::path file) : file_(std::move(file)) {}

  [[nodiscard]] std::optional<Bytes> data(const std::string& key) const override;
  void setData(const std::string& key, const Bytes& data) override;
  [[nodiscard]] StringDictionary stringDictionary(const std::string& key) const override;
  void setStringDictionary(const std::string& key, const StringDictionary& value) override;

 private:
  using KeyFile = std::unique_ptr<GKeyFile, FreeWith<g_key_file_unref>>;

  // Null where the file is not one.
  [[nodiscard]] KeyFile load() const;
  // As it stands in the file.
  [[nodiscard]] GCharPointer value(const std::string& key) const;
  void setValue(const std::string& key, const char* text);
  void setAside() const;
  void replaceWith(GKeyFile* contents) const;

  std::filesystem::path file_;
  std::mutex mutex_;  // one change at a time
};

}  // namespace brevanholt::platform
