// The table store: answers show requests for any table, GET and GETNEXT in index order, from tables that are data.
#pragma once

#include "services/services.h"
#include "switch/grammar.h"
#include "switch/key.h"
#include "switch/values.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sw {

// --- Rows ------------------------------------------------------------------------------------------------------------

// A column of rows that are `Row`s: its magic number, its object's name, and where its value comes from: a member, a
// member function, a function of the row, of the row and its index (as the area keeps it) or of nothing, or a constant. See value_of() for
// what these become; an absent value is that of a row that does not have the object, and a walk passes over it.
template <class Row>
struct Column {
    int magic;
    std::string name;
    std::function<std::optional<Value>(const Row&, const Index&)> value;

    template <class Source>
    Column(int its_magic, std::string its_name, Source source) : magic(its_magic), name(std::move(its_name)) {
        value = [source](const Row& row, const Index& index) -> std::optional<Value> {
            if constexpr (std::is_invocable_v<Source, const Row&, const Index&>)
                return value_of(std::invoke(source, row, index));
            else if constexpr (std::is_invocable_v<Source, const Row&>)
                return value_of(std::invoke(source, row));
            else if constexpr (std::is_invocable_v<Source>)
                return value_of(source());
            else
                return value_of(source);
        };
    }
};
template <class Row>
using Columns = std::vector<Column<Row>>;

// The index's own sub-identifier, by its place.
inline auto from_index(std::size_t place = 0) {
    return [place](const auto&, const Index& index) { return index[place]; };
}
// A flag as 0 or 1, where a table does not have a TruthValue.
template <class Member>
auto zero_or_one(Member flag) {
    return [flag](const auto& row) { return std::invoke(flag, row) ? 1 : 0; };
}

// A count of the row and its index as Counter64.
template <class Count>
auto wide(Count count) {
    return [count](const auto& row, const Index& index) { return counter64(count(row, index)); };
}

struct Answer {
    Index index;
    Value value;
};

// A table's rows with their columns, whatever the rows are made of.
class Rows {
public:
    struct Object {
        int magic;
        std::string name;
    };
    // The value of a column, by its place among the objects, in the first row at or after the index that has one; if
    // `exact`, in the row of the index or in none.
    using Find = std::function<std::optional<Answer>(std::size_t column, const Index& index, bool exact)>;

    Rows(std::vector<Object> objects, Find find) : objects_(std::move(objects)), find_(std::move(find)) {}

    const std::vector<Object>& objects() const { return objects_; }
    std::optional<Answer> at(std::size_t column, const Index& index) const { return find_(column, index, true); }
    std::optional<Answer> from(std::size_t column, const Index& index) const { return find_(column, index, false); }
    std::optional<Answer> after(std::size_t column, Index index) const {
        index.push_back(0);  // nothing sorts between
        return find_(column, index, false);
    }

    // The same rows under another index:
    Rows under(Index before) const;                          // with these sub-identifiers before their own
    Rows ending(Index after, std::size_t length = 1) const;  // with these after their own, which are so many
    // Only those whose first sub-identifier is low to high, with `less` subtracted from it.
    Rows within(oid low, oid high, oid less = 0) const;

private:
    std::vector<Object> objects_;
    Find find_;
};

template <class Row>
std::vector<Rows::Object> objects_of(const Columns<Row>& columns) {
    std::vector<Rows::Object> objects;
    for (const Column<Row>& column : columns) objects.push_back({column.magic, column.name});
    return objects;
}

// Where an index is in a map by one number, or by whole indexes.
template <class Row>
auto lower_bound(const std::map<std::uint32_t, Row>& map, const Index& index) {
    if (index.empty()) return map.begin();
    return index.size() == 1 ? map.lower_bound(index.front()) : map.upper_bound(index.front());
}
template <class Row>
auto lower_bound(const std::map<Index, Row>& map, const Index& index) {
    return map.lower_bound(index);
}
inline Index to_index(std::uint32_t number) { return {number}; }
inline Index to_index(const Index& index) { return index; }
inline bool is_index(std::uint32_t number, const Index& index) { return index.size() == 1 && index.front() == number; }
inline bool is_index(const Index& key, const Index& index) { return key == index; }

// The rows that an area keeps in a map by their one number or by their index; the map must outlive them.
template <class Key, class Row>
Rows rows_of(const std::map<Key, Row>& map, std::type_identity_t<Columns<Row>> columns) {
    std::vector<Rows::Object> objects = objects_of(columns);
    return {std::move(objects),
            [&map, columns = std::move(columns)](std::size_t column, const Index& index,
                                                 bool exact) -> std::optional<Answer> {
                for (auto row = lower_bound(map, index); row != map.end(); ++row) {
                    if (exact && !is_index(row->first, index)) return {};
                    Index its_index = to_index(row->first);
                    if (std::optional<Value> value = columns[column].value(row->second, its_index))
                        return Answer{std::move(its_index), std::move(*value)};
                    if (exact) return {};
                }
                return {};
            }};
}
template <class Key, class Row>
Rows rows_of(std::map<Key, Row>&& constant, std::type_identity_t<Columns<Row>> columns) {
    auto map = std::make_shared<std::map<Key, Row>>(std::move(constant));
    Rows rows = rows_of(*map, std::move(columns));
    return {rows.objects(), [map, rows](std::size_t column, const Index& index, bool exact) {
                return exact ? rows.at(column, index) : rows.from(column, index);
            }};
}

// Rows that are computed from several areas: `from` finds the first one at or after an index.
template <class Row>
using FindRow = std::function<std::optional<std::pair<Index, Row>>(const Index&)>;
template <class Row>
Rows rows_from(FindRow<Row> from, Columns<Row> columns) {
    std::vector<Rows::Object> objects = objects_of(columns);
    return {std::move(objects),
            [from = std::move(from), columns = std::move(columns)](std::size_t column, Index index,
                                                                   bool exact) -> std::optional<Answer> {
                while (auto row = from(index)) {
                    if (exact && row->first != index) return {};
                    if (std::optional<Value> value = columns[column].value(row->second, row->first))
                        return Answer{std::move(row->first), std::move(*value)};
                    if (exact) return {};
                    index = std::move(row->first);
                    index.push_back(0);
                }
                return {};
            }};
}

// --- Tables ----------------------------------------------------------------------------------------------------------

// Where a request's key record is not its row's index: the command alone says which row is meant, and an answer to a
// GETNEXT fills the record. Without `row` it is the index.
using LookedUp = std::function<std::optional<Index>(const Arguments&)>;
struct Record {
    LookedUp row;                                          // none: the command's words contradict each other
    std::function<void(const Index&, void* record)> fill;  // the record is all zeros before
};

// A table as show requests name it.
struct Table {
    std::string name;
    // The pattern of its command. Numbers, MAC addresses, octets, addresses and prefixes in it are compared with the
    // parts of the key, in the order of the index or as they are tagged ("host {int:1} {int:3} {address:4} {int:2}").
    // Key parts in brackets are absent when they are zero: "show vlan [{int}]" is "show vlan" for the first row.
    std::string show;
    KeyLayout key{kInteger};
    Rows rows;
    // The sub-identifiers that come before the key in the rows' own index, by the other words of the command ("vrf
    // {word}"); none: the words contradict each other. A walk stays within them.
    std::function<std::optional<Index>(const Arguments&)> scope{};
    // Whether words that the store cannot compare fit the index.
    std::function<bool(const Index&, const Arguments&)> agrees{};
    // The key's address type is forced, and the command has the address that was asked for, of whatever type.
    bool forced_type = false;
    std::uint64_t request_class = 2;
    Record record{};
};

// One object of a scalar group: its magic number, its name, and where its value comes from: a pointer to a fact, a
// function, also one of the command's other words, or a constant.
struct Scalar {
    int magic;
    std::string name;
    std::function<std::optional<Value>(const Arguments&)> value;
    std::string show;  // the pattern of its own command; empty: the group's

    template <class Source>
    Scalar(int its_magic, std::string its_name, Source source, std::string its_show = {})
        : magic(its_magic), name(std::move(its_name)), show(std::move(its_show)) {
        value = [source](const Arguments& said) -> std::optional<Value> {
            if constexpr (std::is_invocable_v<Source, const Arguments&>)
                return value_of(source(said));
            else if constexpr (std::is_invocable_v<Source>)
                return value_of(source());
            else if constexpr (std::is_pointer_v<Source> && !std::is_convertible_v<Source, std::string_view>)
                return value_of(*source);
            else
                return value_of(source);
        };
    }
};

class TableStore {
public:
    // `log` takes a line for every refused request; none: they are dropped. A row that is not there is no refusal.
    explicit TableStore(std::function<void(const std::string&)> log) : log_(std::move(log)) {}

    // Throws std::invalid_argument for a table whose pattern does not fit its key.
    void add(Table table);
    // What writers ask for without a key: the numbers and MAC addresses of the command are the row's index, or what `row`
    // makes of the command. It is known by its command, whatever the name that asks for it.
    void add_lookup(std::string show, Rows rows, LookedUp row = {});
    // Adds objects to a group. `show` is the command of those that have none of their own.
    void add(const std::string& group, const std::string& show, std::vector<Scalar> scalars);

    // True: the request is answered, its key moved to the answered row if it is a GETNEXT.
    bool show(services::ShowRequest& request) const;

    struct Served {
        std::string group;  // the table or scalar group
        int magic;
        std::string name;
    };
    // Every column and scalar; lookups are none.
    std::vector<Served> served() const;

private:
    // A place of the command that is compared with a part of the key.
    struct Comparison {
        std::size_t argument;
        std::size_t part;
        oid added;
        std::size_t first_of_bracket;  // its bracket's first comparison; none: npos
    };
    struct Entry {
        Table table;
        Pattern pattern;
        std::vector<Comparison> comparisons;
    };
    struct GroupEntry {
        Scalar scalar;
        Pattern pattern;
    };
    using Group = std::vector<GroupEntry>;
    const Entry* entry_for(const services::ShowRequest& request) const;  // null: there is none
    // The answer, or none with the reason in `refusal`, which stays empty where there is just no such row.
    static std::optional<Answer> find(const Entry& entry, const services::ShowRequest& request, std::string& refusal);
    static std::optional<Answer> find(const Group& group, const services::ShowRequest& request, std::string& refusal);
    static bool agree(const Entry& entry, Index& index, const Arguments& arguments);
    static std::vector<Comparison> comparisons(const Table& table, const Pattern& pattern);

    std::function<void(const std::string&)> log_;
    std::unordered_map<std::string, Entry> tables_;
    std::vector<Entry> lookups_;
    std::unordered_map<std::string, Group> groups_;
};

}  // namespace sw
