// The read path: a read method for each scalar group and table, and a write method for each writable object, made from
// their data. The steps are here once; what a table does not use, its read method does not hold.
#pragma once

#include "framework/table.h"
#include "framework/write.h"

#include <array>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace switchmib {

// The object of a group by its place, from 0.
template <const auto& group, std::size_t at>
inline constexpr const auto& object_of = *(group.objects().begin() + at);

// The name that a write method gives the host for its requests.
template <const auto& group, std::size_t at>
inline constexpr auto caller_of = [] {
    constexpr std::string_view prefix = "write_", name = object_of<group, at>.name;
    std::array<char, prefix.size() + name.size() + 1> caller{};
    prefix.copy(caller.data(), prefix.size());
    name.copy(caller.data() + prefix.size(), name.size());
    return caller;
}();

template <const auto& group, std::size_t at>
int write_method(int phase, unsigned char* value, unsigned char type, std::size_t length, unsigned char* state,
                 oid* name, std::size_t name_length) {
    constexpr const auto& object = object_of<group, at>;
    constexpr const Writer& writer = object.writer;
    Set set{phase, value, type, length, state, name, name_length, writer.name, nullptr};
    if constexpr (writer.name == nullptr && writer.kind == Writer::function) set.caller = caller_of<group, at>.data();
    if constexpr (requires { group.id; }) set.table = &group.id;
    if constexpr (writer.kind == Writer::function)
        return writer.write(set);
    else
        return refuse(writer.refused, object.type, set);
}

// What the read path needs of each object of a group, by magic from 1.
struct Cell {
    WriteMethod* writer;
    bool clears;
    Source source;
};
template <const auto& group>
inline constexpr auto cells_of = []<std::size_t... at>(std::index_sequence<at...>) {
    constexpr auto cell = []<std::size_t i>() {
        constexpr const auto& object = object_of<group, i>;
        Cell made{nullptr, object.writer.kind == Writer::clear, object.source};
        if constexpr (object.writer.kind == Writer::function || object.writer.kind == Writer::refusal)
            made.writer = write_method<group, i>;
        return made;
    };
    return std::array<Cell, sizeof...(at)>{cell.template operator()<at>()...};
}
(std::make_index_sequence<group.objects().size()>());

// The object that the entry's magic names, null outside the group.
template <const auto& group>
const Cell* cell(const Read& read) {
    const std::size_t magic = read.entry->magic;
    return magic >= 1 && magic <= cells_of<group>.size() ? &cells_of<group>[magic - 1] : nullptr;
}

inline void hand_out(const Cell& cell, const Read& read) {
    if (cell.writer != nullptr || cell.clears) *read.write_method = cell.writer;
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
                                            row.index_count, group.group_name(), group.line);
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
    hand_out(*scalar, read);
    const Source& source = scalar->source;
    if (!source.answers) return nullptr;
    if (source.value != nullptr) return source.value(read);
    if (source.command == nullptr && group.command != nullptr) return show<group>(read, group.command(read), {});
    return show<group>(read, source.command != nullptr ? source.command : group.text, {});
}

// Asks the backend for a column of a row; false when there is nothing to ask.
template <const auto& table, class Key>
[[gnu::always_inline]] inline bool show_row(const Read& read, const Cell* column, Key& key, const Row& row,
                                            unsigned char*& value) {
    if constexpr (table.traces()) {
        const Command command = table.command(key, read);
        if (command.refused()) return false;
        table.formed(read, table.id.name, command);
        if (column == nullptr) return false;
        hand_out(*column, read);
        if (!column->source.answers) return false;
        value = show<table>(read, column->source.command != nullptr ? column->source.command : command.c_str(), row);
    } else if (column->source.command != nullptr) {
        value = show<table>(read, column->source.command, row);
    } else if (table.command.asks_for_first(key)) {
        value = show<table>(read, table.command.first, row);
    } else {
        const Command command = table.command(key, read);
        if (command.refused()) return false;
        value = show<table>(read, command, row);
    }
    return true;
}

template <const auto& table>
[[gnu::always_inline]] inline unsigned char* read_row(const Read& read) {
    using Key = typename std::remove_cvref_t<decltype(table)>::KeyType;
    using Record = typename std::remove_cvref_t<decltype(table)>::RecordType;
    const VariableEntry& entry = *read.entry;

    Key key;
    std::memset(&key, 0, sizeof key);
    const int parsed =
        parse_index(entry.name, entry.namelen, read.name, read.name_length, shape_of<Key>, &key, read.exact);
    if (parsed < 0) {
        if (table.bad_index != nullptr) table.bad_index(read, table.id.name, parsed);
        return nullptr;
    }
    if (table.accepts != nullptr && !table.accepts(key, read)) return nullptr;

    const Cell* column = cell<table>(read);
    if constexpr (!table.traces()) {
        if (column == nullptr) return nullptr;
        hand_out(*column, read);
        if (!column->source.answers) return nullptr;
    }

    unsigned char* value = nullptr;
    if constexpr (table.fetch != nullptr) {
        value = table.fetch(key, read, column->source.detail);
    } else {
        Row row{&key, sizeof key, read.exact, 0};
        if (table.counts_index) row.index_count = static_cast<int>(*read.name_length) - entry.namelen;
        if constexpr (std::is_same_v<Record, NoRecord>) {
            if (!show_row<table>(read, column, key, row, value)) return nullptr;
        } else {
            Record record{};
            if (table.fill != nullptr) table.fill(key, record);
            row.key = &record;
            row.size = sizeof record;
            if (!show_row<table>(read, column, key, row, value)) return nullptr;
            if (value != nullptr && !read.exact) table.take(record, key);
        }
        if (table.shown != nullptr) table.shown(read, table.id.name, key, value != nullptr);
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
            if (const Cell* column = cell<group>(read)) hand_out(*column, read);
            return nullptr;
        }
    };
}

}  // namespace switchmib
