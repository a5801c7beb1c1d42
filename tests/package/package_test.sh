#!/usr/bin/env bash
# Installs the build into an empty prefix and uses it from outside, as another project would.
# usage: package_test.sh WAY SOURCE_DIR BUILD_DIR WORK_DIR
set -euo pipefail
way=$1 source=$2 build=$3 work=$4

rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

# configure_build_run NAME SOURCE PROGRAM [OPTION...]
configure_build_run() {
  local name=$1 from=$2 program=$3
  shift 3
  cmake -G Ninja -S "$from" -B "$work/$name" -DCMAKE_PREFIX_PATH="$prefix" "$@" >"$work/$name.log" 2>&1 &&
    cmake --build "$work/$name" >>"$work/$name.log" 2>&1 || { cat "$work/$name.log"; return 1; }
  "$work/$name/$program"
}

case "$way" in
  find_package)
    configure_build_run consumer "$source/tests/package/consumer" consumer
    ;;
  pkg_config)
    export PKG_CONFIG_PATH
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tessel.pc)")
    # Moved after installation: nothing in the package may remember where it was.
    mv "$prefix" "$work/moved"
    PKG_CONFIG_PATH=${PKG_CONFIG_PATH/"$prefix"/"$work/moved"}
    # shellcheck disable=SC2046
    "${CXX:-g++}" "$source/tests/package/consumer/main.cpp" $(pkg-config --cflags --libs tessel) -o "$work/consumer"
    "$work/consumer"
    # The C library's own libutil, of the same name, still links beside it.
    # shellcheck disable=SC2046
    "${CXX:-g++}" "$source/tests/package/consumer/main.cpp" $(pkg-config --cflags --libs tessel) -lutil -o "$work/both"
    "$work/both"
    ;;
  engine_util)
    # libtessel alone, against a utility library that an engine brings: here the bundled one, from a prefix.
    cmake -G Ninja -S "$source" -B "$work/engine" -DTESSEL_UTIL_ROOT="$prefix" -DTESSEL_BUILD_TESTS=OFF \
      -DTESSEL_BUILD_TOOLS=OFF -DTESSEL_BUILD_EXAMPLES=OFF -DCMAKE_BUILD_TYPE=Debug >"$work/engine.log" 2>&1 &&
      cmake --build "$work/engine" >>"$work/engine.log" 2>&1 &&
      cmake --install "$work/engine" --prefix "$work/own" >>"$work/engine.log" 2>&1 || { cat "$work/engine.log"; exit 1; }
    [ -z "$(find "$work/own" -name 'libutil*')" ] || { echo "the bundled libutil was installed all the same"; exit 1; }
    prefix=$work/own
    configure_build_run consumer "$source/tests/package/consumer" consumer
    ;;
  example_*)
    name=${way#example_}
    configure_build_run "$name" "$source/examples/$name" "$name"
    ;;
  *)
    echo "unknown way: $way" >&2
    exit 2
    ;;
esac
