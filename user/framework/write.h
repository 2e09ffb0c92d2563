// The write path. A writer is a function of one Set, `Error write_<object>(Set& set)`: the checks in its order, then
// in the ACTION phase the configuration lines.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/index.h"
#include "framework/snmp.h"
#include "framework/table.h"

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

// The ways to send a configuration line: from global configuration mode, in the mode that the line before it entered,
// from the privileged executive mode.
enum Mode : int { kGlobalMode = 5, kSubMode = -1, kExecutiveMode = 4 };

// Sends one configuration line; `caller` and `line` are for the host's diagnostics. genErr when it is refused.
Error configure(Mode mode, const char* command, const char* caller, int line);

// Enters an interface for writers that leave an unknown ifIndex to the backend: the name is sent as it comes, an empty
// one too.
Error enter_intf(std::uint32_t ifindex, int line = __builtin_LINE());

// A value of an object and the configuration line that it is set by.
struct Line {
    std::int32_t value;
    const char* text;
};
using Lines = std::initializer_list<Line>;

// One phase of a SET of one varbind. A check returns the error of its refusal.
class Set {
public:
    int phase;
    const unsigned char* value;
    std::uint8_t type_given;
    std::size_t length_given;
    const unsigned char* current;  // the row's current value, null when it has none
    const oid* name;
    std::size_t name_length;
    const char* caller;    // the write method's name
    const TableId* table;  // the object's; null for a scalar

    // The only phase that configures anything.
    bool acting() const { return phase == action; }

    Error type(Asn expected) const { return type_given == expected ? noError : wrongType; }
    Error length(std::size_t expected) const { return length_given == expected ? noError : wrongLength; }
    Error at_most(std::size_t octets) const { return length_given <= octets ? noError : wrongLength; }

    // The varbind as a number of 4 octets.
    Error integer(std::int32_t& number) const { return take(Integer, number); }
    Error unsigned32(std::uint32_t& number) const { return take(Unsigned32, number); }

    // The varbind's octets into a field of `room` octets, which keeps what it holds after them; more are cut.
    void copy(void* field, std::size_t room) const;
    // The same for a text that goes into a command, which ends at its first NUL: wrongValue when it holds a control
    // character. The text is copied to a clear buffer, and is NUL-terminated.
    template <std::size_t size>
    Error text(char (&buffer)[size]) const {
        return text(buffer, size);
    }

    // The request's OID reaches into the table's columns; its column goes into the table's exported slot, which stays
    // patched after the call on purpose: the codec compares against it.
    Error column() const;
    // That, and the index parsed exactly.
    template <class Key>
    Error row(Key& key) const {
        std::memset(&key, 0, sizeof key);
        return row(shape_of<Key>, &key);
    }

    static Error range(std::int32_t number, std::int32_t low, std::int32_t high) {
        return number >= low && number <= high ? noError : wrongValue;
    }
    // The line of a number; wrongValue where it has none.
    static Error choose(Lines lines, std::int32_t number, const char*& text);
    static Error row_status(std::int32_t number) { return range(number, active, destroy); }
    static Error interface_name(std::uint32_t ifindex, InterfaceName& name, Error missing = genErr);

    // One configuration line. Written `set.global("no shutdown")` or `set.global({"interface vlan%d", vid})`.
    Error line(Mode mode, const char* text, int line = __builtin_LINE()) const {
        return configure(mode, text, caller, line);
    }
    Error global(const char* text, int line = __builtin_LINE()) const { return this->line(kGlobalMode, text, line); }
    Error sub(const char* text, int line = __builtin_LINE()) const { return this->line(kSubMode, text, line); }
    Error global(const Command& text, int line = __builtin_LINE()) const { return global(text.c_str(), line); }
    Error sub(const Command& text, int line = __builtin_LINE()) const { return sub(text.c_str(), line); }
    Error executive(const Command& text, int line = __builtin_LINE()) const {
        return this->line(kExecutiveMode, text.c_str(), line);
    }
    // "interface <name>".
    Error enter(const InterfaceName& interface, int line = __builtin_LINE()) const;

    // Asks the backend for one value under the write method's name. A refused lookup leaves `result` as the backend
    // left it; false then.
    bool lookup(const Command& command, int magic, void* result, int size, int line = __builtin_LINE()) const;

    // Writers as a whole: an INTEGER whose every value is one line. A value without a line is wrongValue.

    // Of a scalar, in global mode.
    Error scalar_line(Lines lines, int line = __builtin_LINE()) const;
    // Of a column of a table keyed by ifIndex, in the interface's mode; the interface must have a name.
    Error interface_line(Lines lines, int line = __builtin_LINE()) const;

private:
    template <class Number>
    Error take(Asn expected, Number& number) const {
        TRY(type(expected));
        TRY(length(sizeof number));
        std::memcpy(&number, value, sizeof number);
        return noError;
    }
    Error row(const KeyShape& shape, void* key) const;
    Error text(char* buffer, std::size_t size) const;
};

// A Refusal's write method; the value has to be of type `type`.
Error refuse(const Refusal& refusal, Asn type, const Set& set);

}  // namespace switchmib
