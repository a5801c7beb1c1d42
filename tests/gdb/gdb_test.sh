#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the build into an empty prefix, runs the program with it in gdb, and checks what gdb shows.
# usage: gdb_test.sh WAY SOURCE_DIR BUILD_DIR WORK_DIR PROGRAM; UPDATE=1 stores what it shows as the expected text.
set -euo pipefail
arguments=$*
way=$1 source=$2 build=$3 work=$4 program=$5

rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

# show WHAT [GDB_OPTION...]: leaves what gdb shows in $SHOWN.
show() {
  export SHOW=$1 SHOWN=$work/shown.txt LC_ALL=C
  shift
  local libraries
  libraries=$(dirname "$(find "$prefix" -name libtessel.so)")
  # gdb starts the program, not the script: gdb loads no printers of a library while a script runs.
  gdb -nx -batch "$@" -ex "set disable-randomization off" \
    -ex "set environment LD_LIBRARY_PATH $libraries:$libraries/tessel" -ex "break -qualified Stop" -ex run \
    -x "$source/tests/gdb/show.py" "$program" >"$work/gdb.log" 2>&1 && [ -s "$SHOWN" ] ||
    { cat "$work/gdb.log"; exit 1; }
  # The script does not receive what gdb answers to development environments.
  sed -n 's/^\^//p' "$work/gdb.log" >>"$SHOWN"
}

# compare WITH: all that gdb shows, with a file in the tree.
compare() {
  local kept=$source/tests/gdb/$1
  [ "${UPDATE:-0}" = 1 ] && cp "$SHOWN" "$kept"
  diff -u "$kept" "$SHOWN" && return
  echo "gdb shows something else; when that is meant: UPDATE=1 $0 $arguments"
  grep -o '<no member [^>]*>' "$SHOWN" | sort -u
  echo "A member that was renamed or moved is named only in gdb/tessel_gdb/layout.py."
  exit 1
}

case "$way" in
  auto_load)
    # As from the system's own prefix, where gdb looks by default.
    show whole -iex "add-auto-load-scripts-directory $prefix/share/gdb/auto-load" \
      -iex "add-auto-load-safe-path $prefix/share/gdb/auto-load"
    compare whole.txt
    ;;
  source)
    # From a prefix that was moved, where gdb cannot find them.
    mv "$prefix" "$work/moved"
    prefix=$work/moved
    show whole -x "$prefix/share/tessel/gdb/tessel-gdb.py"
    compare whole.txt
    ;;
  without_debug_information)
    strip --strip-debug "$prefix"/lib*/libtessel.so.* "$prefix"/lib*/tessel/libutil.so
    show stripped -x "$prefix/share/tessel/gdb/tessel-gdb.py"
    compare stripped.txt
    ;;
  commands)
    show commands -x "$prefix/share/tessel/gdb/tessel-gdb.py"
    compare commands.txt
    ;;
  core)
    # Of a core gdb shows what it showed of the program.
    export CORE=$work/core
    show core -x "$prefix/share/tessel/gdb/tessel-gdb.py"
    mv "$SHOWN" "$work/live.txt"
    gdb -nx -batch -x "$prefix/share/tessel/gdb/tessel-gdb.py" "$program" "$CORE" -x "$source/tests/gdb/show.py" \
      >"$work/gdb.log" 2>&1 && grep '^#20 ' "$SHOWN" && sed -n 's/^\^//p' "$work/gdb.log" >>"$SHOWN" &&
      diff -u "$work/live.txt" "$SHOWN" || { cat "$work/gdb.log"; exit 1; }
    ;;
  any_bytes)
    show any -ex "set print elements unlimited" -x "$prefix/share/tessel/gdb/tessel-gdb.py"
    # Each question has an answer, and no answer is an error of Python's.
    awk '/Python|Traceback|^error:/ { bad = 1; print }
         /^\(gdb\)/ { if (asked) { bad = 1; print "no answer: line " NR - 1 } asked = 1; next }
         { asked = 0 }
         END { exit bad || asked || !NR }' "$SHOWN"
    grep '^wide = <.*optimized out>$' "$SHOWN" || { echo "no message for a value that the compiler left out"; exit 1; }
    ;;
  *)
    echo "unknown way: $way" >&2
    exit 2
    ;;
esac
