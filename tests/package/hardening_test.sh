#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Reads the hardening of the installed libraries off their files.
# usage: hardening_test.sh BUILD_DIR WORK_DIR BUILD_TYPE PROCESSOR
set -euo pipefail
build=$1 work=$2 build_type=$3 processor=$4
failed=0

# expect WHAT COMMAND...: one property of $library, by the command's exit status.
expect() {
  local what=$1
  shift
  "$@" || { echo "$(basename "$library"): $what"; failed=1; }
}

# One function per property; each reads the output of readelf and nm for $library.
segment() { readelf -lW "$library" | grep -E "^ *$1 "; }
dynamic() { readelf -dW "$library" | sed -nE "s/.*\(($1)\) *//p"; }
imports() { nm -D --undefined-only "$library" | awk '{sub(/@.*/, "", $2); print $2}'; }

is_never_unloaded() { dynamic FLAGS_1 | grep -w NODELETE >/dev/null; }
is_relocation_read_only() { segment GNU_RELRO >/dev/null && dynamic FLAGS_1 | grep -w NOW >/dev/null; }
has_plain_stack() { segment GNU_STACK | grep ' RW  *0x' >/dev/null; }
has_fixed_text() { [ -z "$(readelf -dW "$library" | grep TEXTREL)" ]; }
has_no_writable_code() { [ -z "$(readelf -lW "$library" | grep -E '^ *LOAD .* RWE ')" ]; }
checks_its_stack() { imports | grep -x __stack_chk_fail >/dev/null; }
checks_its_copies() { imports | grep -v '^__stack_chk' | grep '^__.*_chk$' >/dev/null; }
marks_control_flow() { readelf -nW "$library" | grep 'x86 feature: IBT, SHSTK' >/dev/null; }
has_run_path() { [ "$(dynamic 'RUNPATH|RPATH' | sed 's/.*\[\(.*\)\]/\1/')" = "$1" ]; }
dynamic_names() { dynamic NEEDED | sed 's/.*\[\(.*\)\]/\1/'; }
needs_only() { ! dynamic_names | grep -vxE "$1"; }

# Where an indirect call may land: every exported function, and what runs at load and at unload.
lands_safely() {
  [ -z "$(dynamic 'INIT|FINI')" ] || return 1
  local functions
  functions=$(nm -D --defined-only "$library" | awk '$2 ~ /[TW]/ {print $1}' | sort -u)
  [ -n "$functions" ] || return 1
  objdump -d --no-show-raw-insn "$library" |
    awk -v functions="$functions" '
      BEGIN { n = split(functions, list); for (i = 1; i <= n; i++) wanted[list[i]] = 1 }
      /^[0-9a-f]+ </ { check = ($1 in wanted); name = $2; next }
      check { seen++; if ($0 !~ /endbr64/) { print "  no landing: " name; bad = 1 } check = 0 }
      END { exit bad || !seen }'
}

rm -rf "$work"
cmake --install "$build" --prefix "$work" >/dev/null
runtime='libstdc\+\+\.so\.6|libgcc_s\.so\.1|libm\.so\.6|libc\.so\.6|ld-linux.*'

mapfile -t libraries < <(find "$work" -type f -name 'lib*.so*' ! -name '*-gdb.py')
[ ${#libraries[@]} -eq 3 ] || { echo "expected three libraries, found: ${libraries[*]}"; exit 1; }
for library in "${libraries[@]}"; do
  expect "can be unloaded" is_never_unloaded
  expect "relocations stay writable" is_relocation_read_only
  expect "the stack is executable" has_plain_stack
  expect "code is relocated" has_fixed_text
  expect "code is writable" has_no_writable_code
  expect "no stack protector" checks_its_stack
  [ "$build_type" != Release ] || expect "bounded copies are not checked" checks_its_copies
  if [ "$processor" = x86_64 ]; then
    expect "not marked for control-flow protection" marks_control_flow
    expect "a call can land outside a marked entry" lands_safely
  fi
  case "$(basename "$library")" in
    libtessel_record*)
      expect "unexpected run path" has_run_path "\$ORIGIN:\$ORIGIN/tessel"
      expect "unexpected dependency" needs_only "$runtime|libtessel\.so\.1|libutil\.so"
      ;;
    libtessel*)
      expect "unexpected run path" has_run_path "\$ORIGIN/tessel"
      expect "unexpected dependency" needs_only "$runtime|libutil\.so"
      ;;
    *)
      expect "unexpected run path" has_run_path ""
      expect "unexpected dependency" needs_only "$runtime"
      ;;
  esac
done
exit $failed
