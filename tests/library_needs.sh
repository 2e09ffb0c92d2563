#!/bin/sh
# library_needs.sh READELF LIBRARY: the library needs nothing but libc and the loader, runs nothing at load, can be
# unwound and is hardened.
set -eu
library=$2
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

# A crash can be unwound, and what Debian hardens is hardened.
headers=$("$1" -W -l -S "$2")
symbols=$("$1" -W --dyn-syms "$2")
properties=$("$1" -n "$2")
require() {  # TEXT PATTERN WHAT
    printf '%s\n' "$1" | grep -qE -e "$2" || { echo "$library: $3"; exit 1; }
}
require "$headers" '\.eh_frame |\.ARM\.exidx ' "no unwind tables"
require "$headers" 'GNU_RELRO' "no read-only relocations"
require "$symbols" '__stack_chk_fail' "no stack protector"
case $("$1" -h "$2") in
*X86-64*) require "$properties" 'IBT, SHSTK' "no control-flow protection" ;;
*AArch64*) require "$properties" 'BTI, PAC' "no branch protection" ;;
esac
