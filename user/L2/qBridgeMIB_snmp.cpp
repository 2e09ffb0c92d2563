// Q-BRIDGE-MIB: the VLANs, who belongs to them, and each port's VLAN settings.
//
// A VLAN's row may be set column by column or at once. With a row status in the request, its columns only stage their
// values in RESERVE1, and the row status applies them all in ACTION.
#define MODULE qBridgeMIB
#include "framework/ifindex.h"
#include "framework/lists.h"
#include "framework/module.h"
#include "framework/write.h"

#include <algorithm>
#include <cstring>

namespace switchmib::MODULE {

MODULE_OID(kMib2, 17, 7);

unsigned char result_buffer[512];
constexpr Result kResult = result_buffer;

struct CurrentVlanKey {
    std::uint32_t time_mark;
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// A VLAN's row between the varbinds of a request, and between requests: one at a time.
struct VlanStatic {
    std::uint32_t vid;  // the name's row; the row status goes by its own index
    char name[33];
    PortList egress;
    PortList forbidden;  // never used
    PortList untagged;
    std::uint32_t pending;  // a row status is in the request: the columns leave ACTION to it
    std::uint32_t create_failed;
};
static_assert(sizeof(VlanStatic) == 84 && offsetof(VlanStatic, egress) == 37 && offsetof(VlanStatic, pending) == 76);

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

enum PortMode : std::uint32_t { accessPort = 1, hybridPort = 2, trunkPort = 3, untaggedHybridPort = 4 };

std::uint32_t port_mode(const Set& set, std::uint32_t ifindex) {
    std::uint32_t mode = 0;
    set.lookup({"show snmp vlan-mode %d", ifindex}, 0, &mode, sizeof mode);
    return mode;
}

// Enters a bridge port, and tells the mode that its VLAN lines go by.
Error enter_port(const Set& set, int port, std::uint32_t& mode) {
    const std::uint32_t ifindex = kPortIfIndexBase + static_cast<std::uint32_t>(port);
    InterfaceName name;
    mode = port_mode(set, ifindex);
    TRY(set.interface_name(ifindex, name));
    return set.enter(name);
}

Error remove_port(const Set& set, int port, std::uint32_t vid) {
    std::uint32_t mode;
    TRY(enter_port(set, port, mode));
    switch (mode) {
        case accessPort: return set.sub("no switchport access vlan");
        case hybridPort:
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan remove %d", vid});
        case trunkPort: return set.sub({"switchport trunk allowed vlan remove %d", vid});
        default: return genErr;
    }
}

Error add_tagged_port(const Set& set, int port, std::uint32_t vid) {
    std::uint32_t mode;
    TRY(enter_port(set, port, mode));
    switch (mode) {
        case accessPort: return set.sub({"switchport access vlan %d", vid});
        case hybridPort: return set.sub({"switchport hybrid allowed vlan add tagged %d", vid});
        case trunkPort: return set.sub({"switchport trunk allowed vlan add %d", vid});
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan add untagged %d", vid});
        default: return genErr;
    }
}

Error add_untagged_port(const Set& set, int port, std::uint32_t vid) {
    std::uint32_t mode;
    TRY(enter_port(set, port, mode));
    switch (mode) {
        case accessPort: return set.sub({"switchport access vlan %d", vid});
        case hybridPort:
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan add untagged %d", vid});
        default: return genErr;  // a trunk carries no VLAN untagged
    }
}

using AddPort = Error(const Set&, int port, std::uint32_t vid);

// Makes `wanted` of the ports that column `column` has now: all removals, then all additions.
Error change_ports(const Set& set, std::uint32_t vid, int column, const PortList& wanted, AddPort* add_port) {
    PortList current;  // empty when the lookup is refused
    set.lookup({"show snmp vlan-static %d portlist", vid}, column, current.octets, sizeof current.octets);
    const Difference change(current, wanted);
    TRY(change.removed.for_each([&](int port) { return remove_port(set, port, vid); }));
    return change.added.for_each([&](int port) { return add_port(set, port, vid); });
}

bool staged_untagged_is_egress() {
    return vlan_static.untagged.for_each([](int port) {
        return PORTLIST_chk_port_exist(vlan_static.egress.octets, port) ? noError : genErr;
    }) == noError;
}

Error write_dot1qVlanStaticName(Set& set) {
    VlanKey row;
    char name[sizeof vlan_static.name];
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof name - 1));
    TRY(set.row(row));
    TRY(set.text(name));
    if (set.phase == reserve1) {
        vlan_static = {};
        vlan_static.vid = row.vid;
        std::copy_n(name, sizeof name, vlan_static.name);
    }
    if (!set.acting() || vlan_static.pending) return noError;
    TRY(set.global({"vlan %d", row.vid}));
    return set.sub({"name %s", name});
}

// What the three port-list columns begin with: RESERVE1 stages the list.
Error stage_ports(const Set& set, VlanKey& row, PortList& ports, PortList VlanStatic::*staged) {
    ports = {};
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof ports.octets));
    TRY(set.row(row));
    set.copy(ports.octets, sizeof ports.octets);
    if (set.phase == reserve1) {
        vlan_static.pending = 0;
        vlan_static.*staged = ports;
    }
    return noError;
}

Error write_dot1qVlanStaticEgressPorts(Set& set) {
    VlanKey row;
    PortList ports;
    TRY(stage_ports(set, row, ports, &VlanStatic::egress));
    if (!set.acting() || vlan_static.pending) return noError;
    return change_ports(set, row.vid, 2, ports, add_tagged_port);
}

// Staged and never applied.
Error write_dot1qVlanForbiddenEgressPorts(Set& set) {
    VlanKey row;
    PortList ports;
    return stage_ports(set, row, ports, &VlanStatic::forbidden);
}

Error write_dot1qVlanStaticUntaggedPorts(Set& set) {
    VlanKey row;
    PortList ports;
    TRY(stage_ports(set, row, ports, &VlanStatic::untagged));
    if (vlan_static.pending) return noError;
    if (set.phase == reserve2 && !PORTLIST_chk_empty(vlan_static.egress.octets) && !staged_untagged_is_egress())
        return genErr;
    return set.acting() ? change_ports(set, row.vid, 4, ports, add_untagged_port) : noError;
}

// Creates the staged row under the row status's own VLAN id.
Error create_vlan(const Set& set, std::uint32_t vid) {
    if (const Error error = set.global({"vlan %d", vid}); error != noError) {
        vlan_static.create_failed = 1;
        return error;
    }
    // The name that the backend gives by itself is not sent.
    const Text<sizeof vlan_static.name> default_name("VLAN%04d", vid);
    if (vlan_static.name[0] != '\0' && std::strcmp(vlan_static.name, default_name) != 0)
        TRY(set.sub({"name %s", vlan_static.name}));
    TRY(vlan_static.untagged.for_each([&](int port) { return add_untagged_port(set, port, vid); }));
    const PortList tagged = vlan_static.egress.differing(vlan_static.untagged);
    TRY(tagged.for_each([&](int port) { return add_tagged_port(set, port, vid); }));
    vlan_static = {};
    return noError;
}

Error write_dot1qVlanStaticRowStatus(Set& set) {
    std::int32_t status;
    VlanKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.row_status(status));
    switch (set.phase) {
        case reserve1:
            // For every status, and whatever is staged; a refusal leaves the flag set.
            vlan_static.pending = 1;
            return staged_untagged_is_egress() ? noError : genErr;
        case action:
            if (status == createAndGo) return create_vlan(set, row.vid);
            if (status == destroy) return set.global({"no vlan %d", row.vid});
            return noError;
        case undo: {
            // Takes the VLAN away even when the request being undone didn't create it, on purpose.
            const bool created = vlan_static.create_failed != 1;
            vlan_static = {};
            return created ? set.global({"no vlan %d", row.vid}) : noError;
        }
        default: return noError;
    }
}

constexpr Table<VlanKey> dot1qVlanStaticTable{
    .id = DOT1QVLANSTATICTABLE,
    .command = {"show snmp vlan-static", "show snmp vlan-static %d"},
    .result = kResult,
    .columns =
        {
            {1, "dot1qVlanStaticName", OctetString, ReadWrite, WRITER(write_dot1qVlanStaticName)},
            {2, "dot1qVlanStaticEgressPorts", OctetString, ReadWrite, WRITER(write_dot1qVlanStaticEgressPorts)},
            {3, "dot1qVlanForbiddenEgressPorts", OctetString, ReadWrite, WRITER(write_dot1qVlanForbiddenEgressPorts),
             never},
            {4, "dot1qVlanStaticUntaggedPorts", OctetString, ReadWrite, WRITER(write_dot1qVlanStaticUntaggedPorts)},
            {5, "dot1qVlanStaticRowStatus", Integer, ReadWrite, WRITER(write_dot1qVlanStaticRowStatus)},
        },
};

// --- dot1qPortVlanTable ----------------------------------------------------------------------------------------------

TABLE(dot1qPortVlanTable, DOT1QPORTVLANTABLE, 1, 4, 5, 1);

Error write_dot1qPvid(Set& set) {
    std::uint32_t pvid;
    InterfaceKey row;
    InterfaceName name;
    TRY(set.unsigned32(pvid));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, name));
    if (!set.acting()) return noError;
    const std::uint32_t mode = port_mode(set, row.ifindex);
    TRY(set.enter(name));
    switch (mode) {
        case hybridPort: return set.sub({"switchport hybrid native vlan %d", pvid});
        case trunkPort: return set.sub({"switchport trunk native vlan %d", pvid});
        // The port's interface index stands where the PVID would; backends are matched to it.
        case untaggedHybridPort: return set.sub({"switchport hybrid native vlan %d", row.ifindex});
        default: return genErr;
    }
}

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
            {1, "dot1qPvid", Gauge32, ReadWrite, WRITER(write_dot1qPvid)},
            {2, "dot1qPortAcceptableFrameTypes", Integer, ReadWrite, WRITER(write_dot1qPortAcceptableFrameTypes)},
            {3, "dot1qPortIngressFiltering", Integer, ReadWrite, WRITER(write_dot1qPortIngressFiltering)},
            {4, "dot1qPortGvrpStatus", Integer, ReadWrite, SHARED(refuse_port_gvrp), never},
            {5, "dot1qPortGvrpFailedRegistrations", Counter32, ReadOnly, never},
            {6, "dot1qPortGvrpLastPduOrigin", OctetString, ReadOnly, never},
            {7, "dot1qPortRestrictedVlanRegistration", Integer, ReadWrite, SHARED(refuse_port_gvrp), never},
        },
};

MODULE_END(28, qBridgeMIBGlobals, dot1qVlanCurrentTable, dot1qVlanStaticTable, dot1qPortVlanTable);

}  // namespace switchmib::MODULE
