#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

// What the command line asks for.
struct LaunchOptions {
  std::filesystem::path uiBundle;  // empty for the one that ships with the host
  std::vector<std::string> uiArguments;
  bool developerTools = false;
  bool isLoginItem = false;

  // Prints the help or an error and ends the process where the command line asks for that.
  static LaunchOptions parse(int argc, char** argv);
};

}  // namespace brevanholt::platform
