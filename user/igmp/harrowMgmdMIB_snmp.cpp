// How many groups hosts may join on a router interface, and the access list that says which: for IGMP and for MLD.
#define MODULE harrowMgmdMIB
#include "framework/module.h"
#include "framework/twins.h"
#include "framework/write.h"
#include "igmp/multicast.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 3, 1);

struct Igmp {
    static constexpr int type = 1;  // in keys and commands
    static constexpr FixedString prefix{"mgmdIgmp"};
    static constexpr const char* show = "igmp";
    static constexpr const char* limit = "ip igmp limit";
};

struct Mld {
    static constexpr int type = 2;
    static constexpr FixedString prefix{"mgmdMld"};
    static constexpr const char* show = "mld";
    static constexpr const char* limit = "ipv6 mld limit";
};

struct ProtocolKey {
    std::uint32_t idx;   // ifIndex
    std::uint32_t type;  // the backend's, not in the index
    static constexpr Kind index[] = {Kind::integer};

    friend bool operator==(const ProtocolKey&, const ProtocolKey&) = default;
};
static_assert(sizeof(ProtocolKey) == 8);

template <class P>
Command show_command(ProtocolKey& row, const char* words) {
    row.type = P::type;
    return {"show debugging %s snmp %s %d %d", P::show, words, row.idx, row.type};
}

// --- limits: mgmdIgmpLimitTable, mgmdMldLimitTable -------------------------------------------------------------------

TWIN_TABLES(LimitTable, LIMITTABLE, 1);
RESULT_BUFFER(RETVALUE_mgmdLimitTable, 200);

// The lines of a removal are not traced.
template <class P>
Error write_limit(Set& set) {
    std::uint32_t limit;  // 0 removes it
    ProtocolKey row;
    TRY_LOGGED(set.type(Unsigned32), "MGMD$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$SNMP_ERR_WRONGLENGTH");
    TRY(logged_row(set, row));
    LOG_TRACE("MGMD$key.idx:%d$%s$%d\n", row.idx, set.caller, __LINE__);
    TRY(set.unsigned32(limit));
    if (limit > kMostGroups) return wrongValue;
    const Command interface = traced_enter_line(set, limit, row.idx);
    if (!set.acting()) return noError;
    if (limit == 0) return send_in_mode(set, interface, {"no %s", P::limit}, trace_nothing);
    trace_command(interface, set.caller);
    return send_in_mode(set, interface, {"%s %d", P::limit, limit}, trace_sent);
}

template <class P>
constexpr Table<ProtocolKey> limit_table{
    .id = LIMITTABLE<P>,
    .command = [](ProtocolKey& row, const Read&) { return show_command<P>(row, "limit"); },
    .result = RETVALUE_mgmdLimitTable,
    .columns =
        {
            {1, name_of<P, "LimitIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "LimitType">, Integer, ReadOnly, never},
            {3, name_of<P, "Limit">, Unsigned32, ReadWrite, SHARED(write_limit<P>)},
        },
};

// --- access groups: mgmdIgmpAccGrpTable, mgmdMldAccGrpTable ----------------------------------------------------------

TWIN_TABLES(AccGrpTable, ACCGRPTABLE, 2);
RESULT_BUFFER(RETVALUE_mgmdAccGrpTable, 200);

AccessGroup<ProtocolKey> access_group;

Error write_access_group(Set& set) {
    ProtocolKey row;
    TRY(set.type(OctetString));
    TRY_LOGGED(set.row(row), "MGMD$SNMP_ERR_NOSUCHNAME");
    TRY(access_group.keep(set, row));
    if (set.acting()) LOG_TRACE("MGMD$SNPMIB$%s %d $%s$%d\n", access_group.name, row.idx, set.caller, __LINE__);
    return noError;
}

void trace_line(const Set& set, const char* text, int line) {
    LOG_TRACE("MGMD$MIB$%s$%s$%d\n", text, set.caller, line);
}
// A removal is logged among the errors.
void log_removal(const Set& set, const char* text, int line) {
    LOG_ERROR("MGMD$MIB$%s$%s$%d\n", text, set.caller, line);
}

// Of both protocols: MLD has no lines of its own here.
Error write_access_group_status(Set& set) {
    std::int32_t status;
    ProtocolKey row;
    TRY_LOGGED(set.type(Integer), "MGMD$MIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$MIB-ERR$SNMP_ERR_NOSUCHNAME");
    TRY_LOGGED(set.row(row), "MGMD$MIB-ERR$SNMP_ERR_NOSUCHNAME");
    TRY(set.integer(status));
    TRY(set.row_status(status));
    if (!access_group.applies(set, status, row)) return noError;
    const Command interface = enter_line(row.idx);
    if (status == createAndGo) {
        trace_line(set, interface, __LINE__);
        TRY_LOGGED(send_in_mode(set, interface, {"ip igmp access-group %s", access_group.name}, trace_line),
                   "MGMD$MIB-ERR$SNMP_ERR_GENERR");
    } else {
        TRY_LOGGED(send_in_mode(set, interface, "no ip igmp access-group", log_removal),
                   "MGMD$MIB-ERR$SNMP_ERR_GENERR");
    }
    return noError;
}

template <class P>
constexpr Table<ProtocolKey> access_group_table{
    .id = ACCGRPTABLE<P>,
    .command =
        [](ProtocolKey& row, const Read& read) {
            constexpr const char* kTable = ACCGRPTABLE<P>.name;
            LOG_TRACE("MGMD$idx:%d magic:%d$%s$%d\n", row.idx, read.entry->magic, kTable, __LINE__);
            return show_command<P>(row, "access-group");
        },
    .formed = trace_shown,
    .bad_index = log_bad_index,
    .result = RETVALUE_mgmdAccGrpTable,
    .columns =
        {
            {1, name_of<P, "AccGrpIfIndex">, Integer, ReadOnly},
            {2, name_of<P, "AccGrpType">, Integer, ReadOnly},
            {3, name_of<P, "AccessGroup">, OctetString, ReadWrite, SHARED(write_access_group)},
            {4, name_of<P, "AccGrpStatus">, Integer, ReadWrite, SHARED(write_access_group_status)},
        },
};

MODULE_END(14, limit_table<Igmp>, access_group_table<Igmp>, limit_table<Mld>, access_group_table<Mld>);

}  // namespace switchmib::MODULE
