#include "platform/engine/web/EngineSocket.h"

#include "platform/engine/web/EngineArguments.h"

#include <glib-unix.h>

namespace brevanholt::platform {

void ReadinessWatch::start(int descriptor, For purpose, std::function<bool()> ready) {
  stop();
  ready_ = std::move(ready);
  source_ = g_unix_fd_add(
      descriptor, purpose == For::kReading ? G_IO_IN : G_IO_OUT,
      [](int, GIOCondition, gpointer data) -> gboolean {
        auto* self = static_cast<ReadinessWatch*>(data);
        const guint source = self->source_;
        const auto callback = self->ready_;  // outlives this, should it end
        if (callback()) return G_SOURCE_CONTINUE;
        // Whoever stopped the watch, or has destroyed it, has removed the source.
        const bool isStillThis = g_main_context_find_source_by_id(nullptr, source) != nullptr;
        if (isStillThis) self->source_ = 0;
        return G_SOURCE_REMOVE;
      },
      this);
}

void ReadinessWatch::stop() {
  if (source_ != 0) g_source_remove(std::exchange(source_, 0));
}

MethodError socketError(const std::exception& error) {
  return engineError("socket_error", error);
}

void OwedReply::take(MethodResult& result) {
  if (result_) throw PlatformError("The socket is busy with an earlier call of this kind.");
  result_.emplace(std::move(result));
}

void OwedReply::succeed(Value value) {
  if (!result_) return;
  auto owed = std::move(*result_);
  result_.reset();
  std::move(owed).success(std::move(value));
}

void OwedReply::fail(const std::exception& error) {
  if (!result_) return;
  auto owed = std::move(*result_);
  result_.reset();
  std::move(owed).error(socketError(error));
}

}  // namespace brevanholt::platform
