#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# From nothing to a running program, on a Debian that has nothing yet: first what the README says, word for word, then
# the packages. Needs root, and what debootstrap needs: the machine's package mirror, mounts, devices.
# usage: clean_root_test.sh SOURCE_DIR PACKAGES_DIR ROOT_DIR
set -euo pipefail
source=$1 packages=$2 root=$3
release=bookworm

# in_root COMMAND...: with nothing of this machine's surroundings but its way to the network.
in_root() {
  unshare --mount --pid --fork --propagation private \
    bash -c 'mount -t proc proc "$0/proc" && chroot "$0" "$@"' "$root" \
    /usr/bin/env -i HOME=/root PATH="$PATH" LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
    ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} "$@"
}

# step NAME COMMAND...: prints how long it took, and the output of the command only when it fails.
step() {
  local name=$1 start=$SECONDS
  shift
  if ! "$@" >"$root.log" 2>&1; then
    cat "$root.log"
    echo "FAILED in a clean root: $name"
    exit 1
  fi
  echo "$name: $((SECONDS - start)) s"
}

rm -rf "$root"
mirror=$(apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
  sed -n "s/^$release main //p" | head -n 1)
step "an empty Debian" debootstrap --variant=minbase "$release" "$root" "$mirror"
mkdir "$root/libtessel"
tar -C "$source" --exclude=./build --exclude=./.git -c . | tar -C "$root/libtessel" -x
"$source/tests/package/readme_test.py" --print >"$root/readme.sh"
step "the README, from nothing to a program" in_root bash -c 'cd /libtessel && bash /readme.sh'

mkdir "$root/packages"
cp "$packages"/*.deb "$root/packages"
step "the packages" in_root sh -c 'apt-get install -y --no-install-recommends /packages/*.deb'
step "a program by pkg-config" in_root sh -c '
  g++ -std=c++20 /libtessel/tests/package/consumer/consumer.cpp $(pkg-config --cflags --libs tessel) -o /consumer &&
  /consumer'
for example in component statistics; do
  step "the example $example" in_root sh -c "
    cmake -G Ninja -S /libtessel/examples/$example -B /$example && cmake --build /$example && /$example/$example"
done
step "the program tessel" in_root tessel toggles
step "the program by pkg-config, with the runtime package alone" in_root sh -c '
  apt-get purge -y libtessel-dev tessel-tools && /consumer'
rm -rf "$root"
