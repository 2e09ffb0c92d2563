// The read path: a read method for each scalar group and table, made from its data. The steps stand here once; what a
// table doesn't use, its read method doesn't hold.
#pragma once

#include "framework/table.h"

#include <array>

namespace switchmib {

// One object, as the read path needs it.
struct Cell {
    Writer writer;
    Source source;
};

// A scalar group or table without its types.
struct Group {
    const char* name;
    const Cell* cells;  // by magic, from 1
    std::size_t count;
    Result result;
    int line;
    const char* text = "";
    Command (*scalar_command)(const Read&) = nullptr;
    void (*unmatched)(const Read&) = nullptr;

    const KeyShape* shape = nullptr;
    Command (*row_command)(void* key, const Read&) = nullptr;
    bool (*accepts)(void* key, const Read&) = nullptr;
    std::size_t record_size = 0;
    void (*fill)(const void* key, void* record) = nullptr;
    void (*take)(const void* record, void* key) = nullptr;
    unsigned char* (*fetch)(void* key, const Read&) = nullptr;
    bool traces = false;
    void (*bad_index)(const Read&, int result) = nullptr;
    void (*shown)(const Read&, const void* key, bool answered) = nullptr;
    std::uint64_t request_class = 2;
    bool counts_index = false;
};

// The object that the entry's magic names, null outside the group.
inline const Cell* cell(const Group& group, const Read& read) {
    const std::size_t magic = read.entry->magic;
    return magic >= 1 && magic <= group.count ? &group.cells[magic - 1] : nullptr;
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
inline unsigned char* show(const Group& group, const Read& read, const char* command, const Row& row) {
    unsigned char* buffer = group.result.buffer != nullptr ? group.result.buffer : ret_value;
    const int refused = uib_sh_show_request(group.request_class, command, buffer, group.result.size, read.value_length,
                                            row.key, static_cast<int>(row.size), read.entry->magic, row.exact,
                                            row.index_count, group.name, group.line);
    return refused ? nullptr : buffer;
}

template <const Group& group>
unsigned char* read_scalar(const Read& read) {
    if (header_generic(read.entry, read.name, read.name_length, read.exact, read.value_length, read.write_method)) {
        if (group.unmatched != nullptr) group.unmatched(read);
        return nullptr;
    }
    const Cell* scalar = cell(group, read);
    if (scalar == nullptr) return nullptr;
    hand_out(scalar->writer, read);
    const Source& source = scalar->source;
    if (!source.answers) return nullptr;
    if (source.value != nullptr) return source.value(read);
    if (source.command == nullptr && group.scalar_command != nullptr)
        return show(group, read, group.scalar_command(read), {});
    return show(group, read, source.command != nullptr ? source.command : group.text, {});
}

template <const Group& table>
unsigned char* read_row(const Read& read) {
    const VariableEntry& entry = *read.entry;
    constexpr const KeyShape& shape = *table.shape;
    alignas(8) unsigned char key[table.shape->size] = {};
    const int parsed = parse_index(entry.name, entry.namelen, read.name, read.name_length, shape, key, read.exact);
    if (parsed < 0) {
        if (table.bad_index != nullptr) table.bad_index(read, parsed);
        return nullptr;
    }
    if (table.accepts != nullptr && !table.accepts(key, read)) return nullptr;

    const Cell* column = cell(table, read);
    if (column != nullptr) hand_out(column->writer, read);
    const bool answers = column != nullptr && column->source.answers;
    if (!answers && !table.traces) return nullptr;

    unsigned char* value = nullptr;
    if (table.fetch != nullptr) {
        value = answers ? table.fetch(key, read) : nullptr;
    } else {
        alignas(8) unsigned char record[table.record_size + 1] = {};
        Row row{key, shape.size, read.exact, 0};
        if (table.counts_index) row.index_count = static_cast<int>(*read.name_length) - entry.namelen;
        if (table.record_size != 0) {
            if (table.fill != nullptr) table.fill(key, record);
            row.key = record;
            row.size = table.record_size;
        }
        if (answers && column->source.command != nullptr) {
            value = show(table, read, column->source.command, row);
        } else {
            const Command command = table.row_command(key, read);
            if (!answers || command.refused()) return nullptr;
            value = show(table, read, command, row);
        }
        if (value != nullptr && !read.exact && table.record_size != 0) table.take(record, key);
        if (table.shown != nullptr) table.shown(read, key, value != nullptr);
    }
    if (value != nullptr && !read.exact) build_name(entry.name, entry.namelen, read.name, read.name_length, shape, key);
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

// A table without answers: the write method is all that it has.
inline unsigned char* read_nothing(const Group& table, const Read& read) {
    if (const Cell* column = cell(table, read)) hand_out(column->writer, read);
    return nullptr;
}

template <const auto& group>
inline constexpr auto cells_of = [] {
    std::array<Cell, group.objects().size()> cells{};
    std::size_t at = 0;
    for (const auto& object : group.objects()) cells[at++] = {object.writer, object.source};
    return cells;
}();

template <const Scalars& scalars>
consteval Group group_of_scalars() {
    return {.name = scalars.name,
            .cells = cells_of<scalars>.data(),
            .count = cells_of<scalars>.size(),
            .result = scalars.result,
            .line = scalars.line,
            .text = scalars.text,
            .scalar_command = scalars.command,
            .unmatched = scalars.unmatched};
}

template <const auto& table>
consteval Group group_of_table() {
    using Type = std::remove_cvref_t<decltype(table)>;
    using Key = typename Type::KeyType;
    using Record = typename Type::RecordType;
    Group group{.name = table.name,
                .cells = cells_of<table>.data(),
                .count = cells_of<table>.size(),
                .result = table.result,
                .line = table.line,
                .traces = table.traces,
                .bad_index = table.bad_index,
                .request_class = table.request_class,
                .counts_index = table.counts_index};
    if constexpr (table.answers) group.shape = &shape_of<Key>;
    if constexpr (table.command.of_request != nullptr)
        group.row_command = [](void* key, const Read& read) {
            return table.command.of_request(*static_cast<Key*>(key), read);
        };
    else if constexpr (table.command.of_key != nullptr)
        group.row_command = [](void* key, const Read&) { return table.command.of_key(*static_cast<const Key*>(key)); };
    if constexpr (table.accepts != nullptr)
        group.accepts = [](void* key, const Read& read) { return table.accepts(*static_cast<Key*>(key), read); };
    if constexpr (table.fetch != nullptr)
        group.fetch = [](void* key, const Read& read) { return table.fetch(*static_cast<Key*>(key), read); };
    if constexpr (table.shown != nullptr)
        group.shown = [](const Read& read, const void* key, bool answered) {
            table.shown(read, *static_cast<const Key*>(key), answered);
        };
    if constexpr (!std::is_same_v<Record, NoRecord>) {
        group.record_size = sizeof(Record);
        if constexpr (table.fill != nullptr)
            group.fill = [](const void* key, void* record) {
                table.fill(*static_cast<const Key*>(key), *static_cast<Record*>(record));
            };
        group.take = [](const void* record, void* key) {
            table.take(*static_cast<const Record*>(record), *static_cast<Key*>(key));
        };
    }
    return group;
}

template <const Scalars& scalars>
inline constexpr Group scalars_of = group_of_scalars<scalars>();
template <const auto& table>
inline constexpr Group table_of = group_of_table<table>();

// The read method of a scalar group or table.
template <const auto& group>
consteval ReadMethod* read_method() {
    return [](const VariableEntry* entry, oid* name, std::size_t* name_length, int exact, std::size_t* value_length,
              WriteMethod** write_method) -> unsigned char* {
        const Read read{entry, name, name_length, exact, value_length, write_method};
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(group)>, Scalars>)
            return read_scalar<scalars_of<group>>(read);
        else if constexpr (group.answers)
            return read_row<table_of<group>>(read);
        else
            return read_nothing(table_of<group>, read);
    };
}

}  // namespace switchmib
