#!/bin/sh
# Writes a test of each example in the headers' comments: what stands between @code and @endcode there.
# usage: examples.sh HEADER...
set -e
echo '#undef NDEBUG'
echo '#include <cassert>'
echo '#include "TypedTest.h"'
echo '#include "tessel/settings_check.h"'
echo 'class Examples : public TypedTest {};'
for header in "$@"; do
  awk -v name="$(basename "$header" .h)" '
    /^\/\/\/ @code/ { inside = 1; print "TEST_F(Examples, " name ") {"; next }
    /^\/\/\/ @endcode/ { inside = 0; print "}" }
    inside { sub(/^\/\/\/ ?/, ""); print }' "$header"
done
