#pragma once

#include "platform/gtk/GLibPointers.h"
#include "platform/services/LoginItem.h"

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// The login item as a desktop file in the user's autostart folder (the freedesktop Desktop
// Application Autostart specification). It starts the program with "--login-item".
//
// The file is written whole or not at all. What the user added to the command of a file that starts
// this program stays until the item is registered anew.
class AutostartLoginItem final : public LoginItem {
 public:
  // The folder need not exist yet.
  AutostartLoginItem(const std::filesystem::path& autostartFolder, const std::string& applicationId,
                     std::filesystem::path executable);

  [[nodiscard]] Status status() const override;
  void registerItem() override;
  void unregisterItem() override;

 private:
  using KeyFile = std::unique_ptr<GKeyFile, FreeWith<g_key_file_unref>>;

  [[nodiscard]] bool startsThisProgram(GKeyFile* entry) const;

  std::string applicationId_;
  std::filesystem::path file_;
  std::filesystem::path executable_;
};

// A command line for a desktop entry's "Exec": `program`, quoted by the Desktop Entry
// specification, and one plain argument. What the key file itself escapes is left to it.
[[nodiscard]] std::string desktopEntryCommand(const std::string& program,
                                              const std::string& argument);

}  // namespace brevanholt::platform
