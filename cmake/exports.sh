#!/bin/sh
# exports.sh NM LIBRARY RECORDS_H POINTER_SIZE: writes the header that declares what a built library exports. What a
# name's ending doesn't say is declared in RECORDS_H; fails when that and the library differ.
set -eu
nm=$1 library=$2 records=$3 pointer=$4

cat <<'END'
// Everything that libswitchmib.so exports; as C11 and as C++. Made from the library by its build.
#pragma once

#include <assert.h>

#include "host.h"
#include "records.h"

#ifdef __cplusplus
extern "C" {
#endif

END
symbols=$("$nm" -D -S --defined-only --format=posix "$library" | LC_ALL=C sort | grep -v '^_')
status=0
while read -r name class _ size; do
    size=$((0x${size:-0}))
    case $name in
    *_snmp_init) echo "void $name(void);" ;;
    *_variables) echo "extern const VariableEntry $name[$((size / 532))];" ;;
    *_variables_count | *_oid_length | *_groups_count) echo "extern const size_t $name;" ;;
    *_names) echo "extern const char* const $name[$((size / pointer))];" ;;
    *_groups) echo "extern const GroupInfo $name[$((size / (pointer + 16)))];" ;;
    *_oid)
        case $class in [Rr]) const='const ' ;; *) const= ;; esac
        echo "extern ${const}oid $name[$((size / 4))];"
        ;;
    RETVALUE_*) echo "extern unsigned char $name[$size];" ;;
    switchmib_version) echo "extern const char $name[$size];" ;;
    *)
        if ! grep -q "[ *]$name[[;(]" "$records"; then
            echo "$name is exported, but not declared in $records" >&2
            status=1
        fi
        case $class in T) ;; *) echo "static_assert(sizeof $name == $size, \"as in the library\");" ;; esac
        ;;
    esac
done <<END
$symbols
END
cat <<'END'

#ifdef __cplusplus
}  // extern "C"
#endif
END
# Declared and not exported?
for name in $(sed -nE 's,//.*,,; s/^(extern|int) (.*[ *])?(\w+)[[;(].*/\3/p' "$records"); do
    if ! printf '%s\n' "$symbols" | grep -q "^$name "; then
        echo "$name is declared in $records, but not exported" >&2
        status=1
    fi
done
exit $status
