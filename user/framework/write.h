// The write path. A writer is a function of one Set, `Error write_<object>(Set& set)`: the checks in its order, then
// in the ACTION phase the configuration lines. WRITER makes the write method of it that its column hands out.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/index.h"
#include "framework/snmp.h"
#include "framework/table.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

// Ends the writer with the error of a step that failed.
#define TRY(step)                                                                                       \
    do {                                                                                                \
        if (const ::switchmib::Error failed_ = (step); failed_ != ::switchmib::noError) return failed_; \
    } while (false)

namespace switchmib {

// An interface's command-line name: at most 21 octets, empty until it is known.
struct InterfaceName {
    char text[22] = {};
};

// Sends one configuration line; `caller` and `line` are for the host's diagnostics. genErr when it is refused.
enum Mode : int { kGlobalMode = 5, kSubMode = -1, kExecutiveMode = 4 };
Error configure(Mode mode, const char* command, const char* caller, int line);

// Enters an interface for writers that leave an unknown ifIndex to the backend: the name is sent as it comes, an empty
// one too.
Error enter_intf(std::uint32_t ifindex, int line = __builtin_LINE());

// One phase of a SET of one varbind. Checks answer the error of their refusal.
class Set {
public:
    int phase;
    const unsigned char* value;
    std::uint8_t type_given;
    std::size_t length_given;
    const unsigned char* current;  // the row's current value, null when it has none
    const oid* name;
    std::size_t name_length;
    const char* caller;  // the write method's name

    // The only phase that configures anything.
    bool acting() const { return phase == action; }

    Error type(Asn expected) const { return type_given == expected ? noError : wrongType; }
    Error length(std::size_t expected) const { return length_given == expected ? noError : wrongLength; }

    // The varbind's octets into a field of `room` octets, which keeps what it holds behind them. wrongLength when they
    // are more.
    Error copy(void* field, std::size_t room) const;
    // The varbind as a number of 4 octets.
    Error integer(std::int32_t& number) const { return take(Integer, number); }
    Error unsigned32(std::uint32_t& number) const { return take(Unsigned32, number); }

    // The request's OID reaches into the table's columns; its column goes into the table's exported slot, which stays
    // patched after the call on purpose: the codec compares against it.
    Error column(const TableId& table) const;
    // That, and the index parsed exactly.
    template <class Key>
    Error row(const TableId& table, Key& key) const {
        std::memset(&key, 0, sizeof key);
        return row(table, shape_of<Key>, &key);
    }

    static Error range(std::int32_t number, std::int32_t low, std::int32_t high) {
        return number >= low && number <= high ? noError : wrongValue;
    }
    static Error row_status(std::int32_t number) { return range(number, active, destroy); }
    static Error interface_name(std::uint32_t ifindex, InterfaceName& name);

    // One configuration line: from global mode, in the mode that the line before entered, or from executive mode.
    // Written `set.global("no shutdown")` or `set.global({"interface vlan%d", vid})`.
    Error global(const char* text, int line = __builtin_LINE()) const {
        return configure(kGlobalMode, text, caller, line);
    }
    Error sub(const char* text, int line = __builtin_LINE()) const { return configure(kSubMode, text, caller, line); }
    Error global(const Command& text, int line = __builtin_LINE()) const { return global(text.c_str(), line); }
    Error sub(const Command& text, int line = __builtin_LINE()) const { return sub(text.c_str(), line); }
    Error executive(const Command& text, int line = __builtin_LINE()) const {
        return configure(kExecutiveMode, text.c_str(), caller, line);
    }
    // "interface <name>".
    Error enter(const InterfaceName& interface, int line = __builtin_LINE()) const;

    // Asks the backend for one value under the write method's name. A refused lookup leaves `result` as the backend
    // left it; false then.
    bool lookup(const Command& command, int magic, void* result, int size, int line = __builtin_LINE()) const;

    // A writer as a whole: an INTEGER column of a table keyed by ifIndex, whose every value is one line in the
    // interface's mode. The interface must have a name (genErr), the value a line (wrongValue).
    struct Line {
        std::int32_t value;
        const char* text;
    };
    Error interface_line(const TableId& table, std::initializer_list<Line> lines, int line = __builtin_LINE()) const;

private:
    template <class Number>
    Error take(Asn expected, Number& number) const {
        TRY(type(expected));
        TRY(length(sizeof number));
        std::memcpy(&number, value, sizeof number);
        return noError;
    }
    Error row(const TableId& table, const KeyShape& shape, void* key) const;
};

// A text as a template argument.
template <std::size_t size>
struct FixedString {
    char text[size];
    constexpr FixedString(const char (&literal)[size]) { std::copy_n(literal, size, text); }
};

template <Error (*write)(Set&), FixedString caller>
consteval Writer make_writer() {
    return {[](int phase, unsigned char* value, unsigned char type, std::size_t length, unsigned char* state, oid* name,
               std::size_t name_length) -> int {
        Set set{phase, value, type, length, state, name, name_length, caller.text};
        return write(set);
    }};
}
#define WRITER(function) ::switchmib::make_writer<function, #function>()

// A column that can be written as far as its checks, and is refused in ACTION. Its index is not parsed.
inline constexpr int kAnyLength = -1;
struct Refusal {
    Asn type = Integer;
    int length = 4;
    const TableId* table = nullptr;  // whose columns the OID must reach; none for a scalar
    std::int32_t low = INT_MIN;
    std::int32_t high = INT_MAX;
};
Error refuse(const Refusal& refusal, const Set& set);

template <Refusal refusal>
requires(refusal.length == 4 || (refusal.low == INT_MIN && refusal.high == INT_MAX))  // only a number has a range
    inline constexpr Writer refusing{[](int phase, unsigned char* value, unsigned char type, std::size_t length,
                                        unsigned char* state, oid* name, std::size_t name_length) -> int {
        return refuse(refusal, {phase, value, type, length, state, name, name_length, ""});
    }};

}  // namespace switchmib
