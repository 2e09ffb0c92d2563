// MGMD-STD-MIB: the switch as a multicast router. IGMP alone is served: its router interfaces, and the groups and sources
// that hosts have joined on them. The tables of hosts are registered and never answer.
#define MODULE mgmdStdMIB
#include "framework/address.h"
#include "framework/module.h"
#include "framework/write.h"
#include "igmp/multicast.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 185);

// --- what the tables share -------------------------------------------------------------------------------------------

struct ProtocolKey {
    std::uint32_t idx;      // ifIndex
    std::uint32_t qr_type;  // type of the querier's address
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
static_assert(sizeof(ProtocolKey) == 8);

struct GroupKey {
    InetAddress group;
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::address, Kind::integer};
};
static_assert(sizeof(GroupKey) == 32);

struct InverseKey {
    std::uint32_t ifindex;
    InetAddress group;
    static constexpr Kind index[] = {Kind::integer, Kind::address};
};
static_assert(sizeof(InverseKey) == 32);

struct SourceKey {
    InetAddress group;
    std::uint32_t ifindex;
    InetAddress source;
    static constexpr Kind index[] = {Kind::pair_on_interface};
};
static_assert(sizeof(SourceKey) == 60);

constexpr Refusal kUnsupported{.always = true};
constexpr Refusal kUnsupportedStatus{.low = active, .high = destroy, .always = true};

using ShowText = Text<100>;  // longer commands are cut, those with a long context name

// MLD rows are not asked for; a walk stops where one comes back.
bool is_served(const Read& read, std::uint32_t type) { return type == kIpv4 || (!read.exact && type == kNoAddress); }

const char* word(const InetAddress& address, AddressText& text) { return address_word(address, text, "0.0.0.0"); }

// The group of a request as commands have it; null when it is not served.
const char* group_word(const Read& read, const InetAddress& group, std::uint32_t ifindex, AddressText& text,
                       const char* table) {
    const char* name = word(group, text);
    LOG_TRACE("MGMD$type :%d adr:%s idx:%d magic:%d$%s$%d\n", group.type, name, ifindex, read.entry->magic, table,
              __LINE__);
    return is_served(read, group.type) ? name : nullptr;
}

void trace_no_answer(const char* table) { LOG_TRACE("MGMD$return NULL$%s$%d\n", table, __LINE__); }

template <class Key>
void trace_answer(const Read& read, const char* table, const Key& row, bool answered) {
    if (!answered) return trace_no_answer(table);
    LOG_TRACE("MGMD$exact:%d ifidx:%d $%s$%d\n", read.exact, row.ifindex, table, __LINE__);
}

// --- mgmdHostInterfaceTable ------------------------------------------------------------------------------------------

TABLE(mgmdHostInterfaceTable, MGMDHOSTINTERFACETABLE, 1, 1, 1);

constexpr Table<ProtocolKey> mgmdHostInterfaceTable{
    .id = MGMDHOSTINTERFACETABLE,
    .answers = false,
    .columns =
        {
            {1, "mgmdHostInterfaceIfIndex", Integer, ReadOnly},
            {2, "mgmdHostInterfaceQuerierType", Integer, ReadOnly},
            {3, "mgmdHostInterfaceQuerier", OctetString, ReadOnly},
            {4, "mgmdHostInterfaceStatus", Integer, ReadWrite, refuses(kUnsupportedStatus)},
            {5, "mgmdHostInterfaceVersion", Unsigned32, ReadWrite, refuses(kUnsupported)},
            {6, "mgmdHostInterfaceVersion1QuerierTimer", TimeTicks, ReadOnly},
            {7, "mgmdHostInterfaceVersion2QuerierTimer", TimeTicks, ReadOnly},
            {8, "mgmdHostInterfaceVersion3Robustness", Unsigned32, ReadWrite, refuses(kUnsupported)},
        },
};

// --- mgmdRouterInterfaceTable ----------------------------------------------------------------------------------------

TABLE(mgmdRouterInterfaceTable, MGMDROUTERINTERFACETABLE, 1, 2, 1);
RESULT_BUFFER(RETVALUE_mgmdRouterInterfaceTable, 100);

// Sets what `words` name, `low` to `high`. MLD has no lines: for its rows the interface line is sent twice.
Error write_setting(const Set& set, std::uint32_t low, std::uint32_t high, const char* words) {
    std::uint32_t value;
    ProtocolKey row;
    TRY(set.unsigned32(value));
    TRY(logged_row(set, row));
    LOG_TRACE("MGMD$key.idx:%d qr_type:%d$%s$%d\n", row.idx, row.qr_type, set.caller, __LINE__);
    if (value < low || value > high) return wrongValue;
    const Command interface = traced_enter_line(set, value, row.idx);
    if (!set.acting()) return noError;
    trace_command(interface, set.caller);
    return send_in_mode(set, interface, row.qr_type == kIpv4 ? Command("%s %d", words, value) : interface, trace_sent);
}

Error write_mgmdRouterInterfaceQueryInterval(Set& set) {
    return write_setting(set, 1, 31744, "ip igmp query-interval");
}
Error write_mgmdRouterInterfaceVersion(Set& set) { return write_setting(set, 0, UINT32_MAX, "ip igmp version"); }
Error write_mgmdRouterInterfaceQueryMaxResponseTime(Set& set) {
    return write_setting(set, 10, 250, "ip igmp query-max-response-time");
}
Error write_mgmdRouterInterfaceRobustness(Set& set) { return write_setting(set, 1, 7, "ip igmp robustness-variable"); }
Error write_mgmdRouterInterfaceLastMemberQueryInterval(Set& set) {
    return write_setting(set, 10, 250, "ip igmp last-member-query-interval");
}

constexpr Table<ProtocolKey> mgmdRouterInterfaceTable{
    .id = MGMDROUTERINTERFACETABLE,
    .command = [](ProtocolKey& row, const Read& read) -> Command {
        LOG_TRACE("MGMD$idx:%d type:%d magic:%d$%s$%d\n", row.idx, row.qr_type, read.entry->magic,
                  MGMDROUTERINTERFACETABLE.name, __LINE__);
        if (read.exact && !is_served(read, row.qr_type)) return no_answer;
        return ShowText("show debugging igmp snmp interface %d %d %s", row.idx, row.qr_type, context_name());
    },
    .formed = trace_shown,
    .bad_index = log_bad_index,
    .shown =
        [](const Read& read, const char* table, const ProtocolKey& row, bool answered) {
            if (!answered) return trace_no_answer(table);
            LOG_TRACE("MGMD$exact:%d key.idx:%d qr_type:%d var_len=%d$%s$%d\n", read.exact, row.idx, row.qr_type,
                      static_cast<int>(*read.value_length), table, __LINE__);
        },
    .result = RETVALUE_mgmdRouterInterfaceTable,
    .columns =
        {
            {1, "mgmdRouterInterfaceIfIndex", Integer, ReadOnly, never},
            {2, "mgmdRouterInterfaceQuerierType", Integer, ReadOnly, never},
            {3, "mgmdRouterInterfaceQuerier", OctetString, ReadOnly},
            {4, "mgmdRouterInterfaceQueryInterval", Unsigned32, ReadWrite,
             WRITER(write_mgmdRouterInterfaceQueryInterval)},
            {5, "mgmdRouterInterfaceStatus", Integer, ReadWrite, refuses(kUnsupportedStatus)},
            {6, "mgmdRouterInterfaceVersion", Unsigned32, ReadWrite, WRITER(write_mgmdRouterInterfaceVersion)},
            {7, "mgmdRouterInterfaceQueryMaxResponseTime", Unsigned32, ReadWrite,
             WRITER(write_mgmdRouterInterfaceQueryMaxResponseTime)},
            {8, "mgmdRouterInterfaceQuerierUpTime", TimeTicks, ReadOnly},
            {9, "mgmdRouterInterfaceQuerierExpiryTime", TimeTicks, ReadOnly},
            {10, "mgmdRouterInterfaceWrongVersionQueries", Counter32, ReadOnly},
            {11, "mgmdRouterInterfaceJoins", Counter32, ReadOnly},
            {12, "mgmdRouterInterfaceProxyIfIndex", Integer, ReadWrite, refuses(kUnsupported)},
            {13, "mgmdRouterInterfaceGroups", Gauge32, ReadOnly},
            {14, "mgmdRouterInterfaceRobustness", Unsigned32, ReadWrite, WRITER(write_mgmdRouterInterfaceRobustness)},
            {15, "mgmdRouterInterfaceLastMemberQueryInterval", Unsigned32, ReadWrite,
             WRITER(write_mgmdRouterInterfaceLastMemberQueryInterval)},
            {16, "mgmdRouterInterfaceLastMemberQueryCount", Unsigned32, ReadOnly},
            {17, "mgmdRouterInterfaceStartupQueryCount", Unsigned32, ReadOnly},
            {18, "mgmdRouterInterfaceStartupQueryInterval", Unsigned32, ReadOnly},
        },
};

// --- mgmdHostCacheTable ----------------------------------------------------------------------------------------------

TABLE(mgmdHostCacheTable, MGMDHOSTCACHETABLE, 1, 3, 1);

constexpr Table<GroupKey> mgmdHostCacheTable{
    .id = MGMDHOSTCACHETABLE,
    .answers = false,
    .columns =
        {
            {1, "mgmdHostCacheAddressType", Integer, ReadOnly},
            {2, "mgmdHostCacheAddress", OctetString, ReadOnly},
            {3, "mgmdHostCacheIfIndex", Integer, ReadOnly},
            {4, "mgmdHostCacheUpTime", TimeTicks, ReadOnly},
            {5, "mgmdHostCacheLastReporter", OctetString, ReadOnly},
            {6, "mgmdHostCacheSourceFilterMode", Integer, ReadOnly},
        },
};

// --- mgmdRouterCacheTable --------------------------------------------------------------------------------------------

TABLE(mgmdRouterCacheTable, MGMDROUTERCACHETABLE, 1, 4, 1);
RESULT_BUFFER(RETVALUE_mgmdRouterCacheTable, 100);

constexpr Table<GroupKey> mgmdRouterCacheTable{
    .id = MGMDROUTERCACHETABLE,
    .command = [](GroupKey& row, const Read& read) -> Command {
        AddressText text;
        const char* group = group_word(read, row.group, row.ifindex, text, MGMDROUTERCACHETABLE.name);
        if (group == nullptr) return no_answer;
        return ShowText("show debugging igmp snmp group %d %s %d %s", row.group.type, group, row.ifindex,
                        context_name());
    },
    .formed = trace_shown,
    .bad_index = log_bad_index,
    .shown = trace_answer<GroupKey>,
    .result = RETVALUE_mgmdRouterCacheTable,
    .columns =
        {
            {1, "mgmdRouterCacheAddressType", Integer, ReadOnly, never},
            {2, "mgmdRouterCacheAddress", OctetString, ReadOnly, never},
            {3, "mgmdRouterCacheIfIndex", Integer, ReadOnly, never},
            {4, "mgmdRouterCacheLastReporter", OctetString, ReadOnly},
            {5, "mgmdRouterCacheUpTime", TimeTicks, ReadOnly},
            {6, "mgmdRouterCacheExpiryTime", TimeTicks, ReadOnly},
            {7, "mgmdRouterCacheExcludeModeExpiryTimer", TimeTicks, ReadOnly},
            {8, "mgmdRouterCacheVersion1HostTimer", TimeTicks, ReadOnly},
            {9, "mgmdRouterCacheVersion2HostTimer", TimeTicks, ReadOnly},
            {10, "mgmdRouterCacheSourceFilterMode", Integer, ReadOnly},
        },
};

// --- mgmdInverseHostCacheTable ---------------------------------------------------------------------------------------

TABLE(mgmdInverseHostCacheTable, MGMDINVERSEHOSTCACHETABLE, 1, 5, 1);

constexpr Table<InverseKey> mgmdInverseHostCacheTable{
    .id = MGMDINVERSEHOSTCACHETABLE,
    .answers = false,
    .columns =
        {
            {1, "mgmdInverseHostCacheIfIndex", Integer, ReadOnly},
            {2, "mgmdInverseHostCacheAddressType", Integer, ReadOnly},
            {3, "mgmdInverseHostCacheAddress", OctetString, ReadOnly},
        },
};

// --- mgmdInverseRouterCacheTable -------------------------------------------------------------------------------------

TABLE(mgmdInverseRouterCacheTable, MGMDINVERSEROUTERCACHETABLE, 1, 6, 1);
RESULT_BUFFER(RETVALUE_mgmdInverseRouterCacheTable, 100);

constexpr Table<InverseKey> mgmdInverseRouterCacheTable{
    .id = MGMDINVERSEROUTERCACHETABLE,
    .command = [](InverseKey& row, const Read& read) -> Command {
        AddressText text;
        const char* group = group_word(read, row.group, row.ifindex, text, MGMDINVERSEROUTERCACHETABLE.name);
        if (group == nullptr) return no_answer;
        return ShowText("show debugging igmp snmp inv group %d %d %s %s", row.ifindex, row.group.type, group,
                        context_name());
    },
    .formed = trace_shown,
    .bad_index = log_bad_index,
    .shown = trace_answer<InverseKey>,
    .result = RETVALUE_mgmdInverseRouterCacheTable,
    .columns =
        {
            {1, "mgmdInverseRouterCacheIfIndex", Integer, ReadOnly, never},
            {2, "mgmdInverseRouterCacheAddressType", Integer, ReadOnly, never},
            {3, "mgmdInverseRouterCacheAddress", OctetString, ReadOnly},
        },
};

// --- mgmdHostSrcListTable --------------------------------------------------------------------------------------------

TABLE(mgmdHostSrcListTable, MGMDHOSTSRCLISTTABLE, 1, 7, 1);

constexpr Table<SourceKey> mgmdHostSrcListTable{
    .id = MGMDHOSTSRCLISTTABLE,
    .answers = false,
    .columns =
        {
            {1, "mgmdHostSrcListAddressType", Integer, ReadOnly},
            {2, "mgmdHostSrcListAddress", OctetString, ReadOnly},
            {3, "mgmdHostSrcListIfIndex", Integer, ReadOnly},
            {4, "mgmdHostSrcListHostAddress", OctetString, ReadOnly},
            {5, "mgmdHostSrcListExpire", TimeTicks, ReadOnly},
        },
};

// --- mgmdRouterSrcListTable ------------------------------------------------------------------------------------------

TABLE(mgmdRouterSrcListTable, MGMDROUTERSRCLISTTABLE, 1, 8, 1);
RESULT_BUFFER(RETVALUE_mgmdRouterSrcListTable, 100);

constexpr Table<SourceKey> mgmdRouterSrcListTable{
    .id = MGMDROUTERSRCLISTTABLE,
    .command = [](SourceKey& row, const Read& read) -> Command {
        AddressText group_text, source_text;
        const char* group = word(row.group, group_text);
        const char* source = word(row.source, source_text);
        LOG_TRACE("MGMD$type :%d adr:%s idx:%d src:%s magic:%d$%s$%d\n", row.group.type, group, row.ifindex, source,
                  read.entry->magic, MGMDROUTERSRCLISTTABLE.name, __LINE__);
        if (!is_served(read, row.group.type)) return no_answer;
        return ShowText("show debugging igmp snmp source %d %s %d %s %s", row.group.type, group, row.ifindex, source,
                        context_name());
    },
    .formed = trace_shown,
    .bad_index = log_bad_index,
    .shown = trace_answer<SourceKey>,
    .result = RETVALUE_mgmdRouterSrcListTable,
    .columns =
        {
            {1, "mgmdRouterSrcListAddressType", Integer, ReadOnly, never},
            {2, "mgmdRouterSrcListAddress", OctetString, ReadOnly, never},
            {3, "mgmdRouterSrcListIfIndex", Integer, ReadOnly, never},
            {4, "mgmdRouterSrcListHostAddress", OctetString, ReadOnly, never},
            {5, "mgmdRouterSrcListExpire", TimeTicks, ReadOnly},
        },
};

MODULE_END(58, mgmdHostInterfaceTable, mgmdRouterInterfaceTable, mgmdHostCacheTable, mgmdRouterCacheTable,
           mgmdInverseHostCacheTable, mgmdInverseRouterCacheTable, mgmdHostSrcListTable, mgmdRouterSrcListTable);

}  // namespace switchmib::MODULE
