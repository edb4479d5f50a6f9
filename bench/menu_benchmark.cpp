// What updates of the status menu cost while it is closed and while it is open, in time and in
// memory. Needs a display on X11 and a session bus.

#include "Runner/StatusMenu/DesktopStatusMenuController.h"
#include "platform/linux/menu/DBusMenuExporter.h"
#include "platform/linux/menu/GtkPopupMenu.h"

#include <gtk/gtk.h>
#include <gtkmm/main.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>

#include <unistd.h>

#include "bench/SecondsOf.h"

namespace {

using namespace brevanholt;
using platform::List;
using platform::Map;

List recents(int count) {
  List list;
  for (int index = 0; index < count; ++index) {
    const std::string number = std::to_string(index);
    list.emplace_back(Map{{"title", "Sent to device " + number},
                          {"item", "holiday pictures " + number + ".zip"},
                          {"stateKey", "complete"},
                          {"progressLabel", "12 MB"}});
  }
  return list;
}

void runLoop() {
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}

double megabytesInUse() {
  long pages = 0;
  std::ifstream("/proc/self/statm").ignore(64, ' ') >> pages;
  return static_cast<double>(pages * ::sysconf(_SC_PAGESIZE)) / (1 << 20);
}

void report(const char* what, DesktopStatusMenuController& controller, int updates,
            const List& shown) {
  const double before = megabytesInUse();
  double longest = 0;
  const std::clock_t busy = std::clock();
  const double seconds = secondsOf([&] {
    for (int update = 0; update < updates; ++update) {
      longest = std::max(longest, secondsOf([&] {
                           controller.update(true, nullptr, shown);
                           runLoop();
                         }));
    }
  });
  std::printf("%-46s %7.2f s (%.2f s of processor), longest %7.1f ms, %+7.1f MB to %.0f MB\n", what,
              seconds, static_cast<double>(std::clock() - busy) / CLOCKS_PER_SEC, longest * 1000,
              megabytesInUse() - before, megabytesInUse());
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const Gtk::Main toolkit(argc, argv);
  platform::Bus bus(G_BUS_TYPE_SESSION);
  DesktopStatusMenuController controller;
  platform::DBusMenuExporter exported(bus, controller.menu(), [](std::uint32_t) {});
  platform::GtkPopupMenu popup(controller.menu());
  const List few = recents(4);
  const int many = argc > 1 ? std::stoi(argv[1]) : 100'000;

  report("closed, to warm up: 1,000 updates", controller, 1'000, few);
  report("closed: 100,000 updates", controller, many, few);
  report("closed, 10,000 recents: 10 updates", controller, 10, recents(10'000));
  controller.update(true, nullptr, few);
  popup.popUpNear(100, 100);
  report("open, to warm up: 1,000 updates", controller, 1'000, few);
  report("open: 100,000 updates", controller, many, few);
  report("open, 10,000 recents: 10 updates", controller, 10, recents(10'000));
  popup.popDown();
}
