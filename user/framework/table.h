// What a scalar group and a table are: constant data, a row for every object. The variable table, the read methods, the
// listing and the tests follow from it.
//
// Objects are listed in the order of their magic numbers, which count from 1 within each group. A mistake in a row is
// named where the row is: the compiler complains about a function below whose name begins with `mistake_`.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/index.h"
#include "framework/snmp.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

namespace switchmib {

// Never defined: a constant that calls one of them does not compile, and the message has its name.
void mistake_a_read_only_object_has_a_write_method();
void mistake_the_write_method_is_named_after_another_object();
void mistake_a_column_cannot_compute_its_value_give_the_table_a_fetch();
void mistake_the_column_numbers_do_not_ascend();
void mistake_a_table_that_answers_has_a_command_or_a_fetch();
void mistake_a_table_with_a_record_says_how_to_take_it();
void mistake_a_table_without_a_record_does_not_fill_or_take();

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
    const char* name;  // "ifXTable": what the backend is asked for
    SubIds entry;      // under the module OID
    oid* oids;         // full, with the column slot last
    std::size_t length;
};

// --- Writers ---------------------------------------------------------------------------------------------------------

class Set;
using WriterFunction = Error(Set&);

// A write method that goes as far as its checks, and is then refused. It parses no index. The value has the row's type,
// and 4 octets unless that is OCTET STRING; a column's OID must reach into the table's columns.
struct Refusal {
    static constexpr int kTypesLength = -1, kAnyLength = -2;

    std::int32_t low = INT_MIN;
    std::int32_t high = INT_MAX;
    int length = kTypesLength;  // octets
    bool always = false;        // refused in every phase, not in ACTION alone
};

// What a read leaves in the write-method slot: nothing of its own, the write method of a function or of a refusal, or a
// cleared slot.
struct Writer {
    enum Kind : std::uint8_t { none, function, refusal, clear };
    Kind kind;
    WriterFunction* write;
    const char* name;  // of the function; null: it serves several objects, and has the name of each
    Refusal refused;

    constexpr Writer() : Writer(none) {}
    constexpr Writer(Kind what) : kind(what), write(nullptr), name(nullptr), refused{} {}
    constexpr Writer(WriterFunction* writer, const char* text) : kind(function), write(writer), name(text), refused{} {}
    constexpr Writer(const Refusal& terms) : kind(refusal), write(nullptr), name(nullptr), refused(terms) {}
};

// The write method of the function: `WRITER(write_ifAlias)` in the row of ifAlias.
#define WRITER(function) ::switchmib::Writer(function, #function)
// The same for a function that several objects share, and for an instance of a function template.
#define SHARED(...) ::switchmib::Writer([](::switchmib::Set& set) { return __VA_ARGS__(set); }, nullptr)

inline constexpr Writer cleared(Writer::clear);
constexpr Writer refuses(const Refusal& refusal = {}) { return refusal; }
constexpr Writer refuses(std::int32_t low, std::int32_t high) { return Refusal{low, high}; }

// --- Objects ---------------------------------------------------------------------------------------------------------

// Where an object's value comes from.
using ValueMethod = unsigned char*(const Read&);
struct Source {
    bool answers = true;
    const char* command = nullptr;  // the object's own show command, in place of its group's
    ValueMethod* value = nullptr;   // computed here: returns the value and sets its length, or null
    const void* detail = nullptr;   // what the table's `fetch` takes for this column
};
inline constexpr Source never{.answers = false};
constexpr Source shows(const char* command) { return {.command = command}; }
constexpr Source computes(ValueMethod* value) { return {.value = value}; }

template <class>
inline constexpr bool is_writer_function = false;
template <>
inline constexpr bool is_writer_function<Error (&)(Set&)> = true;

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

    // Anything else is a mistake that is named here.
    template <class... Wrong>
    constexpr Object(Id object, const char* text, Wrong&&...) : id(object), name(text), type{}, access{} {
        static_assert(!(is_writer_function<Wrong> || ...), "a function goes into a row as WRITER(function)");
        static_assert((is_writer_function<Wrong> || ...), "a row is {number, name, type, access, writer, source}");
    }

    // Called by the object's group: a mistake in the row does not compile.
    constexpr void check() const {
        const bool writes = writer.kind == Writer::function || writer.kind == Writer::refusal;
        if (access == ReadOnly && writes) mistake_a_read_only_object_has_a_write_method();
        if (writer.name != nullptr && !names(writer.name, name))
            mistake_the_write_method_is_named_after_another_object();
        if (std::is_same_v<Id, oid> && source.value != nullptr)
            mistake_a_column_cannot_compute_its_value_give_the_table_a_fetch();
    }

private:
    static constexpr bool names(const char* write_method, const char* object) {
        for (const char* prefix = "write_"; *prefix != '\0'; ++prefix, ++write_method)
            if (*write_method != *prefix) return false;
        for (; *object != '\0'; ++object, ++write_method)
            if (*write_method != *object) return false;
        return *write_method == '\0';
    }
};
using Scalar = Object<SubIds>;
using Column = Object<oid>;

// A module's own result buffer. Without one, values come in the host's.
struct Result {
    unsigned char* buffer = nullptr;
    int size = sizeof ret_value;

    constexpr Result() = default;
    template <std::size_t octets>
    constexpr Result(unsigned char (&own)[octets]) : buffer(own), size(octets) {}
};

struct Scalars {
    const char* name;  // what the backend is asked for, "switchPortMIBGlobals"
    // The group's show command: a text, or a function of the request. Objects may have their own.
    const char* text = "";
    Command (*command)(const Read&) = nullptr;
    void (*unmatched)(const Read&) = nullptr;  // called for a request for none of the scalars
    Result result = {};
    std::initializer_list<Scalar> scalars;
    int line = __builtin_LINE();
    int checked = check();

    constexpr const auto& objects() const { return scalars; }
    constexpr const char* group_name() const { return name; }
    template <class Visit>
    constexpr void for_each_sub_id(const Scalar& scalar, Visit visit) const {
        for (int i = 0; i < scalar.id.length; ++i) visit(scalar.id.ids[i]);
    }

private:
    constexpr int check() const {
        for (const Scalar& scalar : scalars) scalar.check();
        return 0;
    }
};

// --- Tables ----------------------------------------------------------------------------------------------------------

// The show command of a row:
//
//     "show port %d"                                    with the key's first field, for every row
//     {"show ports", "show port %d"}                    with a text of its own for the first row, which a clear key asks for
//     {"show ports", function}                          the same, with a function of the key: Command(const Key&)
//     {"show ports", function, &Key::ifindex}           the first row is asked for when that field is 0
//     function                                          of the key, or of key and request
//
// A function of key and request, Command(Key&, const Read&), may force fields of the key, trace, or answer no_answer.
template <class Key>
struct RowCommand {
    using Field = std::uint32_t Key::*;

    const char* first = nullptr;
    NumberFormat number;
    Command (*of_key)(const Key&) = nullptr;
    Command (*of_request)(Key&, const Read&) = nullptr;
    Field zero = nullptr;
    bool has_function = false;  // under g++'s sanitizers an inline function's address is no constant to compare

    constexpr RowCommand() = default;
    constexpr RowCommand(const char* keyed) : number(keyed) { has_a_number(); }
    constexpr RowCommand(const char* text, const char* keyed, Field field = nullptr)
        : first(text), number(keyed), zero(field) {
        has_a_number();
    }
    template <class Function>
    constexpr RowCommand(Function function) {
        use(function);
    }
    template <class Function>
    constexpr RowCommand(const char* text, Function function, Field field = nullptr) : first(text), zero(field) {
        use(function);
    }

    constexpr bool is_there() const { return number.text != nullptr || has_function; }

    bool asks_for_first(const Key& key) const {
        if (first == nullptr) return false;
        if (zero != nullptr) return key.*zero == 0;
        static constexpr Key clear{};
        return __builtin_memcmp(&key, &clear, sizeof key) == 0;
    }
    Command operator()(Key& key, const Read& read) const {
        if (number.text != nullptr) return {number, *reinterpret_cast<const std::uint32_t*>(&key)};
        return of_request != nullptr ? of_request(key, read) : of_key(key);
    }

private:
    static constexpr void has_a_number() {
        static_assert(shape_of<Key>.fields[0].octets == sizeof(std::uint32_t), "the key does not begin with a number");
    }
    template <class Function>
    constexpr void use(Function function) {
        constexpr bool kOfKey = std::is_invocable_r_v<Command, Function, const Key&>;
        constexpr bool kOfRequest = std::is_invocable_r_v<Command, Function, Key&, const Read&>;
        static_assert(kOfKey || kOfRequest,
                      "a command's function is Command(const Key&) or Command(Key&, const Read&), of its table's key");
        has_function = true;
        if constexpr (kOfRequest)
            of_request = function;
        else if constexpr (kOfKey)
            of_key = function;
    }
};

// A function that a table may have.
template <class Signature>
struct Hook {
    Signature* function = nullptr;
    bool is_there = false;  // as RowCommand::has_function

    constexpr Hook() = default;
    constexpr Hook(std::nullptr_t) {}
    template <class Function>
    constexpr Hook(Function given) {
        constexpr bool kFits = std::is_convertible_v<Function, Signature*>;
        static_assert(kFits, "a function of a table takes the table's own key, as table.h has it");
        if constexpr (kFits) function = given;
        is_there = true;
    }
    constexpr bool operator==(std::nullptr_t) const { return !is_there; }
    template <class... Arguments>
    auto operator()(Arguments&&... arguments) const {
        return function(static_cast<Arguments&&>(arguments)...);
    }
};

// A row record that the show request gets in place of the key: filled before it, taken back after a GETNEXT.
struct NoRecord {};

template <class Key, class Record = NoRecord>
struct Table {
    using KeyType = Key;
    using RecordType = Record;

    TableId id;
    bool answers = true;  // false: registered, but no column ever answers and no index is parsed
    // False: no value and no write method for this row.
    Hook<bool(Key&, const Read&)> accepts = {};
    RowCommand<Key> command = {};
    Hook<void(const Key&, Record&)> fill = {};
    Hook<void(const Record&, Key&)> take = {};
    // Answers in place of the backend: returns the value and sets its length, and moves the key for a GETNEXT. `detail`
    // is the column's.
    Hook<unsigned char*(Key&, const Read&, const void* detail)> fetch = {};
    // Called with the command of a row. A table that has it forms its command for every column, served or not, and before
    // the write method is handed out: a row without an answer then has no write method either.
    Hook<void(const Read&, const char* table, const Command&)> formed = {};
    Hook<void(const Read&, const char* table, int result)> bad_index = {};  // called when the parse fails
    // Called after a show request: whether the backend answered, and the key of the row that it answered.
    Hook<void(const Read&, const char* table, const Key&, bool answered)> shown = {};
    Result result = {};
    std::uint64_t request_class = 2;
    bool counts_index = false;  // the show request says how many index sub-identifiers were given
    std::initializer_list<Column> columns;
    int line = __builtin_LINE();
    int checked = check();

    constexpr const auto& objects() const { return columns; }
    constexpr const char* group_name() const { return id.name; }
    constexpr bool traces() const { return formed != nullptr; }
    template <class Visit>
    constexpr void for_each_sub_id(const Column& column, Visit visit) const {
        for (int i = 0; i < id.entry.length; ++i) visit(id.entry.ids[i]);
        visit(column.id);
    }

private:
    constexpr int check() const {
        oid before = 0;
        for (const Column& column : columns) {
            column.check();
            if (column.id <= before) mistake_the_column_numbers_do_not_ascend();
            before = column.id;
        }
        constexpr bool kHasRecord = !std::is_same_v<Record, NoRecord>;
        if (answers && !command.is_there() && fetch == nullptr) mistake_a_table_that_answers_has_a_command_or_a_fetch();
        if (kHasRecord && answers && take == nullptr) mistake_a_table_with_a_record_says_how_to_take_it();
        if (!kHasRecord && (fill != nullptr || take != nullptr))
            mistake_a_table_without_a_record_does_not_fill_or_take();
        return 0;
    }
};

}  // namespace switchmib
