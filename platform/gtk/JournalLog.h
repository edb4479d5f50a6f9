#pragma once

namespace brevanholt::platform {

// Sends the log to GLib's structured log (the journal, or standard error), domain "Brevanholt".
void installJournalLog();

}  // namespace brevanholt::platform
