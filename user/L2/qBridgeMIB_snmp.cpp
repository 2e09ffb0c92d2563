// Q-BRIDGE-MIB: the VLANs, who belongs to them, and each port's VLAN settings.
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
    static constexpr const char* show = "";
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

MODULE_END(35, qBridgeMIBGlobals, dot1qVlanCurrentTable, dot1qVlanStaticTable, dot1qPortVlanTable,
           dot1vProtocolGroupTable, dot1vProtocolPortTable);

}  // namespace switchmib::MODULE
