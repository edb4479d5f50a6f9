#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "Runner/MainFlutterWindow/Replies.h"
#include "platform/files/Files.h"

namespace brevanholt {

namespace fs = std::filesystem;
using platform::List;
using platform::Map;
using platform::PlatformError;
using platform::Value;

namespace {

// The path of something that is there.
std::optional<fs::path> existing(const CallArguments& arguments) {
  auto location = arguments.path("location");
  return location && platform::fileExists(*location) ? std::move(location) : std::nullopt;
}

}  // namespace

Value MainFlutterWindow::setReceiveFolderName(const CallArguments& arguments) {
  receiveFolder_.setReceiveFolderName(arguments.required<std::string>("name"));
  return {};
}

Value MainFlutterWindow::temporaryReceivePath(const CallArguments& arguments) {
  return receiveFolder_.temporaryReceivePath(arguments.required<std::string>("name")).string();
}

void MainFlutterWindow::openReceiveFolder(const CallArguments& /*arguments*/, MethodResult result) {
  fs::path folder;
  try {
    folder = receiveFolder_.prepareToOpen();
  } catch (const PlatformError& error) {
    return replyError(std::move(result), error);
  }
  services_.workspace.openFile(
      folder, replyDone(std::move(result), "The receive folder could not be opened."));
}

void MainFlutterWindow::publishReceivedFile(const CallArguments& arguments, MethodResult result) {
  const auto path = arguments.path("path");
  if (!path) return replyError(std::move(result), PlatformError("The received path is invalid."));
  const auto* name = arguments.optional<std::string>("name");
  const auto* relativePath = arguments.optional<std::string>("relativePath");
  receiveFolder_.publishFile(
      {.path = *path,
       .name = name != nullptr ? *name : "",
       .relativePath = relativePath != nullptr ? std::optional(*relativePath) : std::nullopt,
       .isReadable = pageFiles_.isOwn(*path)},
      replyPath(std::move(result)));
}

void MainFlutterWindow::openReceivedFile(const CallArguments& arguments, MethodResult result) {
  constexpr const char* kFailure = "The received file could not be opened.";
  const auto location = existing(arguments);
  if (!location) return replyError(std::move(result), PlatformError(kFailure));
  services_.workspace.openFile(*location, replyDone(std::move(result), kFailure));
}

Value MainFlutterWindow::revealReceivedFile(const CallArguments& arguments) {
  const auto location = existing(arguments);
  if (!location) throw PlatformError("The received file no longer exists.");
  services_.workspace.reveal(*location);
  return {};
}

void MainFlutterWindow::locateReceivedFiles(const CallArguments& arguments, MethodResult result) {
  std::vector<std::string> names;
  for (const Value& entry : arguments.required<List>("names")) {
    if (const auto* name = entry.getIf<std::string>()) names.push_back(*name);
  }
  receiveFolder_.locate(
      std::move(names),
      [result = std::move(result)](const std::vector<ReceiveFolder::Found>& found) mutable {
        List files;
        for (const auto& file : found) {
          files.push_back(Map{{"name", file.name},
                              {"location", file.location.string()},
                              {"size", static_cast<std::int64_t>(file.size)}});
        }
        std::move(result).success(std::move(files));
      });
}

}  // namespace brevanholt
