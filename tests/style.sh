#!/bin/sh
# style.sh format CLANG_FORMAT | style.sh tidy RUN_CLANG_TIDY BUILD_DIR: what the tree is held to besides the compiler.
set -eu
case "$1" in
format) git ls-files '*.c' '*.cpp' '*.h' | xargs "$2" --dry-run -Werror ;;
tidy)
    # Each source once, with the first of its compile commands; of the host the units that its sources are included in.
    mkdir -p "$3/tidy"
    python3 - "$3" <<END
import json, os, sys
sources = {}
units = os.path.join(os.path.realpath(sys.argv[1]), "host/")
for entry in json.load(open(sys.argv[1] + "/compile_commands.json")):
    path = os.path.realpath(entry["file"])
    if path.startswith(units) or os.path.relpath(path).split("/")[0] in ("user", "host", "bench", "fuzz"):
        sources.setdefault(path, entry)
json.dump(list(sources.values()), open(sys.argv[1] + "/tidy/compile_commands.json", "w"))
END
    "$2" -j 2 -quiet -p "$3/tidy" >"$3/tidy/log" 2>&1 || {
        sed "s/\x1b\[[0-9;]*m//g" "$3/tidy/log" | grep -E "(warning|error):" | sort -u
        exit 1
    }
    ;;
esac
