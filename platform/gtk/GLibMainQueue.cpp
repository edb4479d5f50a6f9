#include "platform/gtk/GLibMainQueue.h"

#include <glib.h>

#include <deque>
#include <mutex>

namespace brevanholt::platform {
namespace {

// The tasks that wait for the default main context. They have a lock of their own, since the thread
// sanitizer does not see GLib's locks and would report every task as a race.
struct Waiting {
  std::mutex mutex;
  std::deque<Task> tasks;
};

// Never destroyed: threads may post until the process has ended.
Waiting& waiting() {
  static auto& one = *new Waiting;
  return one;
}

gboolean runNext(gpointer) {
  std::unique_lock lock(waiting().mutex);
  Task task = std::move(waiting().tasks.front());
  waiting().tasks.pop_front();
  lock.unlock();
  task();
  return G_SOURCE_REMOVE;
}

}  // namespace

void GLibMainQueue::post(Task task) {
  {
    const std::lock_guard lock(waiting().mutex);
    waiting().tasks.push_back(std::move(task));
  }
  g_idle_add_full(G_PRIORITY_DEFAULT, runNext, nullptr, nullptr);
}

}  // namespace brevanholt::platform
