#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The header that the build made is what the program makes of the same files, now and every time.
# usage: header_test.sh PROGRAM HEADER FILE...
set -euo pipefail
program=$1 header=$2
shift 2
for _ in first second; do
  "$program" declare "$@" --header | cmp - "$header"
done
