#include "platform/linux/session/AutostartLoginItem.h"

#include "platform/files/Files.h"
#include "platform/files/ReplaceFile.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Utf8.h"

#include <gio/gdesktopappinfo.h>

#include <cerrno>
#include <string_view>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* kGnomeSwitch = "X-GNOME-Autostart-enabled";

// `text` with each `from` replaced by `to`.
std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

bool isFalse(GKeyFile* entry, const char* key) {
  return g_key_file_has_key(entry, kGroup, key, nullptr) != FALSE &&
         g_key_file_get_boolean(entry, kGroup, key, nullptr) == FALSE;
}

// "OnlyShowIn" and "NotShowIn" say in which desktops an entry counts.
bool isForThisDesktop(GKeyFile* entry) {
  const GObjectPointer<GDesktopAppInfo> info(g_desktop_app_info_new_from_keyfile(entry));
  // GLib reads no entry whose program is missing; that is told elsewhere.
  return info == nullptr || g_desktop_app_info_get_show_in(info.get(), nullptr) != FALSE;
}

bool isSwitchedOff(GKeyFile* entry) {
  return g_key_file_get_boolean(entry, kGroup, G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr) != FALSE ||
         isFalse(entry, kGnomeSwitch) || !isForThisDesktop(entry);
}

// The program that a word of a command starts: a path, or a name that is looked up in PATH.
std::filesystem::path programNamed(const char* word) {
  const GCharPointer found(g_find_program_in_path(word));
  return found ? found.get() : "";
}

bool hasItsTryExec(GKeyFile* entry) {
  const GCharPointer program(
      g_key_file_get_string(entry, kGroup, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, nullptr));
  return !program || !programNamed(program.get()).empty();
}

}  // namespace

std::string desktopEntryCommand(const std::string& program, const std::string& argument) {
  std::string quoted;
  for (const char character : program) {
    if (std::string_view("\"`$\\").find(character) != std::string_view::npos) quoted += '\\';
    quoted += character;
  }
  // GLib looks for the program before it reads "%%" as a percent sign, and would not find this one.
  const bool hidesProgram = quoted.find('%') != std::string::npos;
  return (hidesProgram ? "/usr/bin/env \"" : "\"") + replaced(quoted, "%", "%%") + "\" " + argument;
}

AutostartLoginItem::AutostartLoginItem(const std::filesystem::path& autostartFolder,
                                       const std::string& applicationId,
                                       std::filesystem::path executable)
    : applicationId_(applicationId),
      file_(autostartFolder / (applicationId + ".desktop")),
      executable_(std::move(executable)) {}

LoginItem::Status AutostartLoginItem::status() const {
  if (!nameIsTaken(file_)) return Status::kNotRegistered;
  std::error_code failure;
  // Reading a FIFO would block.
  if (!std::filesystem::is_regular_file(file_, failure)) return Status::kNotFound;
  const KeyFile entry(g_key_file_new());
  const bool isEntry =
      g_key_file_load_from_file(entry.get(), file_.c_str(), G_KEY_FILE_NONE, nullptr) != FALSE;
  if (!isEntry) return Status::kNotFound;
  if (isSwitchedOff(entry.get())) return Status::kRequiresApproval;
  const bool startsIt = hasItsTryExec(entry.get()) && startsThisProgram(entry.get());
  return startsIt ? Status::kEnabled : Status::kNotFound;
}

bool AutostartLoginItem::startsThisProgram(GKeyFile* entry) const {
  const GCharPointer command(
      g_key_file_get_string(entry, kGroup, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr));
  if (!command) return false;
  char** words = nullptr;
  const std::string expanded = replaced(command.get(), "%%", "%");
  g_shell_parse_argv(expanded.c_str(), nullptr, &words, nullptr);
  const std::unique_ptr<char*, FreeWith<g_strfreev>> owned(words);
  for (char** word = words; word != nullptr && *word != nullptr; ++word) {
    std::error_code failure;
    if (std::filesystem::equivalent(programNamed(*word), executable_, failure)) return true;
  }
  return false;
}

void AutostartLoginItem::registerItem() {
  if (!isValidUtf8(executable_.string())) {
    throw PlatformError("Brevanholt cannot start at login from a folder whose name is not UTF-8.");
  }
  createDirectories(file_.parent_path());
  const KeyFile entry(g_key_file_new());
  const auto set = [&entry](const char* key, const std::string& value) {
    g_key_file_set_string(entry.get(), kGroup, key, value.c_str());
  };
  set(G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  set(G_KEY_FILE_DESKTOP_KEY_NAME, "Brevanholt");
  set(G_KEY_FILE_DESKTOP_KEY_COMMENT, "Send and receive files nearby");
  set(G_KEY_FILE_DESKTOP_KEY_ICON, applicationId_);
  set(G_KEY_FILE_DESKTOP_KEY_EXEC, desktopEntryCommand(executable_.string(), "--login-item"));
  // Without the program, which may be removed while this stays, the session leaves the entry out.
  set(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, executable_.string());
  set(G_KEY_FILE_DESKTOP_KEY_STARTUP_NOTIFY, "false");
  gsize size = 0;
  const GCharPointer text(g_key_file_to_data(entry.get(), &size, nullptr));
  replaceFile(file_, {text.get(), size}, 0644);
}

void AutostartLoginItem::unregisterItem() {
  if (::unlink(file_.c_str()) != 0 && errno != ENOENT) {
    throw FileError("remove the file", file_, errno);
  }
}

}  // namespace brevanholt::platform
