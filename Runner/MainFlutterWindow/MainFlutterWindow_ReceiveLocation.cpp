#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/PathRules.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Uuid.h"

namespace brevanholt {

using platform::MethodResult;
using platform::PlatformError;
using platform::Value;

namespace {

constexpr std::size_t kLongestFileName = 255;  // bytes; NAME_MAX of every common file system

// `name`, cut at a character's start so that it takes at most `limit` bytes. What is cut is only
// part of a scratch file's name; the published file has its whole name.
std::string_view shortened(std::string_view name, std::size_t limit) {
  if (name.size() <= limit) return name;
  while (limit > 0 && (static_cast<unsigned char>(name[limit]) & 0xC0U) == 0x80U) --limit;
  return name.substr(0, limit);
}

}  // namespace

std::filesystem::path MainFlutterWindow::brevanholtDownloadsDirectory() const {
  std::filesystem::path directory = services_.folders.downloads / receiveFolderName_;
  platform::createDirectories(directory);
  migrateLegacyReceivedItems(directory);
  return directory;
}

void MainFlutterWindow::tryPrepareReceiveDirectory() {
  try {
    receiveDirectory_ = brevanholtDownloadsDirectory();
  } catch (const PlatformError& error) {
    platform::logDebug(error.message());
    receiveDirectory_.reset();
  }
}

const std::filesystem::path& MainFlutterWindow::requiredReceiveDirectory() const {
  if (!receiveDirectory_) throw PlatformError("No receive folder is selected.");
  return *receiveDirectory_;
}

Value MainFlutterWindow::prepareReceiveLocation(const CallArguments& /*arguments*/) {
  tryPrepareReceiveDirectory();
  return receiveDirectory_.has_value();
}

Value MainFlutterWindow::setReceiveFolderName(const CallArguments& arguments) {
  receiveFolderName_ = safeFolderName(arguments.required<std::string>("name"));
  tryPrepareReceiveDirectory();
  return {};
}

void MainFlutterWindow::openReceiveFolder(const CallArguments& /*arguments*/,
                                          MethodResult& result) {
  receiveDirectory_ = brevanholtDownloadsDirectory();
  services_.workspace.openFile(
      *receiveDirectory_, replyDone(std::move(result), "The receive folder could not be opened."));
}

Value MainFlutterWindow::temporaryReceivePath(const CallArguments& arguments) {
  const std::string name = receivedFileName(arguments.required<std::string>("name"));
  const std::filesystem::path area = services_.folders.temporary / "Brevanholt";
  platform::createDirectories(area);
  const std::string prefix = platform::makeUuid() + "-";
  return (area / (prefix + std::string(shortened(name, kLongestFileName - prefix.size()))))
      .string();
}

}  // namespace brevanholt
