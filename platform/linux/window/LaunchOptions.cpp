#include "platform/linux/window/LaunchOptions.h"

#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Utf8.h"
#include "platform/gtk/FileUri.h"
#include "platform/gtk/GLibPointers.h"

#include <glib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;
using OptionContext = std::unique_ptr<GOptionContext, FreeWith<g_option_context_free>>;
using Strings = std::unique_ptr<char*, FreeWith<g_strfreev>>;

std::vector<std::string> toVector(const Strings& strings) {
  std::vector<std::string> result;
  for (char** string = strings.get(); string != nullptr && *string != nullptr; ++string) {
    result.emplace_back(*string);
  }
  return result;
}

// Without "." and "..". Links before a ".." are resolved, since they change what it means; others
// are kept, so that "link" and "./link" are the same.
fs::path absolutePath(const std::string& name) {
  fs::path path;
  for (const fs::path& component : fs::absolute(name)) {
    if (component == "..") {
      path = fs::weakly_canonical(path / component);
    } else if (component != "." && !component.empty()) {
      path /= component;
    }
  }
  return path;
}

std::string sharedFile(const std::string& argument) {
  if (argument.empty()) throw PlatformError("Could not share an empty name");
  const auto named = pathOfFileUri(argument);
  const fs::path path = named ? fs::path(*named) : absolutePath(argument);
  if (!nameIsTaken(path)) throw FileError("share", path, ENOENT);
  if (!isValidUtf8(path.native())) {
    throw PlatformError("Could not share “" + repairedUtf8(path.native()) +
                        "”: its name is not UTF-8");
  }
  return fileUriOf(path);
}

std::string openedUri(const std::string& argument) {
  const GObjectPointer<GFile> file(g_file_new_for_commandline_arg(argument.c_str()));
  return GCharPointer(g_file_get_uri(file.get())).get();
}

// One file that cannot be shared does not keep the others from being shared.
void addSharedFile(LaunchRequest& request, const std::string& argument) {
  try {
    request.sharedFiles.push_back(sharedFile(argument));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "brevanholt: %s\n", error.what());
    request.isIncomplete = true;
  }
}

LaunchRequest requestOf(const std::vector<std::string>& arguments, bool sharesFiles,
                        const char* text) {
  LaunchRequest request;
  request.isShare = sharesFiles || text != nullptr;
  if (sharesFiles && arguments.empty()) throw PlatformError("--share needs a file or folder");
  if (text != nullptr) request.sharedText = text;
  if (!isValidUtf8(request.sharedText)) throw PlatformError("the text to share is not UTF-8");
  if (request.isShare && !sharesFiles && !arguments.empty()) {
    throw PlatformError("files to share are given with --share");
  }
  for (const std::string& argument : arguments) {
    if (sharesFiles) {
      addSharedFile(request, argument);
    } else {
      request.opened.push_back(openedUri(argument));
    }
  }
  const bool hasNothingLeft = request.sharedFiles.empty() && request.sharedText.empty();
  if (request.isIncomplete && hasNothingLeft) std::exit(EXIT_FAILURE);
  return request;
}

// The one action among those asked for; throws where it is not the only thing asked for.
std::string actionOf(const std::vector<std::pair<gboolean, const char*>>& asked,
                     const LaunchRequest& request) {
  std::string action;
  for (const auto& [isAsked, name] : asked) {
    if (isAsked == FALSE) continue;
    if (!action.empty() || request.isShare || !request.opened.empty()) {
      throw PlatformError(std::string("--") + name + " takes nothing else");
    }
    action = name;
  }
  return action;
}

[[noreturn]] void refuse(const char* why) {
  std::fprintf(stderr, "brevanholt: %s\nTry \"brevanholt --help\".\n", why);
  std::exit(EXIT_FAILURE);
}

}  // namespace

LaunchOptions LaunchOptions::parse(int argc, char** argv, const char* version) {
  char* uiBundle = nullptr;
  char** uiArguments = nullptr;
  char* sharedText = nullptr;
  char** rest = nullptr;
  gboolean developerTools = FALSE;
  gboolean loginItem = FALSE;
  gboolean share = FALSE;
  gboolean service = FALSE;
  gboolean chooseFiles = FALSE;
  gboolean shareClipboard = FALSE;
  gboolean quit = FALSE;
  gboolean wantsVersion = FALSE;
  const GOptionEntry entries[] = {
      {"share", 0, 0, G_OPTION_ARG_NONE, &share, "Share the files and folders named", nullptr},
      {"share-text", 0, 0, G_OPTION_ARG_FILENAME, &sharedText, "Share TEXT", "TEXT"},
      {kShareClipboardAction, 0, 0, G_OPTION_ARG_NONE, &shareClipboard,
       "Share what was copied: files, a picture or a text", nullptr},
      {kChooseFilesAction, 0, 0, G_OPTION_ARG_NONE, &chooseFiles, "Choose files to share", nullptr},
      {kQuitAction, 0, 0, G_OPTION_ARG_NONE, &quit, "End the program that runs", nullptr},
      {"version", 0, 0, G_OPTION_ARG_NONE, &wantsVersion, "Show the version", nullptr},
      {"ui-bundle", 0, 0, G_OPTION_ARG_FILENAME, &uiBundle,
       "Run the user interface in DIR instead of the one that ships with the host", "DIR"},
      {"ui-argument", 0, 0, G_OPTION_ARG_STRING_ARRAY, &uiArguments,
       "Hand TEXT to the user interface; may be given more than once", "TEXT"},
      {"developer-tools", 0, 0, G_OPTION_ARG_NONE, &developerTools,
       "Allow the web inspector on the user interface", nullptr},
      {"login-item", 0, 0, G_OPTION_ARG_NONE, &loginItem,
       "Start in the background, as the session does at login", nullptr},
      {"gapplication-service", 0, 0, G_OPTION_ARG_NONE, &service,
       "Start for the session bus, and wait for what it asks", nullptr},
      {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &rest, nullptr, "[FILE or URL…]"},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};

  const OptionContext context(g_option_context_new("— send and receive files nearby"));
  g_option_context_add_main_entries(context.get(), entries, nullptr);
  GError* failure = nullptr;
  const bool parsed = g_option_context_parse(context.get(), &argc, &argv, &failure) != FALSE;
  const GErrorPointer error(failure);
  const GCharPointer ownedBundle(uiBundle);
  const Strings ownedArguments(uiArguments);
  const GCharPointer ownedText(sharedText);
  const Strings ownedRest(rest);
  if (!parsed) refuse(error->message);
  if (wantsVersion != FALSE) {
    std::printf("brevanholt %s\n", version);
    std::exit(EXIT_SUCCESS);
  }
  try {
    LaunchRequest request = requestOf(toVector(ownedRest), share != FALSE, sharedText);
    request.action = actionOf({{shareClipboard, kShareClipboardAction},
                               {chooseFiles, kChooseFilesAction},
                               {quit, kQuitAction}},
                              request);
    return {.uiBundle = uiBundle != nullptr ? uiBundle : "",
            .uiArguments = toVector(ownedArguments),
            .developerTools = developerTools != FALSE,
            .isLoginItem = loginItem != FALSE,
            .isService = service != FALSE,
            .request = std::move(request)};
  } catch (const std::exception& objection) {
    refuse(objection.what());
  }
}

}  // namespace brevanholt::platform
