# shellcheck shell=bash
# Sourced by the scripts that start one desktop each. They set the desktop's own environment and
# start its programs; this gives them what is common: layers with its packages, an X server without
# a screen, a session bus, and a home of its own.
#
# BREVANHOLT_SIZE is the screen's size, BREVANHOLT_KEEP_LOG a file for what the desktop's programs
# say. BREVANHOLT_ICON is where the desktop has the status icon.
set -euo pipefail

desktops=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [[ -z ${BREVANHOLT_IN_OVERLAY-} ]]; then exec "$desktops/overlay" "$0" "$@"; fi
[[ $# -gt 0 ]] || { echo "usage: $0 COMMAND [ARGUMENT...]" >&2; exit 2; }

scratch=$(mktemp -d "${TMPDIR:-/tmp}/brevanholt-desktop.XXXXXX")
started=()
finish() {
  [[ ${#started[@]} -eq 0 ]] || kill "${started[@]}" 2>/dev/null || true
  wait 2>/dev/null || true
  [[ -z ${BREVANHOLT_KEEP_LOG-} ]] || cp "$scratch/session.log" "$BREVANHOLT_KEEP_LOG"
  rm -rf "$scratch"
}
trap finish EXIT
trap 'exit 143' TERM INT

export HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/runtime
export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share XDG_CACHE_HOME=$HOME/.cache
export XDG_STATE_HOME=$HOME/.local/state
export PYTHONPATH=${desktops%/*}  # for the package "stage"
mkdir -p "$HOME/Downloads" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME"
mkdir -m 700 "$XDG_RUNTIME_DIR"
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER DESKTOP_STARTUP_ID TMPDIR
export LIBGL_ALWAYS_SOFTWARE=1 NO_AT_BRIDGE=1 XDG_SESSION_TYPE=x11 GDK_BACKEND=x11
log=$scratch/session.log

start() {
  "$@" >>"$log" 2>&1 &
  started+=($!)
}
# wait_for WHAT COMMAND...: waits until the command succeeds.
wait_for() {
  local what=$1
  shift
  for _ in $(seq 600); do
    ! "$@" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  echo "$(basename "$0"): $what did not start; its last words:" >&2
  tail -n 15 "$log" >&2
  exit 1
}
has_window_manager() {
  xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'
}
has_owner() {
  [[ $(gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
    --method org.freedesktop.DBus.NameHasOwner "$1") == '(true,)' ]]
}
has_tray() {
  has_owner org.kde.StatusNotifierWatcher
}

# start_bus session or system: a bus of that kind; nothing is on the system's.
start_bus() {
  dbus-daemon --session --nofork --nopidfile --print-address=3 3>"$scratch/$1-bus" >>"$log" 2>&1 &
  started+=($!)
  wait_for "the $1 bus" test -s "$scratch/$1-bus"
  local variable=DBUS_${1^^}_BUS_ADDRESS
  export "$variable=$(<"$scratch/$1-bus")"
}

Xvfb -screen 0 "${BREVANHOLT_SIZE:-1280x800}x24" -noreset -nolisten tcp -displayfd 3 \
  3>"$scratch/display" >>"$log" 2>&1 &
started+=($!)
wait_for 'the X server' test -s "$scratch/display"
DISPLAY=:$(<"$scratch/display")
export DISPLAY
start_bus session
