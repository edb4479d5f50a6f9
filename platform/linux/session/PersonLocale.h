#pragma once

#include <string>
#include <vector>

namespace brevanholt::platform {

// The person's languages and customs, in BCP 47 as far as locale names say it.
struct PersonLocale {
  std::vector<std::string> languages;  // of messages, the best first; empty for none
  std::string time;                    // whose dates; empty for none
  std::string numbers;

  // By the environment: LANGUAGE, LC_ALL, LC_MESSAGES, LC_TIME, LC_NUMERIC and LANG (POSIX.1-2017,
  // 8.2), whether or not the locales that they name are installed.
  static PersonLocale ofThisProcess();
};

// “de_AT.UTF-8@euro” as “de-AT”; empty for “C”, “POSIX” and what is no name of a locale.
[[nodiscard]] std::string languageTag(const std::string& localeName);

}  // namespace brevanholt::platform
