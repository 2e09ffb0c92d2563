#!/bin/sh
# armhf.sh ROOT: an agent that is built with the packages for Arm, unpacked in this root, runs with the root's libc.
set -eu
here=$(dirname "$0")
root=$1
library=$(echo "$root"/usr/lib/*/switchmib/libswitchmib.so)

"$here/../library_needs.sh" arm-linux-gnueabihf-readelf "$library"
CC=arm-linux-gnueabihf-gcc EMULATOR="qemu-arm -L $root" \
    "$here/../consumer/try.sh" "$root" --toolchain "$(realpath "$here/../../cmake/armhf.cmake")"
