// IGMP and MLD snooping: per VLAN what is on, groups and their sources, router ports, limits, access groups, hosts and
// statistics.
//
// What differs between the two protocols is said in Igmp and Mld, everything else once, in templates
// over them. `name_of<P, "State">` is mgmdIgmpSnpState or mgmdMldSnpState.
#define MODULE harrowMgmdSnoopingMIB
#include "framework/address.h"
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/twins.h"
#include "framework/write.h"
#include "igmp/multicast.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 7);

// --- the protocols ---------------------------------------------------------------------------------------------------

struct Igmp {
    static constexpr int type = 1;  // in keys and commands
    static constexpr FixedString prefix{"mgmdIgmpSnp"};
    static constexpr const char* show = "igmp";
    static constexpr const char* config = "ip igmp snooping";
    static constexpr const char* no_address = "0.0.0.0";
    static constexpr char immediate_leave[] = " immediate-leave";
    static constexpr char designate[] = "debugging igmp snooping snmp designate mrouter";
    static constexpr char not_allowed[] = "debugging igmp snooping snmp not mrouter";
    static constexpr const char* no_limit = "no limit filter";  // really without "ip igmp snooping"
};

struct Mld {
    static constexpr int type = 2;
    static constexpr FixedString prefix{"mgmdMldSnp"};
    static constexpr const char* show = "mld";
    static constexpr const char* config = "ipv6 mld snooping";
    static constexpr const char* no_address = "0:0:0:0:0:0:0:0";
    static constexpr char immediate_leave[] = " fast-leave";
    static constexpr char designate[] = "debugging mld snooping snmp mrouter";
    static constexpr char not_allowed[] = "debugging mld snooping snmp mrouter forbidden";
    static constexpr const char* no_limit = "no ipv6 mld snooping limit";
};

// The result buffer that two tables share. The backend puts numbers into it.
#define TWIN_RESULT(buffer) RESULT_BUFFER(buffer, 400)

// --- the log ---------------------------------------------------------------------------------------------------------

void log_unparsed_index(const Read&, const char* table, int) {
    LOG_ERROR("MGMD$SNPMIB-ERR$ret < 0$%s$%d\n", table, __LINE__);
}

void trace_lower(const Read& read, const char* table, const Command& command) {
    LOG_TRACE("MGMD$SNPMIB$%s %d cmd : %s m:%d\n", table, __LINE__, command.c_str(), read.entry->magic);
}

// The same with a capital M, in the access groups and statistics.
void trace_upper(const Read& read, const char* table, const Command& command) {
    LOG_TRACE("MGMD$SNPMIB$%s %d cmd : %s M:%d\n", table, __LINE__, command.c_str(), read.entry->magic);
}

void trace_line(const Set& set, const char* text, int line = __builtin_LINE()) {
    LOG_TRACE("MGMD$SNPMIB$ %s$%s$%d\n", text, set.caller, line);
}

// The same without the blank, in the limits and access groups.
void trace_port_line(const Set& set, const char* text, int line = __builtin_LINE()) {
    LOG_TRACE("MGMD$SNPMIB$%s$%s$%d\n", text, set.caller, line);
}

// --- scalars ---------------------------------------------------------------------------------------------------------

// Registered, but neither read nor written: snooping is switched per VLAN.
constexpr Scalars harrowMgmdSnoopingMIBGlobals{
    .name = "harrowMgmdSnoopingMIBGlobals",
    .unmatched =
        [](const Read&) { LOG_ERROR("MGMD$SNPMIB-ERR$return NULL$%s$%d\n", "harrowMgmdSnoopingMIBGlobals", __LINE__); },
    .scalars =
        {
            {{Igmp::type, 1}, name_of<Igmp, "Global">, Integer, ReadWrite, never},
            {{Mld::type, 1}, name_of<Mld, "Global">, Integer, ReadWrite, never},
        },
};

// --- VLANs: mgmdIgmpSnpTable, mgmdMldSnpTable ------------------------------------------------------------------------

TWIN_TABLES(SnpTable, SNPTABLE, 2);
TWIN_RESULT(RETVALUE_mgmdSnpTable);

struct SnoopedVlanKey {
    std::uint32_t idx;  // ifIndex of the VLAN interface
    std::uint32_t qr_type;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
static_assert(sizeof(SnoopedVlanKey) == 8);

// What is turned on and off, as lines have it after the protocol's words; immediate leave differs.
constexpr char kSnooping[] = "", kQuerier[] = " querier", kHostBasedLeave[] = " host-based fast-leave";

// Turns on (1) or off (2) what `feature` names, once type and length are checked.
template <class P>
Error write_switch(const Set& set, const char* feature) {
    constexpr std::int32_t kOn = 1, kOff = 2;
    std::int32_t state;
    SnoopedVlanKey row;
    TRY_LOGGED(set.row(row), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    LOG_TRACE("MGMD$SNPMIB$%d$%s$%d\n", row.idx, set.caller, __LINE__);
    TRY(set.integer(state));
    const Command interface = enter_line(row.idx);
    trace_line(set, interface);
    TRY(set.range(state, kOn, kOff));
    if (!set.acting()) return noError;
    return send_in_mode(set, interface, {"%s%s%s", state == kOn ? "" : "no ", P::config, feature}, trace_line);
}

template <class P, const auto& feature>
Error write_state(Set& set) {
    TRY_LOGGED(set.type(Integer), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGLENGTH");
    return write_switch<P>(set, feature);
}

// Both protocols log these texts.
template <class P, const auto& feature>
Error write_leave(Set& set) {
    TRY_LOGGED(set.type(Integer), "IGMP$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    return write_switch<P>(set, feature);
}

// No version can be set: 0 alone is taken, as an Unsigned32 though the column is an INTEGER, and what is sent is the
// interface line twice.
template <class P>
Error write_minimum_version(Set& set) {
    std::uint32_t version;
    SnoopedVlanKey row;
    TRY(set.unsigned32(version));
    TRY(set.row(row));
    if (version != 0) return wrongValue;
    const Command interface = enter_line(row.idx);
    trace_line(set, interface);
    if (!set.acting()) return noError;
    TRY(set.global(interface));
    return set.sub(interface);
}

template <class P>
constexpr Table<SnoopedVlanKey> snp_table{
    .id = SNPTABLE<P>,
    .command =
        [](SnoopedVlanKey& row, const Read& read) {
            constexpr const char* kTable = SNPTABLE<P>.name;
            LOG_TRACE("MGMD$SNPMIB$%s %d index:%d vp->magic:%d\n", kTable, __LINE__, row.idx, read.entry->magic);
            row.qr_type = P::type;
            return Command("show debugging %s snooping snmp interface %d %d", P::show, row.idx, row.qr_type);
        },
    .formed =
        [](const Read&, const char* table, const Command& command) {
            LOG_TRACE("MGMD$SNPMIB$%s %d cmd : %s \n", table, __LINE__, command.c_str());
        },
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpTable,
    .columns =
        {
            {1, name_of<P, "IfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "State">, Integer, ReadWrite, SHARED(write_state<P, kSnooping>)},
            {3, name_of<P, "QuerierState">, Integer, ReadWrite, SHARED(write_state<P, kQuerier>)},
            {4, name_of<P, "Column4">, Integer, ReadOnly},  // whatever the backend means by it
            {5, name_of<P, "ImmediateLeave">, Integer, ReadWrite, SHARED(write_leave<P, P::immediate_leave>)},
            {6, name_of<P, "MinimumVersion">, Integer, ReadWrite, SHARED(write_minimum_version<P>)},
            {7, name_of<P, "HostBaseFastLeave">, Integer, ReadWrite, SHARED(write_leave<P, kHostBasedLeave>)},
        },
};

// --- groups: mgmdIgmpSnpGroupTable, mgmdMldSnpGroupTable -------------------------------------------------------------

TWIN_TABLES(SnpGroupTable, SNPGROUPTABLE, 3);
TWIN_RESULT(RETVALUE_mgmdSnpGroupTable);

struct GroupKey {
    std::uint32_t idx;    // ifIndex of the port
    std::uint32_t v_idx;  // ifIndex of the VLAN interface
    InetAddress group;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::address};
};
static_assert(sizeof(GroupKey) == 36);

// Adds (createAndGo) or removes (destroy) what `group` says as static on a port of a VLAN.
template <class P>
Error write_static(const Set& set, std::int32_t status, std::uint32_t port_ifindex, std::uint32_t vlan_ifindex,
                   const Text<128>& group) {
    InterfaceName port;
    static_cast<void>(Set::interface_name(port_ifindex, port));
    const Command interface = enter_line(vlan_ifindex);
    TRY(set.row_status(status));
    if (!set.acting() || (status != createAndGo && status != destroy)) return noError;
    const auto trace = [](const Set& its_set, const char* text, int line) {
        LOG_TRACE("MGMD$SNPMIB$%s:%d cmd:%s\n", its_set.caller, line, text);
    };
    trace(set, interface, __LINE__);
    const Command line("%s%s static-group %s interface %s", status == destroy ? "no " : "", P::config, group.c_str(),
                       port.text);
    return send_in_mode(set, interface, line, trace);
}

template <class P>
Error write_group_status(Set& set) {
    std::int32_t status;
    GroupKey row;
    AddressText group;
    TRY(set.integer(status));
    TRY(set.row(row));
    if (!to_text(row.group, group)) return noSuchName;
    LOG_TRACE("MGMD$SNPMIB$%s:%d idx:%d v_idx:%d g:%s\n", set.caller, __LINE__, row.idx, row.v_idx, group.text);
    return write_static<P>(set, status, row.idx, row.v_idx, {"%s", group.text});
}

template <class P>
constexpr Table<GroupKey> group_table{
    .id = SNPGROUPTABLE<P>,
    .command =
        [](GroupKey& row, const Read&) {
            constexpr const char* kTable = SNPGROUPTABLE<P>.name;
            AddressText text;
            const char* group = address_word(row.group, text, P::no_address);
            LOG_TRACE("MGMD$SNPMIB$%s %d %d v:%d type:%d %s\n", kTable, __LINE__, row.idx, row.v_idx, row.group.type,
                      group);
            row.group.type = P::type;
            return Command("show debugging %s snooping snmp group %d %d %d %s", P::show, row.idx, row.v_idx, P::type,
                           group);
        },
    .formed = trace_lower,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpGroupTable,
    .columns =
        {
            {1, name_of<P, "GroupIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "GroupVlanIfIndex">, Integer, ReadOnly, never},
            {3, name_of<P, "GroupAddressType">, Integer, ReadOnly, never},
            {4, name_of<P, "GroupAddress">, OctetString, ReadOnly, never},
            {5, name_of<P, "GroupStatus">, Integer, ReadWrite, SHARED(write_group_status<P>)},
            {6, name_of<P, "GroupColumn6">, Integer, ReadOnly},
            {7, name_of<P, "GroupUpTime">, TimeTicks, ReadOnly},
            {8, name_of<P, "GroupExpiryTime">, TimeTicks, ReadOnly},
            {9, name_of<P, "GroupColumn9">, Integer, ReadOnly},
            {10, name_of<P, "GroupColumn10">, Integer, ReadOnly},
            {11, name_of<P, "GroupLastReporter">, IpAddress, ReadOnly},
        },
};

// --- sources of groups: mgmdIgmpSnpGroupSrcTable, mgmdMldSnpGroupSrcTable --------------------------------------------

TWIN_TABLES(SnpGroupSrcTable, SNPGROUPSRCTABLE, 4);
TWIN_RESULT(RETVALUE_mgmdSnpGroupSrcTable);

struct SourceKey {
    std::uint32_t idx;    // ifIndex of the port
    std::uint32_t v_idx;  // ifIndex of the VLAN interface
    InetAddress group;
    InetAddress source;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::address_pair};
};
static_assert(sizeof(SourceKey) == 64);

template <class P>
Error write_source_status(Set& set) {
    std::int32_t status;
    SourceKey row;
    AddressText group, source;
    TRY(set.integer(status));
    TRY(set.row(row));
    if (!to_text(row.group, group) || !to_text(row.source, source)) return noSuchName;
    LOG_TRACE("MGMD$SNPMIB$%s:%d idx:%d v_idx:%d g:%s s:%s\n", set.caller, __LINE__, row.idx, row.v_idx, group.text,
              source.text);
    return write_static<P>(set, status, row.idx, row.v_idx, {"%s source %s", group.text, source.text});
}

template <class P>
constexpr Table<SourceKey> source_table{
    .id = SNPGROUPSRCTABLE<P>,
    .command =
        [](SourceKey& row, const Read& read) {
            constexpr const char* kTable = SNPGROUPSRCTABLE<P>.name;
            AddressText group_text, source_text;
            const char* group = address_word(row.group, group_text, P::no_address);
            const char* source = address_word(row.source, source_text, P::no_address);
            LOG_TRACE("MGMD$SNPMIB$type :%d adr:%s idx:%d src:%s magic:%d$%s$%d\n", row.group.type, group, row.idx,
                      source, read.entry->magic, kTable, __LINE__);
            row.group.type = P::type;  // the source's stays
            // "snp", unlike the other tables.
            return Command("show debugging %s snp snmp source %d %d %d %s %s", P::show, row.idx, row.v_idx, P::type,
                           group, source);
        },
    .formed = trace_lower,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpGroupSrcTable,
    .columns =
        {
            {1, name_of<P, "GroupSrcAddress">, OctetString, ReadOnly, never},
            {2, name_of<P, "GroupSrcStatus">, Integer, ReadWrite, SHARED(write_source_status<P>)},
            {3, name_of<P, "GroupSrcUpTime">, TimeTicks, ReadOnly},
            {4, name_of<P, "GroupSrcExpiryTime">, TimeTicks, ReadOnly},
            {5, name_of<P, "GroupSrcColumn5">, Integer, ReadOnly},
        },
};

// --- router ports: mgmdIgmpSnpMrouterTable, mgmdMldSnpMrouterTable ---------------------------------------------------

TWIN_TABLES(SnpMrouterTable, SNPMROUTERTABLE, 5);
TWIN_RESULT(RETVALUE_mgmdSnpMrouterTable);

struct RouterKey {
    std::uint32_t idx;      // ifIndex of the VLAN interface
    std::uint32_t qr_type;  // the backend's, not in the index
    static constexpr Kind index[] = {Kind::integer};
};
static_assert(sizeof(RouterKey) == 8);

// Sends a port list as three decimal numbers, its octets in little-endian words.
template <class P, const auto& words>
Error write_router_ports(Set& set) {
    constexpr int kWords = 3;
    unsigned char octets[4 * kWords] = {};
    RouterKey row;
    TRY_LOGGED(set.type(OctetString), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.row(row), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    LOG_TRACE("MGMD$SNPMIB$key.idx:%d qr_type:%d$%s$%d\n", row.idx, row.qr_type, set.caller, __LINE__);
    set.copy(octets, sizeof octets);  // a longer list is cut
    const Command interface = enter_line(row.idx);
    trace_line(set, interface);
    if (!set.acting()) return noError;
    TRY(set.global(interface));
    Text<16> numbers[kWords];
    for (int i = 0; i < kWords; ++i) {
        const std::int32_t word = port_word(octets + std::ptrdiff_t{4} * i);
        if (word != 0) LOG_TRACE("portlist.p[%d]:%x\n", i, static_cast<std::uint32_t>(word));
        numbers[i] = {" %d", word};
        LOG_TRACE("MGMD$SNPMIB$ %s$%s$%d\n", numbers[i].c_str(), set.caller, __LINE__);
    }
    // Two blanks after the ifIndex.
    const Command line("%s %d %s%s%s", words, row.idx, numbers[0].c_str(), numbers[1].c_str(), numbers[2].c_str());
    trace_line(set, line);
    return set.sub(line);
}

template <class P>
constexpr Table<RouterKey> router_table{
    .id = SNPMROUTERTABLE<P>,
    .command =
        [](RouterKey& row, const Read& read) {
            constexpr const char* kTable = SNPMROUTERTABLE<P>.name;
            LOG_TRACE("MGMD$SNPMIB$%s %d index:%d type:%d vp->magic:%d\n", kTable, __LINE__, row.idx, row.qr_type,
                      read.entry->magic);
            row.qr_type = P::type;
            return Command("show debugging %s snooping snmp mrouter %d %d", P::show, row.idx, row.qr_type);
        },
    .formed = [](const Read&, const char* table,
                 const Command& command) { LOG_TRACE("MGMD$SNPMIB$cmd:%s$%s$%d\n", command.c_str(), table, __LINE__); },
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpMrouterTable,
    .columns =
        {
            {1, name_of<P, "MrouterIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "MrouterType">, Integer, ReadOnly, never},
            {3, name_of<P, "MrouterDesignate">, OctetString, ReadWrite, SHARED(write_router_ports<P, P::designate>)},
            {4, name_of<P, "MrouterLearned">, OctetString, ReadOnly},
            {5, name_of<P, "MrouterNotAllowed">, OctetString, ReadWrite, SHARED(write_router_ports<P, P::not_allowed>)},
        },
};

// --- what limits, access groups and statistics share: a row for each port of a VLAN ----------------------------------

struct PortKey {
    std::uint32_t ifindex;
    std::uint32_t vlan_ifindex;
    std::uint32_t type;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};

    std::uint32_t vid() const { return vlan_ifindex - kVlanIfIndexBase; }
    friend bool operator==(const PortKey&, const PortKey&) = default;
};
static_assert(sizeof(PortKey) == 12);

template <class P>
Command port_command(PortKey& row, const char* table, const char* words) {
    LOG_TRACE("MGMD$SNPMIB$%s %d %d v:%d\n", table, __LINE__, row.ifindex, row.vlan_ifindex);
    row.type = P::type;
    return {"show debugging %s snooping snmp %s %d %d %d", P::show, words, row.ifindex, row.vlan_ifindex, row.type};
}

// --- limits: mgmdIgmpSnpFilterTable, mgmdMldSnpFilterTable -----------------------------------------------------------

TWIN_TABLES(SnpFilterTable, SNPFILTERTABLE, 6);
TWIN_RESULT(RETVALUE_mgmdSnpFilterTable);

template <class P>
Error write_limit(Set& set) {
    std::uint32_t limit;  // 0 removes it
    PortKey row;
    InterfaceName port;
    TRY_LOGGED(set.type(Unsigned32), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    TRY_LOGGED(set.column(), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    TRY(set.row(row));  // not logged
    TRY(set.unsigned32(limit));
    LOG_TRACE("MGMD$SNPMIB$%d type:%d$%s$%d\n", row.ifindex, row.type, set.caller, __LINE__);
    TRY_LOGGED(limit <= kMostGroups ? noError : wrongValue, "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGVALUE");
    static_cast<void>(Set::interface_name(row.ifindex, port));
    TRY_LOGGED(row.vid() != 0 ? noError : wrongValue, "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGVALUE");
    LOG_TRACE("MGMD$SNPMIB$%s v:%d %d$%s$%d\n", port.text, row.vid(), limit, set.caller, __LINE__);
    const Command interface("interface %s", port.text);
    trace_port_line(set, interface);
    if (!set.acting()) return noError;
    const Command line = limit != 0 ? Command("%s limit %d vlan %d", P::config, limit, row.vid())
                                    : Command("%s vlan %d", P::no_limit, row.vid());
    TRY_LOGGED(send_in_mode(set, interface, line, trace_port_line), "MGMD$SNPMIB-ERR$SNMP_ERR_GENERR");
    return noError;
}

template <class P>
constexpr Table<PortKey> filter_table{
    .id = SNPFILTERTABLE<P>,
    .command =
        [](PortKey& row, const Read&) {
            constexpr const char* kTable = SNPFILTERTABLE<P>.name;
            return port_command<P>(row, kTable, "filter");
        },
    .formed = trace_lower,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpFilterTable,
    .columns =
        {
            {1, name_of<P, "FilterIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "FilterVlanIfIndex">, Integer, ReadOnly, never},
            {3, name_of<P, "FilterType">, Integer, ReadOnly, never},
            {4, name_of<P, "FilterLimit">, Unsigned32, ReadWrite, SHARED(write_limit<P>)},
        },
};

// --- access groups: mgmdIgmpSnpAccGrpTable, mgmdMldSnpAccGrpTable ----------------------------------------------------

TWIN_TABLES(SnpAccGrpTable, SNPACCGRPTABLE, 7);
TWIN_RESULT(RETVALUE_mgmdSnpAccGrpTable);

AccessGroup<PortKey> access_group;

Error write_access_group(Set& set) {
    PortKey row;
    TRY_LOGGED(set.type(OctetString), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY(set.row(row));
    TRY(access_group.keep(set, row));
    if (!set.acting()) return noError;
    LOG_TRACE("MGMD$SNPMIB$%s %d v:%d$%s$%d\n", access_group.name, row.ifindex, row.vlan_ifindex, set.caller, __LINE__);
    return noError;
}

// Even the removal names the access group. A status for another row than the name's does nothing.
template <class P>
Error write_access_group_status(Set& set) {
    std::int32_t status;
    PortKey row;
    TRY_LOGGED(set.type(Integer), "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGTYPE");
    TRY_LOGGED(set.length(4), "MGMD$SNPMIB-ERR$SNMP_ERR_NOSUCHNAME");
    TRY(set.row(row));
    TRY(set.integer(status));
    TRY(set.row_status(status));
    if (!access_group.applies(set, status, row)) return noError;
    const Command interface = enter_line(row.ifindex);
    TRY_LOGGED(row.vid() != 0 ? noError : wrongValue, "MGMD$SNPMIB-ERR$SNMP_ERR_WRONGVALUE");
    if (status == createAndGo) trace_port_line(set, interface);
    const Command line("%s%s access-group %s vlan %d", status == destroy ? "no " : "", P::config, access_group.name,
                       row.vid());
    TRY_LOGGED(send_in_mode(set, interface, line, trace_port_line), "MGMD$SNPMIB-ERR$SNMP_ERR_GENERR");
    return noError;
}

template <class P>
constexpr Table<PortKey> access_group_table{
    .id = SNPACCGRPTABLE<P>,
    .command =
        [](PortKey& row, const Read&) {
            constexpr const char* kTable = SNPACCGRPTABLE<P>.name;
            return port_command<P>(row, kTable, "access-group");
        },
    .formed = trace_upper,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpAccGrpTable,
    .columns =
        {
            {1, name_of<P, "AccGrpIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "AccGrpVlanIfIndex">, Integer, ReadOnly, never},
            {3, name_of<P, "AccGrpType">, Integer, ReadOnly, never},
            {4, name_of<P, "AccessGroup">, OctetString, ReadWrite, SHARED(write_access_group)},
            {5, name_of<P, "AccGrpStatus">, Integer, ReadWrite, SHARED(write_access_group_status<P>)},
        },
};

// --- hosts: mgmdIgmpSnpHostTable, mgmdMldSnpHostTable ----------------------------------------------------------------

TWIN_TABLES(SnpHostTable, SNPHOSTTABLE, 8);
TWIN_RESULT(RETVALUE_mgmdSnpHostTable);

struct HostKey {
    std::uint32_t vlan;
    std::uint32_t ifindex;
    InetAddress group;
    InetAddress host;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::address_pair};
};
static_assert(sizeof(HostKey) == 64);

template <class P>
constexpr Table<HostKey> host_table{
    .id = SNPHOSTTABLE<P>,
    .command =
        [](HostKey& row, const Read&) {
            constexpr const char* kTable = SNPHOSTTABLE<P>.name;
            AddressText group_text, host_text;
            const char* group = address_word(row.group, group_text, P::no_address);
            const char* host = address_word(row.host, host_text, P::no_address);
            LOG_TRACE("MGMD$SNPMIB$%s %d if:%d v:%d type:%d g:%s h:%s\n", kTable, __LINE__, row.ifindex, row.vlan,
                      row.group.type, group, host);
            row.group.type = P::type;  // the host's stays
            // The order of the columns, not of the key.
            return Command("show debugging %s snooping snmp host %d %d %s %d %s", P::show, row.vlan, P::type, group,
                           row.ifindex, host);
        },
    // Logged with its result, unlike in the other tables.
    .formed = trace_lower,
    .bad_index = [](const Read&, const char* table,
                    int result) { LOG_ERROR("MGMD$SNPMIB-ERR$ret:%d$%s$%d\n", result, table, __LINE__); },
    .result = RETVALUE_mgmdSnpHostTable,
    .columns =
        {
            {1, name_of<P, "HostVlan">, Integer, ReadOnly, never},
            {2, name_of<P, "HostAddressType">, Integer, ReadOnly, never},
            {3, name_of<P, "HostGroupAddress">, OctetString, ReadOnly, never},
            {4, name_of<P, "HostIfIndex">, Integer, ReadOnly, never},
            {5, name_of<P, "HostAddress">, OctetString, ReadOnly},
        },
};

// --- statistics: mgmdIgmpSnpStatisticTable, mgmdMldSnpStatisticTable -------------------------------------------------

TWIN_TABLES(SnpStatisticTable, SNPSTATISTICTABLE, 9);
TWIN_RESULT(RETVALUE_mgmdSnpStatisticsTable);

template <class P>
constexpr Table<PortKey> statistic_table{
    .id = SNPSTATISTICTABLE<P>,
    .command =
        [](PortKey& row, const Read&) {
            constexpr const char* kTable = SNPSTATISTICTABLE<P>.name;
            return port_command<P>(row, kTable, "statistics");
        },
    .formed = trace_upper,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpStatisticsTable,
    .columns =
        {
            {1, name_of<P, "StatisticIfIndex">, Integer, ReadOnly, never},
            {2, name_of<P, "StatisticVlanIfIndex">, Integer, ReadOnly, never},
            {3, name_of<P, "StatisticType">, Integer, ReadOnly, never},
            {4, name_of<P, "StatisticColumn4">, Integer, ReadOnly},
            {5, name_of<P, "StatisticColumn5">, Integer, ReadOnly},
            {6, name_of<P, "StatisticColumn6">, Integer, ReadOnly},
            {7, name_of<P, "StatisticColumn7">, Integer, ReadOnly},
            {8, name_of<P, "StatisticColumn8">, Integer, ReadOnly},
            {9, name_of<P, "StatisticColumn9">, Integer, ReadOnly},
            {10, name_of<P, "StatisticColumn10">, Integer, ReadOnly},
            {11, name_of<P, "StatisticColumn11">, Integer, ReadOnly},
        },
};

// --- statistics of groups: mgmdIgmpSnpStatisticGroupTable, mgmdMldSnpStatisticGroupTable -----------------------------

TWIN_TABLES(SnpStatisticGroupTable, SNPSTATISTICGROUPTABLE, 10);
TWIN_RESULT(RETVALUE_mgmdSnpStatisticsGroupTable);

struct StatisticGroupKey {
    std::uint32_t vlan;
    InetAddress group;
    static constexpr Kind index[] = {Kind::integer, Kind::address};
};
static_assert(sizeof(StatisticGroupKey) == 32);

template <class P>
constexpr Table<StatisticGroupKey> statistic_group_table{
    .id = SNPSTATISTICGROUPTABLE<P>,
    .command =
        [](StatisticGroupKey& row, const Read&) {
            constexpr const char* kTable = SNPSTATISTICGROUPTABLE<P>.name;
            AddressText text;
            const char* group = address_word(row.group, text, P::no_address);
            LOG_TRACE("MGMD$SNPMIB$%s %d v:%d type:%d %s\n", kTable, __LINE__, row.vlan, row.group.type, group);
            row.group.type = P::type;
            return Command("show debugging %s snooping snmp statistics group %d %d %s", P::show, row.vlan, P::type,
                           group);
        },
    .formed = trace_lower,
    .bad_index = log_unparsed_index,
    .result = RETVALUE_mgmdSnpStatisticsGroupTable,
    .columns =
        {
            {1, name_of<P, "StatisticGroupVlan">, Integer, ReadOnly, never},
            {2, name_of<P, "StatisticGroupAddressType">, Integer, ReadOnly, never},
            {3, name_of<P, "StatisticGroupAddress">, OctetString, ReadOnly, never},
            {4, name_of<P, "StatisticGroupColumn4">, Integer, ReadOnly},
        },
};

MODULE_END(116, harrowMgmdSnoopingMIBGlobals, snp_table<Igmp>, group_table<Igmp>, source_table<Igmp>,
           router_table<Igmp>, filter_table<Igmp>, access_group_table<Igmp>, host_table<Igmp>, statistic_table<Igmp>,
           statistic_group_table<Igmp>, snp_table<Mld>, group_table<Mld>, source_table<Mld>, router_table<Mld>,
           filter_table<Mld>, access_group_table<Mld>, host_table<Mld>, statistic_table<Mld>,
           statistic_group_table<Mld>);

}  // namespace switchmib::MODULE
