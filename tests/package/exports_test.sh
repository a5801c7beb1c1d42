#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares what a library exports with the list kept in the tree: a symbol that goes breaks built consumers, one
# that comes is a promise. usage: exports_test.sh LIBRARY LIST; with UPDATE=1 writes the list again.
set -euo pipefail
library=$1 list=$2

exported() {
  nm -DC --without-symbol-versions --defined-only "$library" | sed -E 's/^[0-9a-f]+ //' | grep -vE '^[Ww] ' |
    LC_ALL=C sort -u
}

if [ "${UPDATE:-0}" = 1 ]; then
  exported >"$list"
  exit
fi
if ! diff -u "$list" <(exported); then
  echo "exports differ from $list; when that is meant: UPDATE=1 $0 $library $list"
  exit 1
fi
