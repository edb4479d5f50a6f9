#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "platform/BuildInfo.h"
#include "platform/linux/JournalLog.h"
#include "platform/linux/LinuxPlatform.h"

#include <cstdio>
#include <cstdlib>

#include <malloc.h>

namespace {

using namespace brevanholt;

// Payloads of a mebibyte come and go by the thousand during a transfer. Asking the system for fresh
// memory each time costs more than moving them; what is kept instead is bounded.
void keepMemoryBetweenPayloads() {
  ::mallopt(M_MMAP_THRESHOLD, 4 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 32 << 20);
}

int run(const platform::LaunchOptions& options) {
  platform::GtkApplicationHost application(platform::kApplicationId, options.isService);
  if (application.isRemote()) return application.forward(options.request);
  platform::LinuxPlatform linux(application, options);
  AppDelegate delegate(linux.services());
  const auto window = std::make_shared<MainFlutterWindow>(linux.services(), &delegate);
  delegate.setMainWindow(window);
  window->awakeFromNib();
  return application.run(delegate, options.request);
}

}  // namespace

int main(int argc, char** argv) {
  keepMemoryBetweenPayloads();
  brevanholt::platform::installJournalLog();
  const auto options = brevanholt::platform::LaunchOptions::parse(argc, argv);
  try {
    return run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "brevanholt: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
