#include "platform/linux/LaunchOptions.h"

#include "platform/linux/GPointers.h"

#include <glib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace brevanholt::platform {
namespace {

using OptionContext = std::unique_ptr<GOptionContext, FreeWith<g_option_context_free>>;
using Strings = std::unique_ptr<char*, FreeWith<g_strfreev>>;

std::vector<std::string> toVector(const Strings& strings) {
  std::vector<std::string> result;
  for (char** string = strings.get(); string != nullptr && *string != nullptr; ++string) {
    result.emplace_back(*string);
  }
  return result;
}

}  // namespace

LaunchOptions LaunchOptions::parse(int argc, char** argv) {
  char* uiBundle = nullptr;
  char** uiArguments = nullptr;
  gboolean developerTools = FALSE;
  gboolean loginItem = FALSE;
  const GOptionEntry entries[] = {
      {"ui-bundle", 0, 0, G_OPTION_ARG_FILENAME, &uiBundle,
       "Run the user interface in DIR instead of the one that ships with the host", "DIR"},
      {"ui-argument", 0, 0, G_OPTION_ARG_STRING_ARRAY, &uiArguments,
       "Hand TEXT to the user interface; may be given more than once", "TEXT"},
      {"developer-tools", 0, 0, G_OPTION_ARG_NONE, &developerTools,
       "Allow the web inspector on the user interface", nullptr},
      {"login-item", 0, 0, G_OPTION_ARG_NONE, &loginItem,
       "Start in the background, as the session does at login", nullptr},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};

  const OptionContext context(g_option_context_new("— send and receive files nearby"));
  g_option_context_add_main_entries(context.get(), entries, nullptr);
  GError* failure = nullptr;
  const bool parsed = g_option_context_parse(context.get(), &argc, &argv, &failure) != FALSE;
  const GErrorPointer error(failure);
  const GCharPointer ownedBundle(uiBundle);
  const Strings ownedArguments(uiArguments);
  if (!parsed || argc > 1) {
    std::fprintf(stderr, "brevanholt: %s\nTry \"brevanholt --help\".\n",
                 parsed ? "unexpected argument" : error->message);
    std::exit(EXIT_FAILURE);
  }
  return {.uiBundle = uiBundle != nullptr ? uiBundle : "",
          .uiArguments = toVector(ownedArguments),
          .developerTools = developerTools != FALSE,
          .isLoginItem = loginItem != FALSE};
}

}  // namespace brevanholt::platform
