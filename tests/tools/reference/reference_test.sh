#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The manual pages and the completion, as they are installed, and the program that writes them.
# usage: reference_test.sh PART FILES PROGRAM GENERATOR
set -euo pipefail
part=$1 files=$2 program=$3 generator=$4

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# The commands that the program's help lists.
commands() { "$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'; }
# The long options that a command's help lists.
options() { "$program" "$1" --help | sed -n '/^Options:/,/^$/s/^  [^ ]*\(--[a-z-]*\).*/\1/p'; }

manual() {
  local page command option text warnings overview
  overview=$(dirname "$0")/../../../docs/tessel.md
  for page in "$files"/man1/*.1; do
    warnings=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done
  for command in $(commands); do
    text=$(groff -man -Tascii -P-cbou "$files/man1/tessel-$command.1")
    for option in $(options "$command"); do
      grep -q -- "$option" <<<"$text" || fail "$command $option is not in its page"
    done
    grep -q '^EXIT STATUS' <<<"$text" || fail "$command: no exit status"
    groff -man -Tascii -P-cbou "$files/man1/tessel.1" | grep -q "^ *$command" || fail "$command is not in tessel(1)"
    grep -q "^| \`$command[ \`]" "$overview" || fail "$command is not in $overview"
  done
  ls "$files/man1" | grep -q 'tessel-lint.1' || fail "no pages"
}

# offered WORD...: what the completion offers for the last word, on one line.
offered() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  _tessel
  [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd '|'
}

# expect EXPECTED WORD...
expect() {
  local expected=$1 found
  shift
  found=$(offered "$@")
  [ "$found" = "$expected" ] || fail "'$*' offers '$found', not '$expected'"
}

complete_bash() {
  local folder command option
  # shellcheck source=/dev/null
  source "$files/bash/tessel"
  complete -p tessel >/dev/null
  folder=$(mktemp -d)
  # shellcheck disable=SC2064
  trap "rm -rf '$folder'" EXIT
  cd "$folder"
  touch 'a b.json' c.json

  for command in $(commands); do
    expect "$command" tessel "$command"
    for option in $(options "$command"); do expect "$option" tessel "$command" "$option"; done
  done
  expect 'lint' tessel lin
  expect '--help|--version' tessel --
  expect '--format' tessel lint --fo
  expect 'github|json|text' tessel lint --format ''
  expect 'github' tessel lint a.json --format = g
  expect 'github|json|text' tessel lint --format =
  expect 'audio|video' tessel stats --kind ''
  expect 'a b.json|c.json' tessel lint ''
  expect 'c.json' tessel apply --json c
  expect 'c.json' tessel toggles --from c
  expect 'c.json' tessel diff 'a b.json' c
  expect 'Video/|VideoSlide/' tessel apply c.json --set Vid
  expect 'all' tessel apply c.json --dump a
  expect 'Audio|AudioSi|AudioSlide' tessel apply c.json --dump Aud
  expect '' tessel apply c.json --trace ''
  expect '' tessel toggles mus
  expect '' tessel nothing ''
}

complete_zsh() {
  local command option
  zsh -n "$files/zsh/_tessel" || fail "zsh cannot read it"
  [ "$(head -n 1 "$files/zsh/_tessel")" = '#compdef tessel' ] || fail "zsh does not know whose it is"
  for command in $(commands); do
    # What is handed to _arguments for the command.
    offers=$(zsh -fc '
      command=$1 file=$2
      _arguments() { [[ $1 == -C ]] && state=argument words=($command) || print -rl -- "$@" }
      _describe() { : }
      source $file' zsh "$command" "$files/zsh/_tessel")
    for option in $(options "$command"); do
      grep -qE -- "[)*]$option=?\[" <<<"$offers" || fail "$command $option is not offered"
    done
  done
}

generate() {
  local folder
  folder=$(mktemp -d)
  # shellcheck disable=SC2064
  trap "rm -rf '$folder'" EXIT
  "$generator" "$folder/with all folders/made"
  diff -r "$folder/with all folders/made" "$files" || fail "it writes other files than in the build"
}

case "$part" in
  generator) generate ;;
  manual) manual ;;
  bash) complete_bash ;;
  zsh) complete_zsh ;;
  *) fail "no part $part" ;;
esac
