#include "platform/files/FolderListing.h"

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace brevanholt::platform {
namespace {

// One descriptor is open for each level, of the 1024 that a process commonly has.
constexpr std::size_t kDeepestLevel = 400;

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// The kinds of folders that are made, moved and opened as one item, in lower case.
constexpr std::array<std::string_view, 9> kPackageExtensions{
    ".app", ".appex",         ".bundle", ".kext",     ".plugin",
    ".pkg", ".photoslibrary", ".rtfd",   ".xcodeproj"};
constexpr const char* kPackageContents = "Contents";

bool hasPackageExtension(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return false;
  std::string extension(name.substr(dot));
  std::ranges::transform(extension, extension.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return std::ranges::find(kPackageExtensions, extension) != kPackageExtensions.end();
}

// Other folders have such names too; only a package is laid out as one.
bool isPackage(int parent, std::string_view name) {
  if (!hasPackageExtension(name)) return false;
  const std::string contents = std::string(name) + '/' + kPackageContents;
  struct stat information {};
  return ::fstatat(parent, contents.c_str(), &information, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(information.st_mode);
}

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

class Walk {
 public:
  explicit Walk(const std::stop_token& stop) : stop_(stop) {}

  void enter(FileDescriptor folder) {
    struct stat information {};
    if (!folder || ::fstat(folder.get(), &information) != 0) return;
    const Identity identity(information.st_dev, information.st_ino);
    if (std::ranges::find(ancestors_, identity) != ancestors_.end()) return;
    if (ancestors_.size() == kDeepestLevel) {
      ++tooDeep_;
      return;
    }
    const Directory directory(::fdopendir(folder.get()));
    if (!directory) return;
    static_cast<void>(folder.release());
    ancestors_.push_back(identity);
    while (!stop_.stop_requested()) {
      const dirent* entry = ::readdir(directory.get());
      if (entry == nullptr) break;
      add(::dirfd(directory.get()), *entry);
    }
    ancestors_.pop_back();
  }

  [[nodiscard]] std::vector<FolderItem> takeItems() { return std::move(items_); }

  void logWhatIsMissing(const std::filesystem::path& folder) const {
    if (notUtf8_ > 0) {
      logWarning(std::to_string(notUtf8_) + " items in “" + folder.string() +
                 "” are left out: their names are not UTF-8");
    }
    if (tooDeep_ > 0) {
      logWarning(std::to_string(tooDeep_) + " folders in “" + folder.string() +
                 "” are not entered: they lie too deep");
    }
    if (packages_ > 0) {
      logInfo(std::to_string(packages_) + " folders in “" + folder.string() +
              "” are not entered: they are packages");
    }
  }

 private:
  using Identity = std::pair<dev_t, ino_t>;

  void add(int folder, const dirent& entry) {
    const std::string_view name = static_cast<const char*>(entry.d_name);
    if (name.front() == '.') return;
    if (entry.d_type != DT_DIR && entry.d_type != DT_REG && entry.d_type != DT_UNKNOWN) return;
    if (!isValidUtf8(name)) {
      ++notUtf8_;
      return;
    }
    const std::size_t parentLength = path_.size();
    if (!path_.empty()) path_ += '/';
    path_ += name;
    addAs(entry.d_type, folder, entry.d_name);
    path_.resize(parentLength);
  }

  void addAs(unsigned char type, int folder, const char* name) {
    struct stat information {};
    if (type != DT_DIR) {
      const bool isKnown = ::fstatat(folder, name, &information, AT_SYMLINK_NOFOLLOW) == 0;
      if (!isKnown && (type == DT_UNKNOWN || errno == ENOENT)) return;
      if (isKnown) type = static_cast<unsigned char>(IFTODT(information.st_mode));
    }
    if (type == DT_DIR) {
      items_.push_back({path_, FolderItem::Kind::kDirectory, 0});
      if (isPackage(folder, name)) {
        ++packages_;
        return;
      }
      enter(FileDescriptor(::openat(folder, name, kOpenFolder | O_NOFOLLOW)));
    } else if (type == DT_REG) {
      const auto size = static_cast<std::uint64_t>(information.st_size);
      items_.push_back({path_, FolderItem::Kind::kFile, size});
    }
  }

  std::stop_token stop_;
  std::vector<FolderItem> items_;
  std::string path_;  // of the item at hand, below the listed folder
  std::vector<Identity> ancestors_;
  int notUtf8_ = 0;
  int tooDeep_ = 0;
  int packages_ = 0;
};

}  // namespace

std::vector<FolderItem> listFolder(const std::filesystem::path& folder,
                                   const std::stop_token& stop) {
  Walk walk(stop);
  walk.enter(FileDescriptor(::open(folder.c_str(), kOpenFolder)));
  walk.logWhatIsMissing(folder);
  return walk.takeItems();
}

}  // namespace brevanholt::platform
