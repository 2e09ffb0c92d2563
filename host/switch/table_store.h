// The table store: answers show requests for any table, GET and GETNEXT in index order, from tables that are data.
#pragma once

#include "services/services.h"
#include "switch/grammar.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace sw {

// A row's index as the sub-identifiers behind the column; rows stand in the order of these.
using Index = std::vector<oid>;
Index join(std::initializer_list<Index> parts);

// --- Keys ------------------------------------------------------------------------------------------------------------

// One index field of a key record, by its kind of index conversion.
struct Field {
    int kind;
    std::size_t octets = 0;  // of a fixed-size (0) or counted (14) string, whose kind doesn't say it
};

// A key record: its index fields one behind the other, laid out as a C struct. No field at all: a lookup without a key.
class KeyLayout {
public:
    KeyLayout() = default;
    // `size` is the record's, where it has more than the index fields; 0: just those. Throws std::invalid_argument for
    // a kind that has no place in a key.
    KeyLayout(std::initializer_list<Field> fields, std::size_t size = 0);

    std::size_t size() const { return size_; }
    Index encode(const void* key) const;
    // Clears the record and fills in its index fields.
    void decode(const Index& index, void* key) const;
    const Index& clear() const { return clear_; }  // index of an all-zero record

private:
    struct Placed {
        Field field;
        std::size_t offset;
    };
    std::vector<Placed> fields_;
    std::size_t size_ = 0;
    Index clear_;
};

// --- Values ----------------------------------------------------------------------------------------------------------

// A value as the library takes it: the octets of a number in machine order, of a text, of an OBJECT IDENTIFIER.
using Value = std::string;

Value number(std::uint32_t value);  // INTEGER, Gauge32, Counter32, TimeTicks
Value counter64(std::uint64_t value);
Value object_id(const Index& ids);
inline Value truth(bool value) { return number(value ? 1 : 2); }  // as well up and down, enabled and disabled

// --- Rows ------------------------------------------------------------------------------------------------------------

// How a row answers each column, by magic. None: this row has no such object, and a walk passes over it.
template <class Row>
using Columns = std::map<int, std::function<std::optional<Value>(const Row&)>>;

struct Answer {
    Index index;
    Value value;
};

// A table's rows with their columns, whatever the rows are made of.
struct Rows {
    std::vector<int> magics;  // the columns there are
    std::function<std::optional<Answer>(int magic, const Index& index)> at;
    std::function<std::optional<Answer>(int magic, const Index& index)> behind;  // the first one that sorts behind
};

// A map's key as an index, and back.
inline Index to_index(std::uint32_t number) { return {number}; }
inline Index to_index(const Index& index) { return index; }
inline void from_index(const Index& index, std::uint32_t& number) { number = index.empty() ? 0 : index.front(); }
inline void from_index(const Index& index, Index& key) { key = index; }

// The rows that a model keeps in a map by their one number or by their index; the map must outlive them.
template <class Key, class Row>
Rows rows_of(const std::map<Key, Row>& map, std::type_identity_t<Columns<Row>> columns) {
    Rows rows;
    for (const auto& column : columns) rows.magics.push_back(column.first);
    rows.at = [&map, columns](int magic, const Index& index) -> std::optional<Answer> {
        Key key;
        from_index(index, key);
        const auto row = map.find(key);
        if (row == map.end()) return {};
        std::optional<Value> value = columns.at(magic)(row->second);
        if (!value) return {};
        return Answer{index, std::move(*value)};
    };
    rows.behind = [&map, columns = std::move(columns)](int magic, const Index& index) -> std::optional<Answer> {
        Key key;
        from_index(index, key);
        const auto& column = columns.at(magic);
        for (auto row = map.upper_bound(key); row != map.end(); ++row)
            if (std::optional<Value> value = column(row->second))
                return Answer{to_index(row->first), std::move(*value)};
        return {};
    };
    return rows;
}

// Rows under another index, which has to sort as theirs does. Where `outer` has none for one of the rows, the table
// ends.
Rows translated(Rows rows, std::function<Index(const Index& outer)> inner,
                std::function<std::optional<Index>(const Index& inner)> outer);

// --- Tables ----------------------------------------------------------------------------------------------------------

// Where a request's key record is not its row's index: the command alone says which row is meant, and an answer to a
// GETNEXT fills the record.
struct Record {
    std::function<std::optional<Index>(const Arguments&)> row;  // none: the command's words contradict each other
    std::function<void(const Index&, void* record)> fill;       // the record is all zeros before
};

// A table, or a lookup of one row, as show requests name it. Commands are patterns.
struct Table {
    std::string name{};   // empty: a lookup, known by its command, whatever the name that asks for it
    std::string first{};  // the command for a clear key; empty: the keyed one serves it too
    std::string keyed;
    KeyLayout key{};
    Rows rows;
    // What the keyed command's numbers are for an index. Without a key it is the numbers that are the index.
    std::function<Index(const Index&)> arguments = [](const Index& index) { return index; };
    std::function<bool(const Index&)> is_first{};   // which keys the first command is for; none: a clear one
    std::optional<std::size_t> addresses_behind{};  // the keyed command spells the addresses behind that many numbers
    std::optional<Record> record{};
    bool clear_key_is_first_row = false;  // of an exact request; otherwise only a GETNEXT is answered so
};

// One object of a scalar group, with the command that it is shown by.
struct Scalar {
    int magic;
    std::string command;
    std::function<Value()> value;
};

class TableStore {
public:
    // `log` takes a line for every refused request; none: they are dropped. A row that isn't there is no refusal.
    explicit TableStore(std::function<void(const std::string&)> log) : log_(std::move(log)) {}

    void add(Table table);
    void add(const std::string& group, std::vector<Scalar> scalars);

    // True: the request is answered, its key moved to the answered row if it is a GETNEXT.
    bool show(services::ShowRequest& request) const;

private:
    struct Entry {
        Table table;
        Pattern first;
        Pattern keyed;
    };
    const Entry* entry_for(const services::ShowRequest& request) const;  // null: there is none
    // The answer, or none with the reason in `refusal`, which stays empty where there is just no such row.
    static std::optional<Answer> find(const Entry& entry, const services::ShowRequest& request, std::string& refusal);
    static std::optional<Answer> find(const std::vector<Scalar>& scalars, const services::ShowRequest& request,
                                      std::string& refusal);

    std::function<void(const std::string&)> log_;
    std::map<std::string, Entry> tables_;
    std::vector<Entry> lookups_;
    std::map<std::string, std::vector<Scalar>> groups_;
};

}  // namespace sw
