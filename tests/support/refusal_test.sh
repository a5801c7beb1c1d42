#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Compiles a file as it is, which must succeed, and with REFUSED defined, which must fail. A comment "says: SENTENCE"
# in the file is what one of the compiler's error lines must then say.
# usage: refusal_test.sh FILE COMPILER FLAG...
file=$1
shift
"$@" -fsyntax-only "$file" || exit 1
if errors=$("$@" -fsyntax-only -DREFUSED "$file" 2>&1); then
  echo "$file: the refused lines compile"
  exit 1
fi
sentence=$(sed -n 's,^// says: ,,p' "$file")
printf '%s\n' "$errors" | grep 'error:' | grep -qF -e "$sentence" && exit
printf '%s\n' "$errors"
echo "$file: no error line says: $sentence"
exit 1
