#!/usr/bin/env bash
# The manual page and the completions have the options of the program, and no others.
set -euo pipefail

program=$1
data=$2
# The options on its input that the argument stands before. The bus starts the program with one that
# nobody types.
options() {
  grep -oE -e "$1[a-z]+(-[a-z]+)*" | sed -E "s/^.*(--|-l )//" | grep -vx gapplication-service | sort -u
}
expected=$("$program" --help | options '^  (-h, )?--')
[[ $expected == *share* ]]
check() {
  if ! diff <(echo "$expected") -; then
    echo "$1 has other options than the program." >&2
    exit 1
  fi
}
sed 's/\\-/-/g' "$data/man/man1/brevanholt.1" | grep -E '^\.(B|BI) --' | options -- |
  check 'The manual page'
sed '/-W/,/--version/!d' "$data/bash-completion/completions/brevanholt.bash" | options -- |
  check "bash's completion"
grep -E "^  '" "$data"/zsh/*/_brevanholt | sed 's/\[.*//; s/^.*)//' | options -- |
  check "zsh's completion"
grep ^complete "$data/fish/vendor_completions.d/brevanholt.fish" | options '-l ' |
  check "fish's completion"
