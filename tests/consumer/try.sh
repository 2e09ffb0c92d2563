#!/bin/sh
# try.sh BUILD_DIR [CMAKE_ARGUMENT...]: what an integrator does with an installed library, from CMake and with
# pkg-config, in C and in C++. CC is the C compiler, EMULATOR runs its programs. Instead of a build, a directory into
# which the packages were installed will do.
set -eu
here=$(dirname "$0")
build=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
flags="-Wall -Wextra -Wpedantic -Werror"

if [ -e "$build/CMakeCache.txt" ]; then
    prefix=$work/usr
    for component in library development; do
        cmake --install "$build" --component $component --prefix "$prefix" >"$work/log"
    done
    version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
else
    prefix=$build/usr
    version=$(zcat "$prefix/share/doc/switchmib-dev/changelog.gz" | dpkg-parsechangelog -l - -S Version)
fi

expect() {  # PROGRAM
    ${EMULATOR-} "$1" >"$work/out"
    diff - "$work/out" <<END
switchmib $version
interfaces: 23 objects
ifTable, column 22: show interface_uib interfaces 7
END
}

# A cross toolchain looks for packages under its own root.
where=-DCMAKE_PREFIX_PATH=$prefix
[ -z "${EMULATOR-}" ] || where=-Dswitchmib_DIR=$(dirname "$(find "$prefix" -name switchmib-config.cmake)")
cmake -S "$here" -B "$work/build" "$where" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
    "$@" >>"$work/log"
cmake --build "$work/build" >>"$work/log" || { cat "$work/log"; exit 1; }
expect "$work/build/host_c"
expect "$work/build/host_cpp"

export PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name switchmib.pc)")
[ "$(pkg-config --modversion switchmib)" = "$version" ]
${CC:-cc} $flags $(pkg-config --cflags switchmib) -DLIBRARY="\"$(pkg-config --variable=library switchmib)\"" -rdynamic \
    "$here/host.c" -o "$work/host" -ldl
expect "$work/host"
