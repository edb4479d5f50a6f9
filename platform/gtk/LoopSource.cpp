#include "platform/gtk/LoopSource.h"

#include <glib-unix.h>

namespace brevanholt::platform {
namespace {

using Action = UniqueFunction<void()>;

void deleteAction(gpointer action) {
  delete static_cast<Action*>(action);
}

}  // namespace

LoopSource LoopSource::after(std::chrono::milliseconds time, Action action) {
  Pointer source(g_timeout_source_new(static_cast<unsigned>(time.count())));
  g_source_set_callback(
      source.get(),
      [](gpointer data) -> gboolean {
        (*static_cast<Action*>(data))();
        return G_SOURCE_REMOVE;
      },
      new Action(std::move(action)), deleteAction);
  g_source_attach(source.get(), nullptr);
  return LoopSource(std::move(source));
}

LoopSource LoopSource::whenReadable(int descriptor, Action action) {
  return whenReady(descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                   std::move(action));
}

LoopSource LoopSource::whenWritable(int descriptor, Action action) {
  return whenReady(descriptor, static_cast<GIOCondition>(G_IO_OUT | G_IO_HUP | G_IO_ERR),
                   std::move(action));
}

LoopSource LoopSource::whenReady(int descriptor, GIOCondition condition, Action action) {
  Pointer source(g_unix_fd_source_new(descriptor, condition));
  const GUnixFDSourceFunc act = [](int, GIOCondition, gpointer data) -> gboolean {
    (*static_cast<Action*>(data))();
    return G_SOURCE_CONTINUE;
  };
  g_source_set_callback(source.get(), G_SOURCE_FUNC(act), new Action(std::move(action)),
                        deleteAction);
  g_source_attach(source.get(), nullptr);
  return LoopSource(std::move(source));
}

void LoopSource::stop() {
  if (source_) g_source_destroy(source_.get());
  source_.reset();
}

}  // namespace brevanholt::platform
