#!/usr/bin/env bash
# Uses the library from outside, as another project would, in one of the ways that are promised.
# usage: package_test.sh WAY SOURCE_DIR BUILD_DIR WORK_DIR
set -euo pipefail
way=$1 source=$2 build=$3 work=$4
consumer=$source/tests/package/consumer
prefix=$work/prefix

# quietly LOG COMMAND...: shows what it printed only when it fails.
quietly() {
  local log=$1
  shift
  "$@" >>"$log" 2>&1 || { cat "$log"; return 1; }
}

install_build() { quietly "$work/install.log" cmake --install "$build" --prefix "$prefix"; }

# configure_build NAME SOURCE [OPTION...]: without optimisation, which would take its time and show nothing.
configure_build() {
  local name=$1 from=$2
  shift 2
  quietly "$work/$name.log" cmake -G Ninja -S "$from" -B "$work/$name" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG= -DCMAKE_PREFIX_PATH="$prefix" "$@"
  quietly "$work/$name.log" cmake --build "$work/$name"
}

# build_example NAME: one of the examples, against $prefix.
build_example() {
  configure_build "$1" "$source/examples/$1"
  "$work/$1/$1"
}

# build_by_pkg_config NAME [PKG_CONFIG_OPTION [LINK_FLAG...]]: the consumer, against $prefix.
build_by_pkg_config() {
  local flags
  # shellcheck disable=SC2086
  flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tessel.pc)") pkg-config --cflags --libs ${2:-} tessel)
  # shellcheck disable=SC2086
  "${CXX:-g++}" "$consumer/main.cpp" $flags "${@:3}" -o "$work/$1"
  "$work/$1"
}

fail() { echo "$1" && exit 1; }

# expect_static PROGRAM: it holds the library itself.
expect_static() { ! readelf -dW "$1" | grep -E 'libtessel|libutil' || fail "$1 needs a shared library"; }

rm -rf "$work"
mkdir -p "$work"
case "$way" in
  find_package)
    install_build
    configure_build consumer "$consumer"
    "$work/consumer/consumer"
    # Installed in its turn, a program still finds what is in a folder of its own.
    quietly "$work/install.log" cmake --install "$work/consumer" --prefix "$work/installed"
    LD_LIBRARY_PATH=$prefix/lib "$work/installed/bin/consumer"
    ;;
  pkg_config)
    install_build
    # Moved after installation: nothing in the package may remember where it was.
    mv "$prefix" "$work/moved"
    prefix=$work/moved
    build_by_pkg_config consumer
    # The C library's own libutil, of the same name, still links beside it.
    build_by_pkg_config both "" -lutil
    ;;
  add_subdirectory)
    configure_build consumer "$consumer" -DTESSEL_FROM=add_subdirectory -DTESSEL_SOURCE="$source"
    "$work/consumer/consumer"
    ;;
  static)
    # One build of the static libraries: fetched, then installed into another root and moved from there, for the rest.
    libraries=lib/$(uname -m)-linux-gnu
    configure_build fetched "$consumer" -DTESSEL_FROM=FetchContent -DTESSEL_SOURCE="$source" -DBUILD_SHARED_LIBS=OFF \
      -DCMAKE_INSTALL_PREFIX=/opt/tessel -DCMAKE_INSTALL_LIBDIR="$libraries"
    "$work/fetched/consumer"
    expect_static "$work/fetched/consumer"
    DESTDIR=$work/root quietly "$work/install.log" cmake --install "$work/fetched"
    mv "$work/root/opt/tessel" "$prefix"
    [ -z "$(find "$work/root" -type f)" ] || fail "installed outside its prefix: $(find "$work/root" -type f)"
    [ -f "$prefix/$libraries/libtessel.a" ] || fail "not in $libraries: $(find "$prefix" -name 'libtessel*')"
    configure_build consumer "$consumer"
    "$work/consumer/consumer"
    expect_static "$work/consumer/consumer"
    build_by_pkg_config by_pkg_config --static
    expect_static "$work/by_pkg_config"
    ;;
  engine_util)
    # libtessel alone, against a utility library that an engine brings: here the bundled one, from a prefix.
    install_build
    configure_build engine "$source" -DTESSEL_UTIL_ROOT="$prefix" -DTESSEL_BUILD_TESTS=OFF -DTESSEL_BUILD_TOOLS=OFF \
      -DTESSEL_BUILD_EXAMPLES=OFF
    quietly "$work/install.log" cmake --install "$work/engine" --prefix "$work/own"
    [ -z "$(find "$work/own" -name 'libutil*')" ] || fail "the bundled libutil was installed all the same"
    prefix=$work/own
    configure_build consumer "$consumer"
    "$work/consumer/consumer"
    ;;
  example_*)
    install_build
    build_example "${way#example_}"
    ;;
  debian)
    # The packages of BUILD_DIR, unpacked where nothing expects them.
    mkdir "$work/left"
    cmake --install "$build" --component Unspecified --prefix "$work/left" >/dev/null
    [ -z "$(find "$work/left" -type f)" ] || fail "in no package: $(find "$work/left" -type f)"
    lintian --allow-root --fail-on error "$build"/packages/*.deb
    for package in "$build"/packages/*.deb; do dpkg-deb -x "$package" "$work/root"; done
    prefix=$work/root/usr
    for file in "$prefix"/bin/tessel "$prefix"/lib/*/libtessel.so.1 "$prefix"/lib/*/tessel/libutil.so; do
      id=$(readelf -nW "$file" | sed -n 's/.*Build ID: //p')
      symbols=$prefix/lib/debug/.build-id/${id::2}/${id:2}.debug
      readelf -SW "$symbols" 2>/dev/null | grep -F .debug_info >/dev/null || fail "no debug symbols of $file"
    done
    build_example component
    build_example statistics
    # Installed, it is not moved: its prefix is fixed.
    build_by_pkg_config consumer --define-variable=prefix="$prefix"
    "$prefix/bin/tessel" --version
    ;;
  *)
    echo "unknown way: $way" >&2
    exit 2
    ;;
esac
