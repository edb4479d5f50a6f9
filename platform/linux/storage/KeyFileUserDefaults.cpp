#include "platform/linux/storage/KeyFileUserDefaults.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/files/ReplaceFile.h"
#include "platform/files/ResolvedPath.h"
#include "platform/formats/Base64.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"
#include "platform/gtk/GLibPointers.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using StringDictionary = UserDefaults::StringDictionary;
using namespace std::chrono_literals;

constexpr const char* kGroup = "Defaults";
constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;
constexpr auto kLockLimit = 1s;
constexpr auto kLockPause = 5ms;

// Creates the folder, and those above it, for this user alone, so that they outlast a power cut.
void createPrivateFolder(const fs::path& folder) {
  for (const fs::path& changed : createDirectories(folder, 0700)) syncDirectory(changed);
}

// Keeps other processes from changing the same folder's files. Some network file systems have no
// such locks; there, the last one to write wins. Throws FileError (EWOULDBLOCK) when another
// process keeps the lock for too long.
FileDescriptor lockFolder(const fs::path& folder, std::chrono::milliseconds limit) {
  FileDescriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock) throw FileError("open the folder", folder, errno);
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
    if (std::chrono::steady_clock::now() >= deadline) {
      throw FileError("lock the folder", folder, EWOULDBLOCK);
    }
    std::this_thread::sleep_for(kLockPause);
  }
  return lock;
}

// Whether the system, or the kind of file, will not let us read what is there at all.
bool isRefusal(int error) {
  return error == EACCES || error == EPERM || error == EISDIR || error == EINVAL;
}

void tighten(int descriptor) {
  struct stat information {};
  if (::fstat(descriptor, &information) != 0 || (information.st_mode & 0077) == 0) return;
  static_cast<void>(::fchmod(descriptor, information.st_mode & 0700));
}

SecretText contentOf(int descriptor, const fs::path& file) {
  SecretText content;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError("read", file, errno);
    if (count == 0) break;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  ::explicit_bzero(buffer.data(), buffer.size());
  return content;
}

// What a process that was killed while it replaced `file` left beside it; an earlier version of
// this program named it as GLib does.
bool isLeftover(const std::string& file, const std::string& name) {
  constexpr std::size_t kRandomPart = 7;  // "." and six letters and digits
  const bool isOfGLib = name.size() == file.size() + kRandomPart && name.starts_with(file + ".");
  return isOfGLib || isReplacementOf(file, name);
}

// With its terminating zero, so that it reads as text in the file.
GVariant* byteString(const std::string& text) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.c_str(), text.size() + 1, 1);
}

std::string fromByteString(GVariant* array) {
  gsize size = 0;
  const void* bytes = g_variant_get_fixed_array(array, &size, 1);
  return size == 0 ? "" : std::string(static_cast<const char*>(bytes), size - 1);
}

}  // namespace

KeyFileUserDefaults::KeyFileUserDefaults(std::filesystem::path file) : file_(std::move(file)) {
  removeLeftovers();
}

std::optional<Bytes> KeyFileUserDefaults::data(const std::string& key) const {
  const auto text = value(key);
  auto bytes = text ? fromBase64<SecretText>(*text) : std::nullopt;
  if (!bytes) return std::nullopt;
  const auto owner = std::make_shared<const SecretText>(std::move(*bytes));
  return Bytes({reinterpret_cast<const std::uint8_t*>(owner->data()), owner->size()}, owner);
}

void KeyFileUserDefaults::setData(const std::string& key, const Bytes& data) {
  setValue(key, toBase64<SecretText>({reinterpret_cast<const char*>(data.data()), data.size()}));
}

StringDictionary KeyFileUserDefaults::stringDictionary(const std::string& key) const {
  const auto text = value(key);
  if (!text) return {};
  const GVariantPointer parsed(
      g_variant_parse(G_VARIANT_TYPE("a(ayay)"), text->c_str(), nullptr, nullptr, nullptr));
  StringDictionary dictionary;
  for (gsize index = 0; parsed && index < g_variant_n_children(parsed.get()); ++index) {
    const GVariantPointer entry(g_variant_get_child_value(parsed.get(), index));
    const GVariantPointer name(g_variant_get_child_value(entry.get(), 0));
    const GVariantPointer content(g_variant_get_child_value(entry.get(), 1));
    dictionary[fromByteString(name.get())] = fromByteString(content.get());
  }
  return dictionary;
}

void KeyFileUserDefaults::setStringDictionary(const std::string& key,
                                              const StringDictionary& value) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ayay)"));
  for (const auto& [name, content] : value) {
    g_variant_builder_add(&builder, "(@ay@ay)", byteString(name), byteString(content));
  }
  const GVariantPointer dictionary(g_variant_ref_sink(g_variant_builder_end(&builder)));
  setValue(key, GCharPointer(g_variant_print(dictionary.get(), TRUE)).get());
}

std::optional<KeyFileText> KeyFileUserDefaults::load() const {
  FileDescriptor file;
  try {
    file = openRegularFile(file_);
  } catch (const FileError& error) {
    if (error.errorNumber() == ENOENT || error.errorNumber() == ENOTDIR) return KeyFileText();
    if (isRefusal(error.errorNumber())) return std::nullopt;
    throw;
  }
  tighten(file.get());
  return KeyFileText::parse(contentOf(file.get(), file_));
}

std::optional<SecretText> KeyFileUserDefaults::value(const std::string& key) const {
  const auto contents = load();
  if (contents) return contents->value(kGroup, key);
  logWarning("the settings cannot be read from " + file_.string());
  return std::nullopt;
}

void KeyFileUserDefaults::setValue(const std::string& key, std::string_view text) {
  const std::lock_guard guard(mutex_);
  const fs::path folder = file_.parent_path();
  createPrivateFolder(folder);
  std::error_code ignored;
  fs::permissions(folder, kOthers, fs::perm_options::remove, ignored);
  const FileDescriptor lock = lockFolder(folder, kLockLimit);
  auto contents = load();
  if (!contents) {
    setAside();
    contents.emplace();
  }
  contents->setValue(kGroup, key, text);
  const fs::path replaced = target();
  createPrivateFolder(replaced.parent_path());
  replaceFile(replaced, contents->text());
}

fs::path KeyFileUserDefaults::target() const {
  return resolvedPath(file_).value_or(file_);
}

void KeyFileUserDefaults::setAside() const {
  const fs::path damaged = target();
  fs::path aside = damaged.string() + ".damaged-" + makeUuid();
  if (!renameIntoPlace(damaged, [&] { return aside; })) {
    throw FileError("move the item to", aside, EXDEV);
  }
  logWarning("the settings that cannot be read are at " + aside.string());
}

void KeyFileUserDefaults::removeLeftovers() const {
  const fs::path replaced = target();
  std::error_code error;
  if (!fs::exists(file_.parent_path(), error)) return;
  try {
    // Another process that is replacing the file right now holds the lock.
    const FileDescriptor lock = lockFolder(file_.parent_path(), 0ms);
    for (fs::directory_iterator entry(replaced.parent_path(), error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const std::string name = entry->path().filename();
      if (!isLeftover(replaced.filename(), name) || !entry->is_regular_file(error)) continue;
      fs::remove(entry->path(), error);
      logInfo("removed what an interrupted change of the settings left: " + name);
    }
  } catch (const FileError& failure) {
    logDebug(failure.message());
  }
}

}  // namespace brevanholt::platform
