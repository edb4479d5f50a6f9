#!/usr/bin/env bash
# Each program and library of the build folder given is linked with the hardening flags.
set -euo pipefail

failed=0
check() {
  local what=$1 file=$2 pattern=$3
  shift 3
  grep --quiet --extended-regexp "$pattern" <<<"$(readelf --wide "$@" "$file")" || {
    echo "$file: $what" >&2
    failed=1
  }
}
program=$1/bin/brevanholt child=$1/lib/brevanholt/brevanholt-preview
mapfile -t libraries < <(find "$1/lib" -name '*.so')
[[ ${#libraries[@]} -gt 0 ]]
for file in "$program" "$child" "${libraries[@]}"; do
  check 'its tables can be written to' "$file" GNU_RELRO --program-headers
  check 'it binds when it is called, not when it is loaded' "$file" BIND_NOW --dynamic
  check 'its stack can be executed' "$file" 'GNU_STACK.* RW ' --program-headers
  check 'it has no stack protector' "$file" __stack_chk_fail --dyn-syms
done
for file in "$program" "$child"; do
  check 'it is loaded at a fixed address' "$file" 'Flags:.* PIE' --dynamic
done
check 'it calls no checked functions' "$program" '__\w+_chk\b' --dyn-syms
exit "$failed"
