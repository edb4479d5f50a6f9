#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

// What one launch of the program asks the running instance to do; to show itself where all is
// empty.
struct LaunchRequest {
  bool isShare = false;
  std::vector<std::string> sharedFiles;  // URIs
  std::string sharedText;
  std::vector<std::string> opened;  // URIs
  std::string action;               // one of the application's that takes no parameter
  bool isIncomplete = false;        // files were named that cannot be shared
};

// The actions that the command line, the desktop's launchers and the bus know the program by.
inline constexpr const char* kShareAction = "share";
inline constexpr const char* kChooseFilesAction = "choose-files";
inline constexpr const char* kShareClipboardAction = "share-clipboard";
inline constexpr const char* kQuitAction = "quit";

// What the command line asks for.
struct LaunchOptions {
  std::filesystem::path uiBundle;  // empty for the one that ships with the host
  std::vector<std::string> uiArguments;
  bool developerTools = false;
  bool isLoginItem = false;
  bool isService = false;  // started by the bus, which says later what for
  LaunchRequest request;

  // Prints the help, the version or an error and ends the process where the command line asks for
  // that. File names are taken relative to the current directory.
  static LaunchOptions parse(int argc, char** argv, const char* version);
};

}  // namespace brevanholt::platform
