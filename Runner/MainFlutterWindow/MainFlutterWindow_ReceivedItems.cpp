#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/PathRules.h"
#include "platform/foundation/Files.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::List;
using platform::Map;
using platform::MethodResult;
using platform::PlatformError;
using platform::Value;

namespace {

constexpr const char* kOpenFailure = "The received file could not be opened.";

// A name that denotes the folder itself or the one above it names no received file.
bool namesAnItem(const std::string& name) {
  return name != "." && name != "..";
}

}  // namespace

Value MainFlutterWindow::receivedFileExists(const CallArguments& arguments) {
  return platform::fileExists(arguments.required<std::string>("location"));
}

void MainFlutterWindow::openReceivedFile(const CallArguments& arguments, MethodResult& result) {
  const fs::path location = arguments.required<std::string>("location");
  if (!platform::fileExists(location)) throw PlatformError(kOpenFailure);
  services_.workspace.openFile(location, replyDone(std::move(result), kOpenFailure));
}

Value MainFlutterWindow::revealReceivedFile(const CallArguments& arguments) {
  const fs::path location = arguments.required<std::string>("location");
  if (!platform::fileExists(location)) throw PlatformError("The received file no longer exists.");
  services_.workspace.reveal(location);
  return {};
}

Value MainFlutterWindow::locateReceivedFiles(const CallArguments& arguments) {
  const auto& names = arguments.required<List>("names");
  List found;
  if (!receiveDirectory_) return found;
  for (const Value& entry : names) {
    const auto* name = entry.getIf<std::string>();
    if (name == nullptr || name->find('\0') != std::string::npos) continue;
    const std::string fileName = receivedFileName(*name);
    const fs::path location = *receiveDirectory_ / fileName;
    if (!namesAnItem(fileName) || !platform::fileExists(location)) continue;
    const auto size = static_cast<std::int64_t>(platform::fileSize(location).value_or(0));
    found.push_back(Map{{"name", fileName}, {"location", location.string()}, {"size", size}});
  }
  return found;
}

}  // namespace brevanholt
