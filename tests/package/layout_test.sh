#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the layout of what a library exports (sizes, offsets, slots, values) with the one kept in the tree.
# usage: layout_test.sh LIBRARY LAYOUT; with UPDATE=1 writes the layout again. The library needs debug information.
set -euo pipefail
library=$1 layout=$2
source=$(cd "$(dirname "$0")/../.." && pwd)

# layout_of LIBRARY: without anything that differs between machines or checkouts.
layout_of() {
  abidw --load-all-types --exported-interfaces-only --suppressions "$source/abi/layout.abignore" --type-id-style hash \
    --no-parameter-names --no-comp-dir-path --no-corpus-path --no-elf-needed --no-show-locs "$1" |
    sed "s| path='$source/| path='|"
}

if [ "${UPDATE:-0}" = 1 ]; then
  layout_of "$library" >"$layout"
  exit
fi
now=$(mktemp --suffix=.abi)
trap 'rm -f "$now"' EXIT
layout_of "$library" >"$now"
if ! abidiff "$layout" "$now"; then
  echo "a program built before this change may break with it; when it is meant: UPDATE=1 $0 $library $layout"
  exit 1
fi
