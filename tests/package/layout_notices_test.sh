#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The comparison of layouts notices what breaks a built program, and names the class.
# usage: layout_notices_test.sh LIBRARY LAYOUT
set -euo pipefail
library=$1 layout=$2
test=$(dirname "$0")/layout_test.sh
past=$(mktemp --suffix=.layout)
trap 'rm -f "$past"' EXIT

# notices NAME CHANGE: the library is refused beside a layout in which CHANGE was not made yet.
notices() {
  local name=$1 change=$2 report
  sed -E "$change" "$layout" >"$past"
  ! cmp -s "$past" "$layout" || { echo "the kept layout has nothing to change: $change"; exit 1; }
  if report=$("$test" "$library" "$past"); then
    echo "not noticed: $change"
    exit 1
  fi
  grep -qF "$name" <<<"$report" || { echo "the report does not name $name: $report"; exit 1; }
}

in_class() { echo "/<class-decl name='$1' size/,/<.class-decl>/$2"; }
notices "kalStore::st_KalVideoTxBlock" "$(in_class st_KalVideoTxBlock "s/size-in-bits='16512'/size-in-bits='16480'/")"
notices "float targetFps" "$(in_class st_KalVideoLayer "s/offset-in-bits='1856'/offset-in-bits='1824'/")"
notices "IKalConfig::RemoveKalConfig(" "$(in_class IKalConfig "s/vtable-offset='6'/vtable-offset='7'/")"
