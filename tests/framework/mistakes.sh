#!/usr/bin/env bash
# Mistakes in a module that must not compile: the first error has to name each of them.
#   mistakes.sh COMPILER INCLUDE_DIRECTORY
set -euo pipefail
compiler=$1 include=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

expect() {  # MESSAGE CODE
    cat >"$folder/module.cpp" <<END
#define MODULE probe
#include "framework/module.h"
#include "framework/write.h"
namespace switchmib::MODULE {
MODULE_OID(kVendor, 1);
struct Record { std::uint32_t number; };
Error write_text(Set& set) {
    InterfaceKey row;
    TRY(set.row(row));
    return set.sub("no text");
}
TABLE(probeTable, PROBETABLE, 1, 1);
$2
}
END
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I"$include" -DSWITCHMIB_VENDOR_ENTERPRISE=1 \
        -DSWITCHMIB_SECOND_ENTERPRISE=1 "$folder/module.cpp" >"$folder/log" 2>&1 || true
    local first
    first=$(grep -m1 'error:' "$folder/log" || echo 'it compiles')
    case $first in
        *"$1"*) ;;
        *) printf 'expected: %s\nof:       %s\ngot:      %s\n\n' "$1" "$2" "$first"; failed=1 ;;
    esac
}
table() { echo "constexpr Table<InterfaceKey> probeTable{.id = PROBETABLE, $1};"; }
columns() { table ".command = \"show %d\", .columns = {$1}"; }

expect nodiscard 'Error write_other(Set& set) { set.sub("x"); return noError; }'
expect mistake_a_read_only_object_has_a_write_method "$(columns '{1, "text", OctetString, ReadOnly, WRITER(write_text)}')"
expect mistake_the_write_method_is_named_after_another_object \
    "$(columns '{1, "name", OctetString, ReadWrite, WRITER(write_text)}')"
expect mistake_the_column_numbers_do_not_ascend "$(columns '{2, "b", Integer, ReadOnly}, {1, "a", Integer, ReadOnly}')"
expect mistake_the_column_numbers_do_not_ascend "$(columns '{1, "b", Integer, ReadOnly}, {1, "a", Integer, ReadOnly}')"
expect mistake_a_column_cannot_compute_its_value_give_the_table_a_fetch \
    "$(columns '{1, "a", Integer, ReadOnly, computes(constant<1>)}')"
expect mistake_a_table_that_answers_has_a_command_or_a_fetch "$(table '.columns = {{1, "a", Integer, ReadOnly}}')"
expect mistake_a_table_with_a_record_says_how_to_take_it 'constexpr Table<InterfaceKey, Record> probeTable{
    .id = PROBETABLE, .command = "show %d", .columns = {{1, "a", Integer, ReadOnly}}};'
expect "the kinds of the key's \`index\` are not those of its fields" 'struct Key {
    std::uint32_t number;
    Mac mac;
    static constexpr Kind index[] = {Kind::mac, Kind::integer};
};
constexpr KeyShape shape = shape_of<Key>;'
expect 'a function goes into a row as WRITER(function)' "$(columns '{1, "text", OctetString, ReadWrite, write_text}')"
expect 'a row is {number, name, type, access, writer, source}' "$(columns '{1, "a", ReadOnly, Integer}')"
expect 'a function of a table takes the table' \
    "$(table '.accepts = [](VlanKey&, const Read&) { return true; }, .command = "show %d", .columns = {{1, "a", Integer, ReadOnly}}')"
expect "a command's function is Command(const Key&)" \
    "$(table '.command = [](const VlanKey&) { return Command("x"); }, .columns = {{1, "a", Integer, ReadOnly}}')"
expect mistake_a_command_without_a_function_has_one_percent_d \
    "$(table '.command = "show %d %d", .columns = {{1, "a", Integer, ReadOnly}}')"
expect 'another number of objects than registered' "$(columns '{1, "a", Integer, ReadOnly}') MODULE_END(2, probeTable);"
exit $failed
