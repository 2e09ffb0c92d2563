// What a scalar group and a table are: constant data, a row for every object. The variable table, the read methods, the
// listing and the tests follow from it.
//
// Objects stand in the order of their magic numbers, which count from 1 within each group.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/index.h"
#include "framework/snmp.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace switchmib {

// One GET or GETNEXT, as the host asked it.
struct Read {
    const VariableEntry* entry;
    oid* name;
    std::size_t* name_length;
    int exact;  // 1 for GET and SET, 0 for GETNEXT
    std::size_t* value_length;
    WriteMethod** write_method;
};

// Sub-identifiers from a short list.
struct SubIds {
    std::uint8_t length = 0;
    oid ids[6] = {};

    constexpr SubIds(std::initializer_list<oid> list) {
        for (const oid id : list) ids[length++] = id;
    }
};

// A table's exported `<TABLE>_oid`: its entry OID and a column slot, which every write fills.
struct TableId {
    SubIds entry;  // under the module OID
    oid* oids;     // full, with the column slot last
    std::size_t length;
};

// What a read leaves in the write-method slot: nothing of its own, a method, or a cleared slot.
struct Writer {
    WriteMethod* method = nullptr;
    bool clears = false;
};
inline constexpr Writer cleared{nullptr, true};

// Where an object's value comes from.
using ValueMethod = unsigned char*(const Read&);
struct Source {
    bool answers = true;
    const char* command = nullptr;  // the object's own show command, in place of its group's
    ValueMethod* value = nullptr;   // computed here: returns the value and sets its length, or null
};
inline constexpr Source never{.answers = false};
constexpr Source shows(const char* command) { return {.command = command}; }
constexpr Source computes(ValueMethod* value) { return {.value = value}; }

// A scalar (its sub-identifiers under the module, without the instance) or a column (its number).
template <class Id>
struct Object {
    Id id;
    const char* name;
    Asn type;
    Access access;
    Writer writer;
    Source source;

    constexpr Object(Id object, const char* text, Asn tag, Access rights, Writer method = {}, Source origin = {})
        : id(object), name(text), type(tag), access(rights), writer(method), source(origin) {}
    constexpr Object(Id object, const char* text, Asn tag, Access rights, Source origin)
        : Object(object, text, tag, rights, {}, origin) {}
};
using Scalar = Object<SubIds>;
using Column = Object<oid>;

// A module's own result buffer. Without one, values come in the host's.
struct Result {
    unsigned char* buffer = nullptr;
    int size = sizeof ret_value;
};

struct Scalars {
    const char* name;  // what the backend is asked for, "switchPortMIBGlobals"
    // The group's show command: a text, or a function of the request. Objects may have their own.
    const char* text = "";
    Command (*command)(const Read&) = nullptr;
    void (*unmatched)(const Read&) = nullptr;  // told of a request for none of the scalars
    Result result = {};
    std::initializer_list<Scalar> scalars;
    int line = __builtin_LINE();

    constexpr const auto& objects() const { return scalars; }
    template <class Visit>
    constexpr void for_each_sub_id(const Scalar& scalar, Visit visit) const {
        for (int i = 0; i < scalar.id.length; ++i) visit(scalar.id.ids[i]);
    }
};

// The show command of a row. A function that also takes the request may force fields of the key, trace, or answer
// no_answer; the write method is handed out by then, so where it must not be, `accepts` is the place to refuse.
template <class Key>
struct RowCommand {
    Command (*of_key)(const Key&) = nullptr;
    Command (*of_request)(Key&, const Read&) = nullptr;

    constexpr RowCommand() = default;
    template <class Function>
    constexpr RowCommand(Function function) {
        if constexpr (std::is_invocable_v<Function, Key&, const Read&>)
            of_request = function;
        else
            of_key = function;
    }
    Command operator()(Key& key, const Read& read) const {
        return of_request != nullptr ? of_request(key, read) : of_key(key);
    }
};

// A row record that the show request gets in place of the key: filled before it, taken back after a GETNEXT.
struct NoRecord {};

// The key of a table that never answers.
struct NoKey {};

template <class Key, class Record = NoRecord>
struct Table {
    using KeyType = Key;
    using RecordType = Record;

    const char* name;  // what the backend is asked for
    TableId id;
    RowCommand<Key> command = {};
    // False: no value and no write method for this row.
    bool (*accepts)(Key&, const Read&) = nullptr;
    void (*fill)(const Key&, Record&) = nullptr;
    void (*take)(const Record&, Key&) = nullptr;
    // Answers in place of the backend: returns the value and sets its length, and moves the key for a GETNEXT.
    unsigned char* (*fetch)(Key&, const Read&) = nullptr;
    bool traces = false;  // its command is formed, and traced, for every column, served or not
    void (*bad_index)(const Read&, int result) = nullptr;  // told the result of a parse that failed
    // Told whether the backend answered, and the key of the row that it answered.
    void (*shown)(const Read&, const Key&, bool answered) = nullptr;
    Result result = {};
    std::uint64_t request_class = 2;
    bool counts_index = false;  // the show request tells how many index sub-identifiers were given
    bool answers = true;        // false: registered, but no column ever answers and no index is parsed
    std::initializer_list<Column> columns;
    int line = __builtin_LINE();

    constexpr const auto& objects() const { return columns; }
    template <class Visit>
    constexpr void for_each_sub_id(const Column& column, Visit visit) const {
        for (int i = 0; i < id.entry.length; ++i) visit(id.entry.ids[i]);
        visit(column.id);
    }
};

}  // namespace switchmib
