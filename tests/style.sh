#!/bin/sh
# style.sh format CLANG_FORMAT | style.sh tidy CLANG_TIDY BUILD_DIR: what the tree is held to beside the compiler.
set -eu
case "$1" in
format) git ls-files '*.c' '*.cpp' '*.h' | xargs "$2" --dry-run -Werror ;;
tidy) git ls-files 'user/*.cpp' | xargs -P 2 -n 2 "$2" -p "$3" --quiet --extra-arg=-Wno-unknown-warning-option 2>&1 |
    if grep -E "(warning|error):"; then exit 1; fi ;;
esac
