#include "platform/linux/session/PersonLocale.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <sstream>

namespace brevanholt::platform {
namespace {

std::string firstOf(std::initializer_list<const char*> variables) {
  for (const char* variable : variables) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

std::vector<std::string> messageLanguages() {
  const std::string messages = firstOf({"LC_ALL", "LC_MESSAGES", "LANG"});
  std::vector<std::string> languages;
  // gettext's rule: LANGUAGE has no say where no language is wanted.
  const std::string all =
      languageTag(messages).empty() ? messages : firstOf({"LANGUAGE"}) + ":" + messages;
  std::istringstream names(all);
  for (std::string name; std::getline(names, name, ':');) {
    std::string tag = languageTag(name);
    if (!tag.empty() && std::ranges::find(languages, tag) == languages.end()) {
      languages.push_back(std::move(tag));
    }
  }
  return languages;
}

}  // namespace

std::string languageTag(const std::string& localeName) {
  std::string tag = localeName.substr(0, localeName.find_first_of(".@"));
  std::ranges::replace(tag, '_', '-');
  const bool isNone = tag == "C" || tag == "POSIX";
  const bool isName = std::ranges::all_of(tag, [](char letter) {
    return letter == '-' || (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= 'a' && letter <= 'z');
  });
  return isNone || !isName ? std::string() : tag;
}

PersonLocale PersonLocale::ofThisProcess() {
  return {.languages = messageLanguages(),
          .time = languageTag(firstOf({"LC_ALL", "LC_TIME", "LANG"})),
          .numbers = languageTag(firstOf({"LC_ALL", "LC_NUMERIC", "LANG"}))};
}

}  // namespace brevanholt::platform
