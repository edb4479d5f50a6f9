#!/usr/bin/env bash
# Runs a program as Flatpak does, as far as the desktop's portals can tell: with /.flatpak-info,
# processes numbered anew, no capabilities, and the session bus through a proxy that lets little
# through. (Root's capability to set priorities would matter: the engine makes threads realtime, and
# the kernel kills the program at the time limit of zero that the portal names without rtkit.)
set -euo pipefail

scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$scratch"' EXIT
cat >"$scratch/info" <<EOT
[Application]
name=org.brevanholt.Brevanholt
runtime=runtime/org.gnome.Platform/x86_64/47
[Instance]
instance-id=$$
app-path=/usr
[Context]
shared=network;ipc;
sockets=x11;
EOT

inside=(bwrap --unshare-pid --die-with-parent --cap-drop ALL)
for folder in /*; do
  if [[ -L $folder ]]; then
    inside+=(--symlink "$(readlink "$folder")" "$folder")
  elif [[ $folder != /proc && $folder != /dev ]]; then
    inside+=(--bind "$folder" "$folder")
  fi
done
inside+=(--proc /proc --dev-bind /dev /dev --ro-bind "$scratch/info" /.flatpak-info
  --ro-bind "$scratch/info" "$XDG_RUNTIME_DIR/flatpak-info")

mkfifo "$scratch/ready"
exec 4<>"$scratch/ready"  # the proxy ends once nobody has this open
"${inside[@]}" xdg-dbus-proxy --fd=3 "$DBUS_SESSION_BUS_ADDRESS" "$scratch/bus" --filter \
  --own=org.brevanholt.Brevanholt '--talk=org.freedesktop.portal.*' \
  --talk=org.kde.StatusNotifierWatcher 3>&4 4<&- &
proxy=$!
until read -r -n 1 -t 1 -u 4; do
  kill -0 "$proxy"  # it has ended where bubblewrap cannot work
done
DBUS_SESSION_BUS_ADDRESS=unix:path=$scratch/bus "${inside[@]}" "$@" 4<&- &
trap 'kill -TERM %2' TERM INT
wait %2
