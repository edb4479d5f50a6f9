#!/usr/bin/env bash
# The layers of the source tree are kept apart, and the check that says so can fail.
set -euo pipefail

check=$(cd "$(dirname "$0")/../.." && pwd)/scripts/check-dependencies
"$check"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
refused() {
  mkdir -p "$scratch/$(dirname "$1")"
  echo "$2" >"$scratch/$1"
  if "$check" "$scratch" 2>/dev/null; then
    echo "This passed in $1: $2" >&2
    exit 1
  fi
  rm "$scratch/$1"
}
refused Runner/Intake/Drop.h '#include "Runner/MainFlutterWindow/MainFlutterWindow.h"'
refused Runner/AppDelegate/Delegate.h 'Glib::RefPtr<Gtk::Window> window;'
refused Shared/Store.cpp 'g_free(text);'
refused Runner/Key.cpp 'EVP_PKEY* key;'
refused Runner/Window.cpp '#include "platform/linux/window/GtkMainWindow.h"'
refused Runner/main.cpp 'GDBusConnection* bus;'
refused platform/channel/Value.cpp 'g_free(text);'
refused platform/files/Place.cpp 'g_free(text);'
refused platform/foundation/Text.cpp '#include "platform/files/Files.h"'
refused platform/gtk/FileUri.cpp '#include "platform/linux/bus/Bus.h"'
refused platform/engine/web/Page.cpp '#include "platform/linux/window/GtkMainWindow.h"'
refused platform/services/LoginItem.h 'WebKitWebView* view;'
"$check" "$scratch"
