#include "platform/linux/KeyFileUserDefaults.h"

#include "platform/foundation/Base64.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/MoveIntoPlace.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"
#include "platform/linux/ReplaceFile.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using StringDictionary = UserDefaults::StringDictionary;

constexpr const char* kGroup = "Defaults";
constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;

// Creates the folder, and those above it, for this user alone, so that they outlast a power cut.
void createPrivateFolder(const fs::path& folder) {
  int error = ::mkdir(folder.c_str(), 0700) == 0 ? 0 : errno;
  if (error == ENOENT && folder.has_relative_path()) {
    createPrivateFolder(folder.parent_path());
    error = ::mkdir(folder.c_str(), 0700) == 0 ? 0 : errno;
  }
  if (error == EEXIST) return;
  if (error != 0) throw FileError("create the folder", folder, error);
  syncDirectory(folder.parent_path());
}

// Keeps other processes from changing the same folder's files. Some network file systems have no
// such locks; there, the last one to write wins.
FileDescriptor lockFolder(const fs::path& folder) {
  FileDescriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock) throw FileError("open the folder", folder, errno);
  while (::flock(lock.get(), LOCK_EX) != 0 && errno == EINTR) {
  }
  return lock;
}

// Whether the system will not let us read what is there, rather than not just now.
bool isRefusal(const GError* error) {
  return g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_ACCES) != FALSE ||
         g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_PERM) != FALSE;
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

std::optional<Bytes> KeyFileUserDefaults::data(const std::string& key) const {
  const GCharPointer text = value(key);
  if (!text) return std::nullopt;
  const auto bytes = fromBase64(text.get());
  if (!bytes) return std::nullopt;
  return Bytes(std::vector<std::uint8_t>(bytes->begin(), bytes->end()));
}

void KeyFileUserDefaults::setData(const std::string& key, const Bytes& data) {
  setValue(key, toBase64({reinterpret_cast<const char*>(data.data()), data.size()}).c_str());
}

StringDictionary KeyFileUserDefaults::stringDictionary(const std::string& key) const {
  const GCharPointer text = value(key);
  if (!text) return {};
  const GVariantPointer parsed(
      g_variant_parse(G_VARIANT_TYPE("a(ayay)"), text.get(), nullptr, nullptr, nullptr));
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

KeyFileUserDefaults::KeyFile KeyFileUserDefaults::load() const {
  KeyFile contents(g_key_file_new());
  std::error_code error;
  const fs::file_status status = fs::status(file_, error);
  if (status.type() == fs::file_type::not_found) return contents;
  if (fs::status_known(status) && !fs::is_regular_file(status)) return nullptr;
  if ((status.permissions() & kOthers) != fs::perms::none) {
    fs::permissions(file_, kOthers, fs::perm_options::remove, error);
  }
  char* text = nullptr;
  gsize size = 0;
  GError* failure = nullptr;
  const bool isRead = g_file_get_contents(file_.c_str(), &text, &size, &failure) != FALSE;
  const GCharPointer ownedText(text);
  const GErrorPointer ownedFailure(failure);
  if (!isRead && !isRefusal(failure)) throw PlatformError(failure->message);
  // The parser takes zeros, which a crash may leave, for empty lines.
  const bool isKeyFile = isRead && std::memchr(text, 0, size) == nullptr &&
                         g_key_file_load_from_data(contents.get(), text, size,
                                                   G_KEY_FILE_KEEP_COMMENTS, nullptr) != FALSE;
  return isKeyFile ? std::move(contents) : nullptr;
}

GCharPointer KeyFileUserDefaults::value(const std::string& key) const {
  const KeyFile contents = load();
  if (!contents) {
    logWarning("the settings cannot be read from " + file_.string());
    return nullptr;
  }
  return GCharPointer(g_key_file_get_value(contents.get(), kGroup, key.c_str(), nullptr));
}

void KeyFileUserDefaults::setValue(const std::string& key, const char* text) {
  const std::lock_guard guard(mutex_);
  const fs::path folder = file_.parent_path();
  createPrivateFolder(folder);
  std::error_code ignored;
  fs::permissions(folder, kOthers, fs::perm_options::remove, ignored);
  const FileDescriptor lock = lockFolder(folder);
  KeyFile contents = load();
  if (!contents) {
    setAside();
    contents.reset(g_key_file_new());
  }
  g_key_file_set_value(contents.get(), kGroup, key.c_str(), text);
  replaceWith(contents.get());
}

void KeyFileUserDefaults::setAside() const {
  const fs::path aside = file_.string() + ".damaged-" + makeUuid();
  if (!renameIntoPlace(file_, aside)) throw FileError("move the item to", aside, EXDEV);
  logWarning("the settings that cannot be read are at " + aside.string());
}

void KeyFileUserDefaults::replaceWith(GKeyFile* contents) const {
  gsize size = 0;
  const GCharPointer text(g_key_file_to_data(contents, &size, nullptr));
  replaceFile(file_, {text.get(), size}, 0600);
}

}  // namespace brevanholt::platform
