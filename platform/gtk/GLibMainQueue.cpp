#include "platform/gtk/GLibMainQueue.h"

#include <glib.h>

namespace brevanholt::platform {

void GLibMainQueue::post(Task task) {
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer data) -> gboolean {
        (*static_cast<Task*>(data))();
        return G_SOURCE_REMOVE;
      },
      new Task(std::move(task)), [](gpointer data) { delete static_cast<Task*>(data); });
}

}  // namespace brevanholt::platform
