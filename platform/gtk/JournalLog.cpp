#include "platform/gtk/JournalLog.h"

#include "platform/foundation/Log.h"

#include <glib.h>

namespace brevanholt::platform {
namespace {

GLogLevelFlags flagsOf(LogLevel level) {
  switch (level) {
    case LogLevel::kDebug:
      return G_LOG_LEVEL_DEBUG;
    case LogLevel::kInfo:
      return G_LOG_LEVEL_MESSAGE;
    case LogLevel::kWarning:
      return G_LOG_LEVEL_WARNING;
    case LogLevel::kError:
      return G_LOG_LEVEL_CRITICAL;
  }
  return G_LOG_LEVEL_CRITICAL;
}

}  // namespace

void installJournalLog() {
  setLogSink([](LogLevel level, std::string_view text) {
    g_log_structured("Brevanholt", flagsOf(level), "MESSAGE", "%.*s", static_cast<int>(text.size()),
                     text.data());
  });
}

}  // namespace brevanholt::platform
