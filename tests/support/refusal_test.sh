#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Compiles a file as it is, which must succeed, and with REFUSED defined, which must fail.
# usage: refusal_test.sh FILE COMPILER FLAG...
file=$1
shift
"$@" -fsyntax-only "$file" || exit 1
if "$@" -fsyntax-only -DREFUSED "$file" 2>/dev/null; then
  echo "$file: the refused lines compile"
  exit 1
fi
