// IEEE 802.1Q bridge: its VLANs, forwarding database, static multicast entries and protocol groups, and MVRP. Its
// tables are those of the Q-bridge, with the bridge's component in each index.
#define MODULE ieee8021QBridgeMib
#include "L2/vlans.h"
#include "framework/module.h"

#include <string_view>

namespace switchmib::MODULE {

MODULE_OID(kIeee8021, 4);

SWITCHMIB_EXPORT int mvrp_mib_dbg;
constinit int mvrp_mib_dbg = 0;

// Traces the lines that begin with MVRP's words, while it is asked for.
void trace_mvrp(const Set& set, std::string_view line) {
    if (mvrp_mib_dbg == 0 || !(line.starts_with("mvrp") || line.starts_with("no mvrp"))) return;
    debugmsgtoken("mvrp", "%s: %s\n", set.caller, line.data());
    debugmsg("mvrp", "%s: %s\n", set.caller, line.data());
}

constexpr Scalars ieee8021QBridgeMibGlobals{
    .name = "ieee8021QBridgeMibGlobals",
    .scalars =
        {{{1, 4, 1}, "ieee8021QBridgeVlanNumDeletes", Counter64, ReadOnly, shows("show snmp ieee vlan-delete-num")}},
};

// --- ieee8021QBridgeTable --------------------------------------------------------------------------------------------

TABLE(ieee8021QBridgeTable, IEEE8021QBRIDGETABLE, 1, 1, 1, 1);

struct ComponentKey {
    std::uint32_t component;
    static constexpr Kind index[] = {Kind::integer};
};

Error write_ieee8021QBridgeMvrpEnabledStatus(Set& set) {
    std::int32_t status;
    ComponentKey row;
    const char* line;
    TRY(set.integer(status));
    TRY(bridge_row(set, row));
    TRY(set.choose({{1, "mvrp global"}, {2, "no mvrp global"}}, status, line));
    if (!set.acting()) return noError;
    trace_mvrp(set, line);
    return set.global(line);
}

constexpr Table<ComponentKey> ieee8021QBridgeTable{
    .id = IEEE8021QBRIDGETABLE,
    .command = {"show snmp ieee bridge", "show snmp ieee bridge %d"},
    .columns =
        {
            {1, "ieee8021QBridgeComponentId", Unsigned32, ReadOnly, never},
            {2, "ieee8021QBridgeVlanVersionNumber", Integer, ReadOnly},
            {3, "ieee8021QBridgeMaxVlanId", Integer, ReadOnly},
            {4, "ieee8021QBridgeMaxSupportedVlans", Unsigned32, ReadOnly},
            {5, "ieee8021QBridgeNumVlans", Gauge32, ReadOnly},
            {6, "ieee8021QBridgeMvrpEnabledStatus", Integer, ReadWrite, WRITER(write_ieee8021QBridgeMvrpEnabledStatus)},
        },
};

// --- ieee8021QBridgeFdbTable -----------------------------------------------------------------------------------------

TABLE(ieee8021QBridgeFdbTable, IEEE8021QBRIDGEFDBTABLE, 1, 2, 1, 1);

// A VLAN's forwarding database has the VLAN's id.
struct BridgeVlanKey {
    std::uint32_t component;
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// One aging time for all. Its range is checked in the two RESERVE phases alone.
Error write_ieee8021QBridgeFdbAgingTime(Set& set) {
    std::int32_t seconds;
    BridgeVlanKey row;
    TRY(set.integer(seconds));
    TRY(bridge_row(set, row));
    if ((set.phase == reserve1 || set.phase == reserve2) && seconds != 0) TRY(set.range(seconds, 10, 1000000));
    return set.acting() ? set.global({"mac address-table aging-time %d", seconds}) : noError;
}

constexpr Table<BridgeVlanKey> ieee8021QBridgeFdbTable{
    .id = IEEE8021QBRIDGEFDBTABLE,
    .command = {"show snmp ieee fdb",
                [](const BridgeVlanKey& row) { return Command("show snmp ieee fdb %d", row.vid); },
                &BridgeVlanKey::vid},
    .columns =
        {
            {1, "ieee8021QBridgeFdbComponentId", Unsigned32, ReadOnly, never},
            {2, "ieee8021QBridgeFdbId", Unsigned32, ReadOnly, never},
            {3, "ieee8021QBridgeFdbDynamicCount", Gauge32, ReadOnly},
            {4, "ieee8021QBridgeFdbLearnedEntryDiscards", Counter64, ReadOnly},
            {5, "ieee8021QBridgeFdbAgingTime", Integer, ReadWrite, WRITER(write_ieee8021QBridgeFdbAgingTime)},
        },
};

// --- ieee8021QBridgeTpFdbTable ---------------------------------------------------------------------------------------

TABLE(ieee8021QBridgeTpFdbTable, IEEE8021QBRIDGETPFDBTABLE, 1, 2, 2, 1);

struct VlanMacKey {
    std::uint32_t component;
    std::uint32_t vid;
    Mac mac;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::mac};
};

constexpr Table<VlanMacKey> ieee8021QBridgeTpFdbTable{
    .id = IEEE8021QBRIDGETPFDBTABLE,
    .command =
        [](const VlanMacKey& row) {
            return Command("show snmp ieee mac-address-table address %s vlan %d", lower(row.mac).c_str(), row.vid);
        },
    .columns =
        {
            {1, "ieee8021QBridgeTpFdbAddress", OctetString, ReadOnly, never},
            {2, "ieee8021QBridgeTpFdbPort", Unsigned32, ReadOnly},
            {3, "ieee8021QBridgeTpFdbStatus", Integer, ReadOnly},
        },
};

// --- ieee8021QBridgeTpGroupTable -------------------------------------------------------------------------------------

TABLE(ieee8021QBridgeTpGroupTable, IEEE8021QBRIDGETPGROUPTABLE, 1, 2, 3, 1);

constexpr Table<VlanMacKey> ieee8021QBridgeTpGroupTable{
    .id = IEEE8021QBRIDGETPGROUPTABLE,
    .command = {"show snmp ieee mcast group-table",
                [](const VlanMacKey& row) {
                    return Command("show snmp ieee mcast group-table vlan %d mac %s", row.vid, upper(row.mac).c_str());
                },
                &VlanMacKey::vid},
    .columns =
        {
            {1, "ieee8021QBridgeTpGroupAddress", OctetString, ReadOnly, never},
            {2, "ieee8021QBridgeTpGroupEgressPorts", OctetString, ReadOnly},
            {3, "ieee8021QBridgeTpGroupLearnt", OctetString, ReadOnly},
        },
};

// --- ieee8021QBridgeStaticMulticastTable -----------------------------------------------------------------------------

TABLE(ieee8021QBridgeStaticMulticastTable, IEEE8021QBRIDGESTATICMULTICASTTABLE, 1, 3, 2, 1);

struct StaticKey {
    std::uint32_t component;
    std::uint32_t vid;
    Mac mac;
    std::uint32_t receive_port;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::mac, Kind::integer};
};

// The ports that wait for a row status, and whether there is one; apart from the record of the VLANs.
constinit PortList static_ports{};
constinit bool static_pending = false;

Error write_static_ports(Set& set) {
    StaticKey row;
    PortList ports;
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof ports.octets));
    TRY(bridge_row(set, row));
    set.copy(ports.octets, sizeof ports.octets);
    if (set.phase == reserve1) {
        static_ports = ports;
        static_pending = false;
    }
    if (!set.acting() || static_pending) return noError;
    return change_static_ports(
        set, row.mac, row.vid,
        {"show snmp ieee mcast static-table egressport vlan %d mac %s", row.vid, lower(row.mac).c_str()}, ports);
}

// Two columns are refused. They look at no index, and leave the table's column slot as it is.
Error reaches_columns(const Set& set) { return set.name_length >= set.table->length ? noError : noSuchName; }

Error refuse_static_ports(Set& set) {
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof static_ports.octets));
    TRY(reaches_columns(set));
    return set.acting() ? genErr : noError;
}

Error refuse_storage_type(Set& set) {
    std::int32_t storage;
    TRY(set.integer(storage));
    TRY(reaches_columns(set));
    TRY(set.range(storage, 1, 5));
    return set.acting() ? genErr : noError;
}

// Only createAndGo ends what is staged: after any other status the flag stays until ports are staged again.
Error write_static_status(Set& set) {
    std::int32_t status;
    StaticKey row;
    TRY(set.integer(status));
    TRY(bridge_row(set, row));
    TRY(set.row_status(status));
    if (set.phase == reserve1) static_pending = true;
    if (!set.acting()) return noError;
    if (status == destroy)
        return set.global({"no mac address-table static %s vlan %d", lower(row.mac).c_str(), row.vid});
    if (status != createAndGo) return noError;
    TRY(static_ports.for_each([&](int port) { return add_static_port(set, row.mac, row.vid, port); }));
    static_ports = {};
    static_pending = false;
    return noError;
}

constexpr Table<StaticKey> ieee8021QBridgeStaticMulticastTable{
    .id = IEEE8021QBRIDGESTATICMULTICASTTABLE,
    .command = {"show snmp ieee mcast static-table",
                [](const StaticKey& row) {
                    return Command("show snmp ieee mcast static-table vlan %d mac %s", row.vid, upper(row.mac).c_str());
                },
                &StaticKey::vid},
    .columns =
        {
            {1, "ieee8021QBridgeStaticMulticastAddress", OctetString, ReadOnly, never},
            {2, "ieee8021QBridgeStaticMulticastReceivePort", Unsigned32, ReadOnly, never},
            {3, "ieee8021QBridgeStaticMulticastStaticEgressPorts", OctetString, ReadWrite, SHARED(write_static_ports)},
            {4, "ieee8021QBridgeStaticMulticastForbiddenEgressPorts", OctetString, ReadWrite,
             SHARED(refuse_static_ports), never},
            {5, "ieee8021QBridgeStaticMulticastStorageType", Integer, ReadWrite, SHARED(refuse_storage_type), never},
            {6, "ieee8021QBridgeStaticMulticastRowStatus", Integer, ReadWrite, SHARED(write_static_status)},
        },
};

// --- ieee8021QBridgeVlanCurrentTable ---------------------------------------------------------------------------------

TABLE(ieee8021QBridgeVlanCurrentTable, IEEE8021QBRIDGEVLANCURRENTTABLE, 1, 4, 2, 1);

struct CurrentVlanKey {
    std::uint32_t time_mark;
    std::uint32_t component;
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};
};

constexpr Table<CurrentVlanKey> ieee8021QBridgeVlanCurrentTable{
    .id = IEEE8021QBRIDGEVLANCURRENTTABLE,
    .command = {"show snmp ieee vlan-current",
                [](const CurrentVlanKey& row) { return Command("show snmp ieee vlan-current %d", row.vid); },
                &CurrentVlanKey::vid},
    .columns =
        {
            {1, "ieee8021QBridgeVlanTimeMark", TimeTicks, ReadOnly, never},
            {2, "ieee8021QBridgeVlanCurrentComponentId", Unsigned32, ReadOnly, never},
            {3, "ieee8021QBridgeVlanIndex", Unsigned32, ReadOnly, never},
            {4, "ieee8021QBridgeVlanFdbId", Unsigned32, ReadOnly},
            {5, "ieee8021QBridgeVlanCurrentEgressPorts", OctetString, ReadOnly},
            {6, "ieee8021QBridgeVlanCurrentUntaggedPorts", OctetString, ReadOnly},
            {7, "ieee8021QBridgeVlanStatus", Integer, ReadOnly},
            {8, "ieee8021QBridgeVlanCreationTime", TimeTicks, ReadOnly},
        },
};

// --- ieee8021QBridgeVlanStaticTable ----------------------------------------------------------------------------------

TABLE(ieee8021QBridgeVlanStaticTable, IEEE8021QBRIDGEVLANSTATICTABLE, 1, 4, 3, 1);

// A record of the module's own: a row that is pending in another table of VLANs is not seen here.
constinit VlanStatic staged_vlan{};

struct StaticVlans {
    using Key = BridgeVlanKey;
    static constexpr VlanStatic& staged = staged_vlan;
    static constexpr NumberFormat ports{"show snmp ieee vlan-static %d portlist"};
    static constexpr int egress = 4, untagged = 6;
};

constexpr Table<BridgeVlanKey> ieee8021QBridgeVlanStaticTable{
    .id = IEEE8021QBRIDGEVLANSTATICTABLE,
    .command = {"show snmp ieee vlan-static",
                [](const BridgeVlanKey& row) { return Command("show snmp ieee vlan-static %d", row.vid); },
                &BridgeVlanKey::vid},
    .columns =
        {
            {1, "ieee8021QBridgeVlanStaticComponentId", Unsigned32, ReadOnly, never},
            {2, "ieee8021QBridgeVlanStaticVlanIndex", Unsigned32, ReadOnly, never},
            {3, "ieee8021QBridgeVlanStaticName", OctetString, ReadWrite, SHARED(write_vlan_name<StaticVlans>)},
            {4, "ieee8021QBridgeVlanStaticEgressPorts", OctetString, ReadWrite,
             SHARED(write_egress_ports<StaticVlans>)},
            {5, "ieee8021QBridgeVlanForbiddenEgressPorts", OctetString, ReadWrite,
             SHARED(write_forbidden_ports<StaticVlans>), never},
            {6, "ieee8021QBridgeVlanStaticUntaggedPorts", OctetString, ReadWrite,
             SHARED(write_untagged_ports<StaticVlans>)},
            {7, "ieee8021QBridgeVlanStaticRowStatus", Integer, ReadWrite, SHARED(write_vlan_status<StaticVlans>)},
        },
};

// --- ieee8021QBridgePortVlanTable ------------------------------------------------------------------------------------

TABLE(ieee8021QBridgePortVlanTable, IEEE8021QBRIDGEPORTVLANTABLE, 1, 4, 5, 1);

struct PortKey {
    std::uint32_t component;
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// A line of a port's own mode, by the value.
Error port_line(const Set& set, Lines lines) {
    std::int32_t number;
    PortKey row;
    InterfaceName name;
    const char* line;
    TRY(set.integer(number));
    TRY(bridge_row(set, row));
    TRY(set.interface_name(row.ifindex, name));
    TRY(set.choose(lines, number, line));
    if (!set.acting()) return noError;
    TRY(set.enter(name));
    trace_mvrp(set, line);
    return set.sub(line);
}

// Tagged and untagged have each other's numbers in the Q-bridge.
Error write_frame_types(Set& set) {
    return port_line(set, {{1, "acceptable-frame admit-all"},
                           {2, "acceptable-frame untagged-only"},
                           {3, "acceptable-frame tagged-only"}});
}

Error write_ingress_filtering(Set& set) {
    return port_line(set, {{1, "ingress-checking"}, {2, "no ingress-checking"}});
}

Error write_port_mvrp(Set& set) { return port_line(set, {{1, "mvrp enable"}, {2, "no mvrp enable"}}); }

Error write_restricted_registration(Set& set) {
    return port_line(set, {{1, "mvrp registration forbidden"}, {2, "no mvrp registration forbidden"}});
}

constexpr Table<PortKey> ieee8021QBridgePortVlanTable{
    .id = IEEE8021QBRIDGEPORTVLANTABLE,
    .command = {"show snmp ieee port-vlan",
                [](const PortKey& row) { return Command("show snmp ieee port-vlan %d", row.ifindex); },
                &PortKey::ifindex},
    .columns =
        {
            {1, "ieee8021QBridgePvid", Unsigned32, ReadWrite, SHARED(write_native_vlan<PortKey>)},
            {2, "ieee8021QBridgePortAcceptableFrameTypes", Integer, ReadWrite, SHARED(write_frame_types)},
            {3, "ieee8021QBridgePortIngressFiltering", Integer, ReadWrite, SHARED(write_ingress_filtering)},
            {4, "ieee8021QBridgePortMvrpEnabledStatus", Integer, ReadWrite, SHARED(write_port_mvrp)},
            {5, "ieee8021QBridgePortMvrpFailedRegistrations", Counter64, ReadOnly},
            {6, "ieee8021QBridgePortMvrpLastPduOrigin", OctetString, ReadOnly},
            {7, "ieee8021QBridgePortRestrictedVlanRegistration", Integer, ReadWrite,
             SHARED(write_restricted_registration)},
        },
};

// --- ieee8021QBridgeProtocolGroupTable -------------------------------------------------------------------------------

TABLE(ieee8021QBridgeProtocolGroupTable, IEEE8021QBRIDGEPROTOCOLGROUPTABLE, 1, 5, 1, 1);

struct IeeeProtocolKey {
    std::uint32_t component;
    std::uint32_t frame_type;
    Octets<2> protocol;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::counted_string(2)};
};

struct IeeeBindingKey {
    std::uint32_t component;
    std::uint32_t ifindex;
    std::uint32_t group;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};
};

struct IeeeProtocols : Protocols {
    using Key = IeeeProtocolKey;
    using Port = IeeeBindingKey;
    static constexpr const char* group_id = "ieee protocol-group-id";
    static constexpr int group_column = 4;
};

constexpr Table<IeeeProtocolKey> ieee8021QBridgeProtocolGroupTable{
    .id = IEEE8021QBRIDGEPROTOCOLGROUPTABLE,
    .command = {"show snmp ieee protocol-group",
                [](const IeeeProtocolKey& row) { return show_protocol("ieee protocol-group", row); },
                &IeeeProtocolKey::frame_type},
    .columns =
        {
            {1, "ieee8021QBridgeProtocolGroupComponentId", Unsigned32, ReadOnly, never},
            {2, "ieee8021QBridgeProtocolTemplateFrameType", Integer, ReadOnly, never},
            {3, "ieee8021QBridgeProtocolTemplateProtocolValue", OctetString, ReadOnly, never},
            {4, "ieee8021QBridgeProtocolGroupId", Integer, ReadWrite, SHARED(write_group_id<IeeeProtocols>)},
            {5, "ieee8021QBridgeProtocolGroupRowStatus", Integer, ReadWrite,
             SHARED(write_staged_status<GroupRow<IeeeProtocols>>)},
        },
};

// --- ieee8021QBridgeProtocolPortTable --------------------------------------------------------------------------------

TABLE(ieee8021QBridgeProtocolPortTable, IEEE8021QBRIDGEPROTOCOLPORTTABLE, 1, 5, 2, 1);

constexpr Table<IeeeBindingKey> ieee8021QBridgeProtocolPortTable{
    .id = IEEE8021QBRIDGEPROTOCOLPORTTABLE,
    .command = {"show snmp ieee protocol-vlan", [](const IeeeBindingKey& row) { return show_binding("ieee ", row); },
                &IeeeBindingKey::ifindex},
    .columns =
        {
            {1, "ieee8021QBridgeProtocolPortGroupId", Integer, ReadOnly, never},
            {2, "ieee8021QBridgeProtocolPortGroupVid", Integer, ReadWrite,
             SHARED(write_staged_vlan<BindingRow<IeeeProtocols>>)},
            {3, "ieee8021QBridgeProtocolPortRowStatus", Integer, ReadWrite,
             SHARED(write_staged_status<BindingRow<IeeeProtocols>>)},
        },
};

VARIABLES(54, ieee8021QBridgeMibGlobals, ieee8021QBridgeTable, ieee8021QBridgeFdbTable, ieee8021QBridgeTpFdbTable,
          ieee8021QBridgeTpGroupTable, ieee8021QBridgeStaticMulticastTable, ieee8021QBridgeVlanCurrentTable,
          ieee8021QBridgeVlanStaticTable, ieee8021QBridgePortVlanTable, ieee8021QBridgeProtocolGroupTable,
          ieee8021QBridgeProtocolPortTable);

SWITCHMIB_EXPORT void MODULE_INIT() {
    REGISTER();
    PORTLIST_clear_all(static_ports.octets);
    staged_vlan.pending = 0;
}

}  // namespace switchmib::MODULE
