// Q-BRIDGE-MIB: the VLANs, their members, and each port's VLAN settings; the forwarding database, multicast groups
// and static multicast addresses by VLAN.
//
// A VLAN's row may be set column by column or at once. With a row status in the request, its columns only stage their
// values in RESERVE1, and the row status applies them all in ACTION.
#define MODULE qBridgeMIB
#include "L2/vlans.h"
#include "framework/module.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 17, 7);

unsigned char result_buffer[512];
constexpr Result kResult = result_buffer;

struct CurrentVlanKey {
    std::uint32_t time_mark;
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

SWITCHMIB_EXPORT VlanStatic vlan_static;
constinit VlanStatic vlan_static{};

// --- scalars ---------------------------------------------------------------------------------------------------------

// GVRP is not there to be switched: the value is checked, taken and forgotten.
Error write_dot1qGvrpStatus(Set& set) {
    std::int32_t status;
    return set.integer(status);
}

constexpr Scalars qBridgeMIBGlobals{
    .name = "qBridgeMIBGlobals",
    .result = kResult,
    .scalars =
        {
            {{1, 1, 1}, "dot1qVlanVersionNumber", Integer, ReadOnly, computes(constant<1>)},
            {{1, 1, 2}, "dot1qMaxVlanId", Integer, ReadOnly, computes(constant<4094>)},
            {{1, 1, 3}, "dot1qMaxSupportedVlans", Gauge32, ReadOnly, computes(constant<4094>)},
            {{1, 1, 4}, "dot1qNumVlans", Gauge32, ReadOnly, shows("show snmp vlan number")},
            {{1, 1, 5}, "dot1qGvrpStatus", Integer, ReadWrite, WRITER(write_dot1qGvrpStatus), never},
            {{1, 4, 1}, "dot1qVlanNumDeletes", Counter32, ReadOnly, shows("show snmp vlan-delete-num")},
            {{1, 4, 4}, "dot1qNextFreeLocalVlanIndex", Integer, ReadOnly, computes(constant<4096>)},
            {{1, 4, 9}, "dot1qConstraintSetDefault", Integer, ReadWrite, refuses(), never},
            {{1, 4, 10}, "dot1qConstraintTypeDefault", Integer, ReadWrite, refuses(1, 2), never},
        },
};

// --- forwarding database and groups ----------------------------------------------------------------------------------

// A VLAN's forwarding database has the VLAN's id.
TABLE(dot1qFdbTable, DOT1QFDBTABLE, 1, 2, 1, 1);

constexpr Table<VlanKey> dot1qFdbTable{
    .id = DOT1QFDBTABLE,
    .command = "show mac address-table count vlan %d",
    .columns =
        {
            {1, "dot1qFdbId", Gauge32, ReadOnly, never},
            {2, "dot1qFdbDynamicCount", Counter32, ReadOnly},
        },
};

TABLE(dot1qTpFdbTable, DOT1QTPFDBTABLE, 1, 2, 2, 1);

struct VlanMacKey {
    std::uint32_t vid;
    Mac mac;
    static constexpr Kind index[] = {Kind::integer, Kind::mac};
};

constexpr Table<VlanMacKey> dot1qTpFdbTable{
    .id = DOT1QTPFDBTABLE,
    .command =
        [](const VlanMacKey& row) {
            return Command("show uib mac address-table address %s vlan %d", lower(row.mac).c_str(), row.vid);
        },
    .columns =
        {
            {1, "dot1qTpFdbAddress", OctetString, ReadOnly, never},
            {2, "dot1qTpFdbPort", Integer, ReadOnly},
            {3, "dot1qTpFdbStatus", Integer, ReadOnly},
        },
};

TABLE(dot1qTpGroupTable, DOT1QTPGROUPTABLE, 1, 2, 3, 1);

constexpr Table<VlanMacKey> dot1qTpGroupTable{
    .id = DOT1QTPGROUPTABLE,
    .command = {"show debugging mcast group_table",
                [](const VlanMacKey& row) {
                    return Command("show debugging mcast group_table vlan %d mac %s", row.vid, upper(row.mac).c_str());
                },
                &VlanMacKey::vid},
    .columns =
        {
            {1, "dot1qTpGroupAddress", OctetString, ReadOnly, never},
            {2, "dot1qTpGroupEgressPorts", OctetString, ReadOnly},
            {3, "dot1qTpGroupLearnt", OctetString, ReadOnly},
        },
};

TABLE(dot1qForwardAllTable, DOT1QFORWARDALLTABLE, 1, 2, 4, 1);

constexpr Table<VlanKey> dot1qForwardAllTable{
    .id = DOT1QFORWARDALLTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qForwardAllPorts", OctetString, ReadOnly},
            {2, "dot1qForwardAllStaticPorts", OctetString, ReadWrite, refuses()},
            {3, "dot1qForwardAllForbiddenPorts", OctetString, ReadWrite, refuses()},
        },
};

TABLE(dot1qForwardUnregisteredTable, DOT1QFORWARDUNREGISTEREDTABLE, 1, 2, 5, 1);

constexpr Table<VlanKey> dot1qForwardUnregisteredTable{
    .id = DOT1QFORWARDUNREGISTEREDTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qForwardUnregisteredPorts", OctetString, ReadOnly},
            {2, "dot1qForwardUnregisteredStaticPorts", OctetString, ReadWrite, refuses()},
            {3, "dot1qForwardUnregisteredForbiddenPorts", OctetString, ReadWrite, refuses()},
        },
};

// --- static addresses ------------------------------------------------------------------------------------------------

struct StaticKey {
    std::uint32_t vid;
    Mac mac;
    std::uint32_t receive_port;
    static constexpr Kind index[] = {Kind::integer, Kind::mac, Kind::integer};
};

TABLE(dot1qStaticUnicastTable, DOT1QSTATICUNICASTTABLE, 1, 3, 1, 1);

constexpr Table<StaticKey> dot1qStaticUnicastTable{
    .id = DOT1QSTATICUNICASTTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qStaticUnicastAddress", OctetString, ReadOnly},
            {2, "dot1qStaticUnicastReceivePort", Integer, ReadOnly},
            {3, "dot1qStaticUnicastAllowedToGoTo", OctetString, ReadWrite, refuses()},
            {4, "dot1qStaticUnicastStatus", Integer, ReadWrite, refuses(1, 5)},
        },
};

TABLE(dot1qStaticMulticastTable, DOT1QSTATICMULTICASTTABLE, 1, 3, 2, 1);

// A list that is too long is cut, other than a VLAN's.
Error write_dot1qStaticMulticastStaticEgressPorts(Set& set) {
    StaticKey row;
    PortList ports;
    TRY(set.type(OctetString));
    TRY(set.row(row));
    set.copy(ports.octets, sizeof ports.octets);
    if (!set.acting()) return noError;
    return change_static_ports(
        set, row.mac, row.vid,
        {"show debugging mcast static_table egressport vlan %d mac %s", row.vid, lower(row.mac).c_str()}, ports);
}

Error write_dot1qStaticMulticastStatus(Set& set) {
    enum { other = 1, invalid = 2 };
    std::int32_t status;
    StaticKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.range(status, other, invalid));
    if (!set.acting() || status == other) return noError;
    return set.global({"no mac address-table static %s vlan %d", lower(row.mac).c_str(), row.vid});
}

constexpr Table<StaticKey> dot1qStaticMulticastTable{
    .id = DOT1QSTATICMULTICASTTABLE,
    .command = {"show debugging mcast static_table",
                [](const StaticKey& row) {
                    return Command("show debugging mcast static_table vlan %d mac %s", row.vid, upper(row.mac).c_str());
                },
                &StaticKey::vid},
    .columns =
        {
            {1, "dot1qStaticMulticastAddress", OctetString, ReadOnly, never},
            {2, "dot1qStaticMulticastReceivePort", Integer, ReadOnly, never},
            {3, "dot1qStaticMulticastStaticEgressPorts", OctetString, ReadWrite,
             WRITER(write_dot1qStaticMulticastStaticEgressPorts)},
            {4, "dot1qStaticMulticastForbiddenEgressPorts", OctetString, ReadWrite, refuses(), never},
            {5, "dot1qStaticMulticastStatus", Integer, ReadWrite, WRITER(write_dot1qStaticMulticastStatus)},
        },
};

// --- dot1qVlanCurrentTable -------------------------------------------------------------------------------------------

TABLE(dot1qVlanCurrentTable, DOT1QVLANCURRENTTABLE, 1, 4, 2, 1);

constexpr Table<CurrentVlanKey> dot1qVlanCurrentTable{
    .id = DOT1QVLANCURRENTTABLE,
    // The time mark is not looked at.
    .command = {"show snmp vlan-current",
                [](const CurrentVlanKey& row) { return Command("show snmp vlan-current %d", row.vid); },
                &CurrentVlanKey::vid},
    .result = kResult,
    .columns =
        {
            {1, "dot1qVlanTimeMark", TimeTicks, ReadOnly, never},
            {2, "dot1qVlanIndex", Gauge32, ReadOnly, never},
            {3, "dot1qVlanFdbId", Gauge32, ReadOnly},
            {4, "dot1qVlanCurrentEgressPorts", OctetString, ReadOnly},
            {5, "dot1qVlanCurrentUntaggedPorts", OctetString, ReadOnly},
            {6, "dot1qVlanStatus", Integer, ReadOnly},
            {7, "dot1qVlanCreationTime", TimeTicks, ReadOnly},
        },
};

// --- dot1qVlanStaticTable --------------------------------------------------------------------------------------------

TABLE(dot1qVlanStaticTable, DOT1QVLANSTATICTABLE, 1, 4, 3, 1);

struct StaticVlans {
    using Key = VlanKey;
    static constexpr VlanStatic& staged = vlan_static;
    static constexpr NumberFormat ports{"show snmp vlan-static %d portlist"};
    static constexpr int egress = 2, untagged = 4;
};

constexpr Table<VlanKey> dot1qVlanStaticTable{
    .id = DOT1QVLANSTATICTABLE,
    .command = {"show snmp vlan-static", "show snmp vlan-static %d"},
    .result = kResult,
    .columns =
        {
            {1, "dot1qVlanStaticName", OctetString, ReadWrite, SHARED(write_vlan_name<StaticVlans>)},
            {2, "dot1qVlanStaticEgressPorts", OctetString, ReadWrite, SHARED(write_egress_ports<StaticVlans>)},
            {3, "dot1qVlanForbiddenEgressPorts", OctetString, ReadWrite, SHARED(write_forbidden_ports<StaticVlans>),
             never},
            {4, "dot1qVlanStaticUntaggedPorts", OctetString, ReadWrite, SHARED(write_untagged_ports<StaticVlans>)},
            {5, "dot1qVlanStaticRowStatus", Integer, ReadWrite, SHARED(write_vlan_status<StaticVlans>)},
        },
};

// --- dot1qPortVlanTable ----------------------------------------------------------------------------------------------

TABLE(dot1qPortVlanTable, DOT1QPORTVLANTABLE, 1, 4, 5, 1);

// The third value goes beyond the MIB's two, on purpose.
Error write_dot1qPortAcceptableFrameTypes(Set& set) {
    return set.interface_line({{1, "acceptable-frame admit-all"},
                               {2, "acceptable-frame tagged-only"},
                               {3, "acceptable-frame untagged-only"}});
}

Error write_dot1qPortIngressFiltering(Set& set) {
    return set.interface_line({{1, "ingress-checking"}, {2, "no ingress-checking"}});
}

// GVRP per port: refused in every phase, before any check.
Error refuse_port_gvrp(Set&) { return genErr; }

constexpr Table<InterfaceKey> dot1qPortVlanTable{
    .id = DOT1QPORTVLANTABLE,
    .command = {"show snmp port-vlan", "show snmp port-vlan %d"},
    .result = kResult,
    .columns =
        {
            {1, "dot1qPvid", Gauge32, ReadWrite, SHARED(write_native_vlan<InterfaceKey>)},
            {2, "dot1qPortAcceptableFrameTypes", Integer, ReadWrite, WRITER(write_dot1qPortAcceptableFrameTypes)},
            {3, "dot1qPortIngressFiltering", Integer, ReadWrite, WRITER(write_dot1qPortIngressFiltering)},
            {4, "dot1qPortGvrpStatus", Integer, ReadWrite, SHARED(refuse_port_gvrp), never},
            {5, "dot1qPortGvrpFailedRegistrations", Counter32, ReadOnly, never},
            {6, "dot1qPortGvrpLastPduOrigin", OctetString, ReadOnly, never},
            {7, "dot1qPortRestrictedVlanRegistration", Integer, ReadWrite, SHARED(refuse_port_gvrp), never},
        },
};

// --- traffic of VLANs, learning constraints --------------------------------------------------------------------------

struct PortVlanKey {
    std::uint32_t port;
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

TABLE(dot1qPortVlanStatisticsTable, DOT1QPORTVLANSTATISTICSTABLE, 1, 4, 6, 1);

constexpr Table<PortVlanKey> dot1qPortVlanStatisticsTable{
    .id = DOT1QPORTVLANSTATISTICSTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qTpVlanPortInFrames", Counter32, ReadOnly},
            {2, "dot1qTpVlanPortOutFrames", Counter32, ReadOnly},
            {3, "dot1qTpVlanPortInDiscards", Counter32, ReadOnly},
            {4, "dot1qTpVlanPortInOverflowFrames", Counter32, ReadOnly},
            {5, "dot1qTpVlanPortOutOverflowFrames", Counter32, ReadOnly},
            {6, "dot1qTpVlanPortInOverflowDiscards", Counter32, ReadOnly},
        },
};

TABLE(dot1qPortVlanHCStatisticsTable, DOT1QPORTVLANHCSTATISTICSTABLE, 1, 4, 7, 1);

constexpr Table<PortVlanKey> dot1qPortVlanHCStatisticsTable{
    .id = DOT1QPORTVLANHCSTATISTICSTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qTpVlanPortHCInFrames", Counter64, ReadOnly},
            {2, "dot1qTpVlanPortHCOutFrames", Counter64, ReadOnly},
            {3, "dot1qTpVlanPortHCInDiscards", Counter64, ReadOnly},
        },
};

TABLE(dot1qLearningConstraintsTable, DOT1QLEARNINGCONSTRAINTSTABLE, 1, 4, 8, 1);

struct ConstraintKey {
    std::uint32_t vid;
    std::uint32_t set;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

constexpr Table<ConstraintKey> dot1qLearningConstraintsTable{
    .id = DOT1QLEARNINGCONSTRAINTSTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1qConstraintVlan", Gauge32, ReadOnly},
            {2, "dot1qConstraintSet", Integer, ReadOnly},
            {3, "dot1qConstraintType", Integer, ReadWrite, refuses()},
            {4, "dot1qConstraintStatus", Integer, ReadWrite, refuses()},
        },
};

// --- dot1vProtocolGroupTable -----------------------------------------------------------------------------------------

TABLE(dot1vProtocolGroupTable, DOT1VPROTOCOLGROUPTABLE, 1, 5, 1, 1);

struct QBridgeProtocols : Protocols {
    static constexpr const char* group_id = "qbridge protocol-group-id";
};
using QBridgeGroup = GroupRow<QBridgeProtocols>;
using QBridgeBinding = BindingRow<QBridgeProtocols>;

constexpr Table<ProtocolKey> dot1vProtocolGroupTable{
    .id = DOT1VPROTOCOLGROUPTABLE,
    .command = {"show snmp qbridge protocol-group",
                [](const ProtocolKey& row) { return show_protocol("qbridge protocol-group", row); },
                &ProtocolKey::frame_type},
    .result = kResult,
    .columns =
        {
            {1, "dot1vProtocolTemplateFrameType", Integer, ReadOnly, never},
            {2, "dot1vProtocolTemplateProtocolValue", OctetString, ReadOnly, never},
            {3, "dot1vProtocolGroupId", Integer, ReadWrite, SHARED(write_group_id<QBridgeProtocols>)},
            {4, "dot1vProtocolGroupRowStatus", Integer, ReadWrite, SHARED(write_staged_status<QBridgeGroup>)},
        },
};

// --- dot1vProtocolPortTable ------------------------------------------------------------------------------------------

TABLE(dot1vProtocolPortTable, DOT1VPROTOCOLPORTTABLE, 1, 5, 2, 1);

constexpr Table<BindingKey> dot1vProtocolPortTable{
    .id = DOT1VPROTOCOLPORTTABLE,
    .command = {"show snmp qbridge protocol-vlan", [](const BindingKey& row) { return show_binding("qbridge ", row); },
                &BindingKey::ifindex},
    .result = kResult,
    .columns =
        {
            {1, "dot1vProtocolPortGroupId", Integer, ReadOnly, never},
            {2, "dot1vProtocolPortGroupVid", Integer, ReadWrite, SHARED(write_staged_vlan<QBridgeBinding>)},
            {3, "dot1vProtocolPortRowStatus", Integer, ReadWrite, SHARED(write_staged_status<QBridgeBinding>)},
        },
};

MODULE_END(71, qBridgeMIBGlobals, dot1qFdbTable, dot1qTpFdbTable, dot1qTpGroupTable, dot1qForwardAllTable,
           dot1qForwardUnregisteredTable, dot1qStaticUnicastTable, dot1qStaticMulticastTable, dot1qVlanCurrentTable,
           dot1qVlanStaticTable, dot1qPortVlanTable, dot1qPortVlanStatisticsTable, dot1qPortVlanHCStatisticsTable,
           dot1qLearningConstraintsTable, dot1vProtocolGroupTable, dot1vProtocolPortTable);

}  // namespace switchmib::MODULE
