#include "platform/linux/LaunchOptions.h"

#include "platform/foundation/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Utf8.h"
#include "platform/linux/FileUri.h"
#include "platform/linux/GPointers.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

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

// "." and ".." are not kept: links before them would change what they mean.
fs::path absolutePath(const std::string& name) {
  const fs::path path = fs::absolute(name);
  const bool hasDots = std::ranges::any_of(
      path, [](const fs::path& component) { return component == "." || component == ".."; });
  return hasDots ? fs::weakly_canonical(path) : path;
}

std::string sharedFile(const std::string& argument) {
  const auto named = pathOfFileUri(argument);
  const fs::path path = named ? fs::path(*named) : absolutePath(argument);
  if (!nameIsTaken(path)) throw FileError("share", path, ENOENT);
  return fileUriOf(path);
}

std::string openedUri(const std::string& argument) {
  const GObjectPointer<GFile> file(g_file_new_for_commandline_arg(argument.c_str()));
  return GCharPointer(g_file_get_uri(file.get())).get();
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
      request.sharedFiles.push_back(sharedFile(argument));
    } else {
      request.opened.push_back(openedUri(argument));
    }
  }
  return request;
}

[[noreturn]] void refuse(const char* why) {
  std::fprintf(stderr, "brevanholt: %s\nTry \"brevanholt --help\".\n", why);
  std::exit(EXIT_FAILURE);
}

}  // namespace

LaunchOptions LaunchOptions::parse(int argc, char** argv) {
  char* uiBundle = nullptr;
  char** uiArguments = nullptr;
  char* sharedText = nullptr;
  char** rest = nullptr;
  gboolean developerTools = FALSE;
  gboolean loginItem = FALSE;
  gboolean share = FALSE;
  gboolean service = FALSE;
  const GOptionEntry entries[] = {
      {"share", 0, 0, G_OPTION_ARG_NONE, &share, "Share the files and folders named", nullptr},
      {"share-text", 0, 0, G_OPTION_ARG_FILENAME, &sharedText, "Share TEXT", "TEXT"},
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
  try {
    return {.uiBundle = uiBundle != nullptr ? uiBundle : "",
            .uiArguments = toVector(ownedArguments),
            .developerTools = developerTools != FALSE,
            .isLoginItem = loginItem != FALSE,
            .isService = service != FALSE,
            .request = requestOf(toVector(ownedRest), share != FALSE, sharedText)};
  } catch (const std::exception& objection) {
    refuse(objection.what());
  }
}

}  // namespace brevanholt::platform
