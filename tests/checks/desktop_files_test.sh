#!/usr/bin/env bash
# The desktop entries in the given folder of data are valid, and the check that says so can fail.
set -euo pipefail

entries=("$1"/applications/*.desktop "$1"/Thunar/sendto/*.desktop "$1"/kio/servicemenus/*.desktop)
desktop-file-validate "${entries[@]}"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
sed 's/^Exec=.*/Exec=brevanholt %q/' "${entries[0]}" >"$scratch/broken.desktop"
if desktop-file-validate "$scratch/broken.desktop" >/dev/null; then
  echo 'A broken entry passed.' >&2
  exit 1
fi
for service in "$1"/dbus-1/services/*.service; do
  name=$(basename "$service" .service)
  grep -qx "Name=$name" "$service"
  grep -q '^DBusActivatable=true$' "$1/applications/$name.desktop"
done
