#!/bin/sh
# library_needs.sh READELF LIBRARY: the library needs nothing but libc and the loader, and runs nothing at load.
set -eu
dynamic=$("$1" -d "$2")
others=$(printf '%s\n' "$dynamic" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v -e '^libc\.so\.6$' -e '^ld-linux' || true)
if [ -n "$others" ]; then
    echo "$2 needs more than libc: $others"
    exit 1
fi
if printf '%s\n' "$dynamic" | grep -E '\((INIT|INIT_ARRAY|PREINIT_ARRAY|FINI|FINI_ARRAY)\)'; then
    echo "$2 runs code at load or unload"
    exit 1
fi
