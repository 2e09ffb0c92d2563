// The read path: a read method for each scalar group and table, made from its data. The steps stand here once; what a
// table doesn't use, its read method doesn't hold.
#pragma once

#include "framework/table.h"

#include <array>
#include <cstring>
#include <type_traits>

namespace switchmib {

// What the read path needs of each object of a group, by magic from 1.
struct Cell {
    Writer writer;
    Source source;
};
template <const auto& group>
inline constexpr auto cells_of = [] {
    std::array<Cell, group.objects().size()> cells{};
    std::size_t at = 0;
    for (const auto& object : group.objects()) cells[at++] = {object.writer, object.source};
    return cells;
}();

// The object that the entry's magic names, null outside the group.
template <const auto& group>
const Cell* cell(const Read& read) {
    const std::size_t magic = read.entry->magic;
    return magic >= 1 && magic <= cells_of<group>.size() ? &cells_of<group>[magic - 1] : nullptr;
}

inline void hand_out(const Writer& writer, const Read& read) {
    if (writer.method != nullptr || writer.clears) *read.write_method = writer.method;
}

// What a show request says of the row; nothing for a scalar.
struct Row {
    void* key = nullptr;
    std::size_t size = 0;
    int exact = 1;
    int index_count = 0;
};

// The value, null when the backend has no such row.
template <const auto& group>
unsigned char* show(const Read& read, const char* command, const Row& row) {
    unsigned char* buffer = group.result.buffer != nullptr ? group.result.buffer : ret_value;
    std::uint64_t request_class = 2;
    if constexpr (requires { group.request_class; }) request_class = group.request_class;
    const int refused = uib_sh_show_request(request_class, command, buffer, group.result.size, read.value_length,
                                            row.key, static_cast<int>(row.size), read.entry->magic, row.exact,
                                            row.index_count, group.name, group.line);
    return refused ? nullptr : buffer;
}

// The steps of a group and of a table; inline, for each has one caller.
template <const Scalars& group>
[[gnu::always_inline]] inline unsigned char* read_scalar(const Read& read) {
    if (header_generic(read.entry, read.name, read.name_length, read.exact, read.value_length, read.write_method)) {
        if (group.unmatched != nullptr) group.unmatched(read);
        return nullptr;
    }
    const Cell* scalar = cell<group>(read);
    if (scalar == nullptr) return nullptr;
    hand_out(scalar->writer, read);
    const Source& source = scalar->source;
    if (!source.answers) return nullptr;
    if (source.value != nullptr) return source.value(read);
    if (source.command == nullptr && group.command != nullptr) return show<group>(read, group.command(read), {});
    return show<group>(read, source.command != nullptr ? source.command : group.text, {});
}

template <const auto& table>
[[gnu::always_inline]] inline unsigned char* read_row(const Read& read) {
    using Key = typename std::remove_cvref_t<decltype(table)>::KeyType;
    using Record = typename std::remove_cvref_t<decltype(table)>::RecordType;
    constexpr bool kHasRecord = !std::is_same_v<Record, NoRecord>;
    const VariableEntry& entry = *read.entry;

    Key key;
    std::memset(&key, 0, sizeof key);
    const int parsed =
        parse_index(entry.name, entry.namelen, read.name, read.name_length, shape_of<Key>, &key, read.exact);
    if (parsed < 0) {
        if (table.bad_index != nullptr) table.bad_index(read, parsed);
        return nullptr;
    }
    if (table.accepts != nullptr && !table.accepts(key, read)) return nullptr;

    const Cell* column = cell<table>(read);
    if (column != nullptr) hand_out(column->writer, read);
    const bool answers = column != nullptr && column->source.answers;
    if (!answers && !table.traces) return nullptr;

    unsigned char* value = nullptr;
    if (table.fetch != nullptr) {
        value = answers ? table.fetch(key, read) : nullptr;
    } else {
        Record record{};
        Row row{&key, sizeof key, read.exact, 0};
        if (table.counts_index) row.index_count = static_cast<int>(*read.name_length) - entry.namelen;
        if constexpr (kHasRecord) {
            if (table.fill != nullptr) table.fill(key, record);
            row.key = &record;
            row.size = sizeof record;
        }
        if (answers && column->source.command != nullptr) {
            value = show<table>(read, column->source.command, row);
        } else {
            const Command command = table.command(key, read);
            if (!answers || command.refused()) return nullptr;
            value = show<table>(read, command, row);
        }
        if constexpr (kHasRecord)
            if (value != nullptr && !read.exact) table.take(record, key);
        if (table.shown != nullptr) table.shown(read, key, value != nullptr);
    }
    if (value != nullptr && !read.exact)
        build_name(entry.name, entry.namelen, read.name, read.name_length, shape_of<Key>, &key);
    return value;
}

// The value of a scalar that never changes, in a cell of its own; for `computes`.
template <std::int32_t value>
unsigned char* constant(const Read& read) {
    static std::int32_t cell;
    cell = value;
    *read.value_length = sizeof cell;
    return reinterpret_cast<unsigned char*>(&cell);
}

// The read method of a scalar group or table.
template <const auto& group>
consteval ReadMethod* read_method() {
    return [](const VariableEntry* entry, oid* name, std::size_t* name_length, int exact, std::size_t* value_length,
              WriteMethod** write_method) -> unsigned char* {
        const Read read{entry, name, name_length, exact, value_length, write_method};
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(group)>, Scalars>) {
            return read_scalar<group>(read);
        } else if constexpr (group.answers) {
            return read_row<group>(read);
        } else {  // the write method is all that the table has
            if (const Cell* column = cell<group>(read)) hand_out(column->writer, read);
            return nullptr;
        }
    };
}

}  // namespace switchmib
