// What the multicast modules share: their words in the log, limits, access groups, and numbers of port lists.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/log.h"
#include "framework/module.h"
#include "framework/snmp.h"
#include "framework/table.h"
#include "framework/write.h"

#include <cstdint>

namespace switchmib {

// The OIDs of two tables, MGMDIGMPLIMITTABLE_oid and MGMDMLDLIMITTABLE_oid; LIMITTABLE<P> is one of them. The module has
// the types Igmp and Mld.
#define TWIN_TABLES(Name, NAME, arc)                           \
    TABLE(mgmdIgmp##Name, MGMDIGMP##NAME, Igmp::type, arc, 1); \
    TABLE(mgmdMld##Name, MGMDMLD##NAME, Mld::type, arc, 1);    \
    template <class P>                                         \
    constexpr TableId NAME = P::type == Igmp::type ? MGMDIGMP##NAME : MGMDMLD##NAME

// --- the log ---------------------------------------------------------------------------------------------------------

// A command or a line, of a table or of a writer.
inline void trace_command(const char* command, const char* of, int line = __builtin_LINE()) {
    LOG_TRACE("MGMD$cmd:%s$%s$%d\n", command, of, line);
}

inline void log_unparsed(int result, const char* of, int line = __builtin_LINE()) {
    LOG_ERROR("MGMD$get idx fail ret:%d$%s$%d\n", result, of, line);
}

// For a table's `formed` and `bad_index`.
inline void trace_shown(const Read&, const char* table, const Command& command) { trace_command(command, table); }
inline void log_bad_index(const Read&, const char* table, int result) { log_unparsed(result, table); }

// For send_in_mode().
inline void trace_sent(const Set& set, const char* text, int line) { trace_command(text, set.caller, line); }
inline void trace_nothing(const Set&, const char*, int) {}

// --- writers ---------------------------------------------------------------------------------------------------------

// The row of a write; an index that cannot be parsed is logged, an OID that is too short is not.
template <class Key>
Error logged_row(const Set& set, Key& row, int line = __builtin_LINE()) {
    TRY(set.column());
    const Error failed = set.row(row);
    if (failed != noError) log_unparsed(-1, set.caller, line);
    return failed;
}

// The line that enters an interface, for a setting whose value and interface name are traced.
inline Command traced_enter_line(const Set& set, std::uint32_t value, std::uint32_t ifindex,
                                 int line = __builtin_LINE()) {
    InterfaceName name;
    LOG_TRACE("MGMD$value:%d$%s$%d\n", value, set.caller, line);
    static_cast<void>(Set::interface_name(ifindex, name));
    LOG_TRACE("MGMD$vlan_name:%s action:%d$%s$%d\n", name.text, set.phase, set.caller, line);
    return {"interface %s", name.text};
}

// Sends a line in an interface's mode, traced after the interface was entered: trace(set, text, source line).
template <class Trace>
Error send_in_mode(const Set& set, const Command& interface, const Command& text, Trace trace,
                   int line = __builtin_LINE()) {
    TRY(set.global(interface, line));
    trace(set, text.c_str(), line);
    return set.sub(text, line);
}

inline constexpr std::uint32_t kMostGroups = 2048;  // that an interface or port can be limited to

// The access group that was named last, and its row, for the row status of the same row: one for both protocols,
// never cleared. A name has 32 octets.
template <class Key>
struct AccessGroup {
    Key row;
    char name[32 + 1];

    // Keeps what a write names, in ACTION; a longer name is cut.
    Error keep(const Set& set, const Key& of) {
        AccessGroup given{of, {}};
        TRY(set.text(given.name));
        if (set.acting()) *this = given;
        return noError;
    }
    // Whether a row status has something to do: one for another row than the name's has not.
    bool applies(const Set& set, std::int32_t status, const Key& to) const {
        return set.acting() && (status == createAndGo || status == destroy) && row == to;
    }
};

// --- port lists ------------------------------------------------------------------------------------------------------

// Four octets of a port list as lines have them: a little-endian word that is printed with its sign.
inline std::int32_t port_word(const unsigned char* octets) {
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word |= std::uint32_t{octets[i]} << 8 * i;
    return static_cast<std::int32_t>(word);
}

}  // namespace switchmib
