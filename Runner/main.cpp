#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/BuildInfo.h"
#include "platform/gtk/JournalLog.h"
#include "platform/linux/LinuxPlatform.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

using namespace brevanholt;

constexpr int kRestart = 256;  // no exit status

// A transfer allocates thousands of payloads of 1 MiB. Mapping fresh memory for each costs more
// than moving the bytes, so up to 32 MiB stay in the heap.
void keepMemoryBetweenPayloads() {
  ::mallopt(M_MMAP_THRESHOLD, 4 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 32 << 20);
}

struct Program {
  Program(platform::GtkApplicationHost& application, const platform::LaunchOptions& options)
      : linux(application, options),
        delegate(linux.services()),
        window(std::make_shared<MainFlutterWindow>(linux.services(), &delegate)) {
    delegate.setMainWindow(window);
    window->awakeFromNib();
  }

  platform::LinuxPlatform linux;
  AppDelegate delegate;
  std::shared_ptr<MainFlutterWindow> window;
};

// Leaving out a named file fails the command, even where the rest was shared.
int statusOf(const platform::LaunchRequest& request, int status) {
  return request.isIncomplete ? EXIT_FAILURE : status;
}

int run(const platform::LaunchOptions& options) {
  platform::GtkApplicationHost application(platform::kApplicationId, options.isService);
  const bool runs = application.isRemote();
  if (runs && options.isLoginItem)
    return EXIT_SUCCESS;  // the session started it in another way too
  if (runs) return statusOf(options.request, application.forward(options.request));
  if (options.request.action == platform::kQuitAction) return EXIT_SUCCESS;
  auto program = std::make_unique<Program>(application, options);
  const int status =
      application.run(program->delegate, options.request, [&program] { program.reset(); });
  return application.wantsRestart() ? kRestart : statusOf(options.request, status);
}

// The new version gets no request that this one has already carried out.
int startAnew(const std::filesystem::path& program, const platform::LaunchOptions& options,
              std::vector<char*> arguments) {
  const auto& request = options.request;
  const bool asksOnce = request.isShare || !request.opened.empty() || !request.action.empty();
  if (asksOnce || options.isService) arguments.resize(1);
  arguments.push_back(nullptr);
  ::execv(program.c_str(), arguments.data());
  throw platform::PlatformError("the new version cannot be started");
}

}  // namespace

int main(int argc, char** argv) {
  keepMemoryBetweenPayloads();
  brevanholt::platform::installJournalLog();
  // Read first: the link to the executable changes when the file is replaced, and parsing changes
  // the arguments.
  const auto program = brevanholt::platform::InstallLayout::ofThisProcess().executable;
  const std::vector<char*> arguments(argv, argv + argc);
  const auto options =
      brevanholt::platform::LaunchOptions::parse(argc, argv, brevanholt::platform::kBuildVersion);
  try {
    const int status = run(options);
    if (status == kRestart) return startAnew(program, options, arguments);
    return status;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "brevanholt: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
