#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Uses the library from outside, as another project would, in one of the ways that are promised.
# usage: package_test.sh WAY SOURCE_DIR BUILD_DIR WORK_DIR
set -euo pipefail
way=$1 source=$2 build=$3 work=$4
consumer=$source/tests/package/consumer
prefix=$work/prefix
compiler=${CXX:-g++}

# quietly LOG COMMAND...: shows what it printed only when it fails.
quietly() {
  local log=$1
  shift
  "$@" >>"$log" 2>&1 || { cat "$log"; return 1; }
}

install_build() { quietly "$work/install.log" cmake --install "$build" --prefix "$prefix"; }

# configure_build NAME SOURCE [OPTION...]: without optimisation, which would take its time and show nothing, and all
# sources of a target at a time, as a project may compile them.
configure_build() {
  local name=$1 from=$2
  shift 2
  quietly "$work/$name.log" cmake -G Ninja -S "$from" -B "$work/$name" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG= -DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0 -DCMAKE_PREFIX_PATH="$prefix" "$@"
  quietly "$work/$name.log" cmake --build "$work/$name"
}

# run_consumers NAME: the programs that configure_build made.
run_consumers() {
  "$work/$1/consumer"
  "$work/$1/static_storage"
  "$work/$1/recorder" "$work/$1/call.tessel"
  expect_no_recordings "$work/$1/consumer"
}

# build_example NAME: one of the examples, against $prefix.
build_example() {
  configure_build "$1" "$source/examples/$1"
  "$work/$1/$1"
}

# flags_of_package [PKG_CONFIG_OPTION...]: sets `flags` to what builds a program against $pc_package, tessel by default,
# in $prefix. pkg-config escapes spaces; xargs reads that.
flags_of_package() {
  local folder
  folder=$(dirname "$(find "$prefix" -name tessel.pc)")
  mapfile -t flags < <(PKG_CONFIG_PATH=$folder pkg-config --cflags --libs "$@" "${pc_package:-tessel}" |
    xargs printf '%s\n')
  flags+=("-DPACKAGE_VERSION=\"$(PKG_CONFIG_PATH=$folder pkg-config --modversion tessel)\"")
}

# build_by_pkg_config NAME [PKG_CONFIG_OPTION...]: the consumer, against $prefix.
build_by_pkg_config() {
  flags_of_package "${@:2}"
  "$compiler" -std=c++20 "$consumer/consumer.cpp" "${flags[@]}" -o "$work/$1"
  "$work/$1"
}

fail() { echo "$1" && exit 1; }

# expect_no_recordings PROGRAM: it does not load the library that writes them.
expect_no_recordings() { ! ldd "$1" | grep -F tessel_record || fail "$1 loads libtessel_record"; }

# expect_static PROGRAM: it holds the library itself.
# The run path may contain the libraries' names, too.
expect_static() { ! readelf -dW "$1" | grep -E '\(NEEDED\).*(libtessel|libutil)' || fail "$1 needs a shared library"; }

rm -rf "$work"
mkdir -p "$work"
case "$way" in
  find_package)
    install_build
    # The consumer chooses the language.
    configure_build consumer "$consumer" -DCMAKE_CXX_STANDARD=23 -DCMAKE_CXX_FLAGS=-DCONSUMER_IS_NEWER
    run_consumers consumer
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
    pc_package=tessel-record flags_of_package
    "$compiler" -std=c++20 "$consumer/recorder.cpp" "${flags[@]}" -o "$work/recorder"
    "$work/recorder" "$work/call.tessel"
    flags_of_package
    expect_no_recordings "$work/consumer"
    "$compiler" -std=c++20 -fno-exceptions -fno-rtti "$consumer/consumer.cpp" "${flags[@]}" -o "$work/plain"
    "$work/plain"
    # The C library's own libutil, of the same name, still links beside it.
    "$compiler" -std=c++20 "$consumer/consumer.cpp" "${flags[@]}" -lutil -o "$work/both"
    "$work/both"
    mapfile -t folders < <(printf '%s\n' "${flags[@]}" | grep '^-L')
    ! "$compiler" -shared "${folders[@]}" -lutil -Wl,--trace -o "$work/util.so" | grep -F "$prefix" ||
      fail "-lutil is not the C library's"
    # No library is taken for a source file, and the consumer chooses the language.
    "$compiler" -std=c++2b -DCONSUMER_IS_NEWER -x c++ "$consumer/consumer.cpp" "${flags[@]}" -o "$work/newer"
    "$work/newer"
    ;;
  add_subdirectory)
    configure_build consumer "$consumer" -DTESSEL_FROM=add_subdirectory -DTESSEL_SOURCE="$source"
    run_consumers consumer
    ! grep -E '^BUILD_SHARED_LIBS' "$work/consumer/CMakeCache.txt" || fail "an option of the project that is embedded"
    ;;
  static)
    # One build of the static libraries: fetched, then installed into another root and moved from there, for the rest.
    libraries=lib/$(uname -m)-linux-gnu
    configure_build fetched "$consumer" -DTESSEL_FROM=FetchContent -DTESSEL_SOURCE="$source" -DBUILD_SHARED_LIBS=OFF \
      -DCMAKE_INSTALL_PREFIX=/opt/tessel -DCMAKE_INSTALL_LIBDIR="$libraries"
    run_consumers fetched
    expect_static "$work/fetched/consumer"
    DESTDIR=$work/root quietly "$work/install.log" cmake --install "$work/fetched"
    mv "$work/root/opt/tessel" "$prefix"
    [ -z "$(find "$work/root" -type f)" ] || fail "installed outside its prefix: $(find "$work/root" -type f)"
    [ -f "$prefix/$libraries/libtessel.a" ] || fail "not in $libraries: $(find "$prefix" -name 'libtessel*')"
    configure_build consumer "$consumer"
    run_consumers consumer
    expect_static "$work/consumer/consumer"
    build_by_pkg_config by_pkg_config --static
    expect_static "$work/by_pkg_config"
    # Linked by another language's compiler.
    "$compiler" -std=c++20 "${flags[@]}" -c "$consumer/consumer.cpp" -o "$work/consumer.o"
    cc "$work/consumer.o" "${flags[@]}" -o "$work/by_c_compiler"
    "$work/by_c_compiler"
    ;;
  declared)
    # Settings that a consumer declares, in a place with spaces, and in which the files change.
    install_build
    project="$work/a project"
    cp -r "$source/tests/package/declared" "$project"
    configure_build "the build" "$project"
    expect_output() {
      local found
      found=$("$work/the build/sender")
      [ "$found" = "$1" ] || fail "sender prints $found, not $1"
    }
    expect_output "900 30 5 1"
    sed -i 's/30/25/' "$project/settings of all/sender.json"
    sed -i 's/: 5/: 6/' "$project/settings of all/more.json"
    sed -i 's/: 1}/: 2}/' "$project/settings of all/limits.json"
    quietly "$work/build.log" cmake --build "$work/the build"
    expect_output "900 25 6 2"
    [ -z "$(cmake --build "$work/the build" | grep -v 'no work to do')" ] || fail "built again without a change"
    sed -i 's/25/"25"/' "$project/settings of all/sender.json"
    ! cmake --build "$work/the build" >"$work/wrong.log" 2>&1 || fail "wrong declarations are built"
    grep -F 'sender.json:1:78: settings[0].default: expected a whole number' "$work/wrong.log" >/dev/null ||
      { cat "$work/wrong.log" && fail "the mistake has no place"; }

    refuses() {
      ! cmake -G Ninja -S "$project" -B "$work/refused" -DCMAKE_PREFIX_PATH="$prefix" "${@:2}" \
        >"$work/refused.log" 2>&1 ||
        fail "${*:2} is not refused"
      tr '\n' ' ' <"$work/refused.log" | tr -s ' ' | grep -F "$1" >/dev/null ||
        { cat "$work/refused.log" && fail "$1"; }
    }
    refuses 'there is no target "sendr"' -DMISTAKE=target
    refuses '(sender): no file of declarations is given' -DMISTAKE=file
    refuses '(sender): called twice' -DMISTAKE=twice
    refuses '(sender): the target is made in another folder' -DMISTAKE=folder
    # In a project that builds the library itself, without the tools.
    refuses '(codec): the program tessel is missing' -DMISTAKE= -DTESSEL_FROM=add_subdirectory -DTESSEL_SOURCE="$source"
    quietly "$work/subdirectory.log" cmake -G Ninja -S "$project" -B "$work/sub" -DTESSEL_FROM=add_subdirectory \
      -DTESSEL_SOURCE="$source" -DTESSEL_PROGRAM="$prefix/bin/tessel"
    quietly "$work/subdirectory.log" cmake --build "$work/sub" --target codec_declared/codec_settings.h
    ;;
  engine_util)
    # libtessel alone, against a utility library that an engine brings: here the bundled one, from a prefix.
    install_build
    configure_build engine "$source" -DTESSEL_UTIL_ROOT="$prefix" -DTESSEL_BUILD_TESTS=OFF -DTESSEL_BUILD_TOOLS=OFF \
      -DTESSEL_BUILD_EXAMPLES=OFF -DBUILD_SHARED_LIBS=OFF -DTESSEL_SHARED=ON
    quietly "$work/install.log" cmake --install "$work/engine" --prefix "$work/own"
    [ -n "$(find "$work/own" -name libtessel.so)" ] || fail "TESSEL_SHARED does not decide"
    [ -z "$(find "$work/own" -name 'libutil*')" ] || fail "the bundled libutil was installed all the same"
    prefix=$work/own
    configure_build consumer "$consumer"
    run_consumers consumer
    build_by_pkg_config by_pkg_config
    ! grep -e -Werror "$work/engine/build.ninja" || fail "warnings are errors without a preset"
    ;;
  contact)
    # Of whom the packages say to ask.
    expect_contact() {
      local maintainer=$1 tracker=$2
      quietly "$work/contact.log" cmake -G Ninja -S "$source" -B "$work/contact" -DTESSEL_PACKAGE=ON \
        -DTESSEL_BUILD_TESTS=OFF -DTESSEL_BUILD_EXAMPLES=OFF "${@:3}"
      grep -Fx "set(CPACK_PACKAGE_CONTACT \"$maintainer\")" "$work/contact/CPackConfig.cmake" ||
        fail "the maintainer is not $maintainer"
      grep -Fx "set(CPACK_DEBIAN_PACKAGE_HOMEPAGE \"$tracker\")" "$work/contact/CPackConfig.cmake" ||
        fail "the home page is not '$tracker'"
    }
    expect_contact "The libtessel authors <maintainers@libtessel.invalid>" ""
    expect_contact "A Packager <packager@example.org>" https://example.org/tracker \
      -DTESSEL_PACKAGER="A Packager <packager@example.org>" -DTESSEL_TRACKER=https://example.org/tracker
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
    for file in "$prefix"/bin/tessel "$prefix"/lib/*/libtessel{,_record}.so.1 "$prefix"/lib/*/tessel/libutil.so; do
      id=$(readelf -nW "$file" | sed -n 's/.*Build ID: //p')
      symbols=$prefix/lib/debug/.build-id/${id::2}/${id:2}.debug
      readelf -SW "$symbols" 2>/dev/null | grep -F .debug_info >/dev/null || fail "no debug symbols of $file"
    done
    build_example component
    build_example statistics
    # Installed, it is not moved: its prefix is fixed.
    build_by_pkg_config consumer --define-variable=prefix="$prefix"
    for package in "$build"/packages/*.deb; do
      [ "tessel $(dpkg-deb -f "$package" Version)" = "$("$prefix/bin/tessel" --version)" ] || fail "version of $package"
    done
    ;;
  *)
    echo "unknown way: $way" >&2
    exit 2
    ;;
esac
