// VLANs by MAC address, by IP subnet and by protocol, and the VLAN settings of ports: their mode, which frames they
// take, the VLANs that they carry.
#define MODULE corvinVlanMIB
#include "L2/vlans.h"
#include "framework/module.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 9);

// A row of the tables of MAC addresses and subnets between varbinds and requests: one at a time for each table.
template <class What>
struct Classified {
    What what;
    std::uint32_t vid;
    std::uint32_t priority;
    std::uint32_t pending;
};
using MacVlan = Classified<Mac>;
using SubnetVlan = Classified<InetText>;
static_assert(sizeof(MacVlan) == 20 && offsetof(MacVlan, vid) == 8 && sizeof(SubnetVlan) == 84);

SWITCHMIB_EXPORT MacVlan mac_vlan;
constinit MacVlan mac_vlan{};
SWITCHMIB_EXPORT SubnetVlan subnet_vlan;
constinit SubnetVlan subnet_vlan{};

// --- scalars ---------------------------------------------------------------------------------------------------------

constexpr Scalars corvinVlanMIBGlobals{
    .name = "corvinVlanMIBGlobals",
    .scalars =
        {
            {{1, 6}, "nVlanScalar6", Integer, ReadWrite, refuses(), never},
            {{1, 7}, "nVlanScalar7", Integer, ReadWrite, refuses(1, 2), never},
        },
};

// --- nVlanMacVlanTable, nVlanSubnetVlanTable -------------------------------------------------------------------------

TABLE(nVlanMacVlanTable, NVLANMACVLANTABLE, 1, 1, 1);
TABLE(nVlanSubnetVlanTable, NVLANSUBNETVLANTABLE, 1, 2, 1);

struct MacKey {
    Mac what;
    static constexpr Kind index[] = {Kind::mac};
};
struct SubnetKey {
    InetText what;
    static constexpr Kind index[] = {Kind::inet_text};
};

Command show(const Mac& mac) { return {"show snmp mac-vlan %s", lower(mac).c_str()}; }
Command show(const InetText& subnet) {
    return {"show snmp subnet-vlan %d %s/%d", subnet.type, subnet.text, subnet.prefix_length};
}

// The words that begin the lines of a MAC address or subnet; no_answer for one that has none.
using Words = Text<128>;
Words words(const char* no, const Mac& mac) { return {"%smac-vlan %s", no, lower(mac).c_str()}; }
Words words(const char* no, const InetText& subnet) {
    if (subnet.type != kIpv4 && subnet.type != kIpv6) return no_answer;
    return {"%ssubnet-vlan ipv%d %s/%d", no, subnet.type == kIpv4 ? 4 : 6, subnet.text, subnet.prefix_length};
}

// Columns and row status stage in COMMIT, too.
template <class Key, auto& record, int column>
struct Classification : StagedRow<true, true> {
    using Row = std::remove_reference_t<decltype(record)>;
    Key key;
    static constexpr Row& staged = record;
    static constexpr int vlan_column = column, priority_column = column + 1;

    void stage(std::uint32_t vid) const { staged = {key.what, vid, 0, 0}; }
    std::uint32_t current(const Set& set, int of) const { return number_of(set, show(key.what), of); }
    static Error add(const Set& set, const Row& row) {
        const Words what = words("", row.what);
        return what.refused() ? genErr : set.global({"%s vlan %d priority %d", what.c_str(), row.vid, row.priority});
    }
    static Error create(const Set& set) { return add(set, staged); }  // the record's, whatever the row
    Error remove(const Set& set) const {
        const Words what = words("no ", key.what);
        return what.refused() ? genErr : set.global(what.c_str());
    }
    Error replace(const Set& set, std::uint32_t vid, std::uint32_t priority) const {
        TRY(remove(set));
        return add(set, {key.what, vid, priority, 0});
    }
};
using MacRow = Classification<MacKey, mac_vlan, 2>;
using SubnetRow = Classification<SubnetKey, subnet_vlan, 4>;

constexpr Table<MacKey> nVlanMacVlanTable{
    .id = NVLANMACVLANTABLE,
    .command = [](const MacKey& row) { return show(row.what); },
    .columns =
        {
            {1, "nVlanMacVlanAddr", OctetString, ReadOnly, never},
            {2, "nVlanMacVlanId", Integer, ReadWrite, SHARED(write_staged_vlan<MacRow>)},
            {3, "nVlanMacVlanPriority", Gauge32, ReadWrite, SHARED(write_staged_priority<MacRow>)},
            {4, "nVlanMacVlanStatus", Integer, ReadOnly},
            {5, "nVlanMacVlanRowStatus", Integer, ReadWrite, SHARED(write_staged_status<MacRow>)},
        },
};

constexpr Table<SubnetKey> nVlanSubnetVlanTable{
    .id = NVLANSUBNETVLANTABLE,
    .command =
        [](const SubnetKey& row) {
            return row.what.type == kNoAddress ? Command("show snmp subnet-vlan 0 0/0") : show(row.what);
        },
    .columns =
        {
            {1, "nVlanSubnetVlanAddrType", Integer, ReadOnly, never},
            {2, "nVlanSubnetVlanAddr", OctetString, ReadOnly, never},
            {3, "nVlanSubnetVlanPrefixLen", Gauge32, ReadOnly, never},
            {4, "nVlanSubnetVlanId", Integer, ReadWrite, SHARED(write_staged_vlan<SubnetRow>)},
            {5, "nVlanSubnetVlanPriority", Gauge32, ReadWrite, SHARED(write_staged_priority<SubnetRow>)},
            {6, "nVlanSubnetVlanRowStatus", Integer, ReadWrite, SHARED(write_staged_status<SubnetRow>)},
        },
};

// --- nVlanPortIfCtrlTable --------------------------------------------------------------------------------------------

TABLE(nVlanPortIfCtrlTable, NVLANPORTIFCTRLTABLE, 1, 3, 1);

Error write_nVlanPortIfMode(Set& set) {
    return set.interface_line({{1, "switchport mode access"},
                               {2, "switchport mode hybrid"},
                               {3, "switchport mode trunk"},
                               {4, "switchport mode dot1q-tunnel"},
                               {5, "switchport mode private-vlan host"},
                               {6, "switchport mode private-vlan promiscuous"}});
}

Error write_nVlanPortIfTrunkNativeVlanTag(Set& set) {
    return set.interface_line({{1, "switchport trunk native vlan tag"}, {2, "no switchport trunk native vlan tag"}});
}

// Other numbers than the Q-bridge has for the same lines.
Error write_nVlanPortIfAcceptableFrameTypes(Set& set) {
    return set.interface_line({{1, "acceptable-frame tagged-only"},
                               {2, "acceptable-frame untagged-only"},
                               {3, "acceptable-frame admit-all"}});
}

Error write_nVlanPortIfVlanPrecedence(Set& set) {
    return set.interface_line({{1, "vlan precedence mac-vlan"}, {2, "vlan precedence subnet-vlan"}});
}

// A list of VLANs becomes a line for each VLAN that it adds or removes. Every list counts from VLAN 1, those of the
// second 2048 VLANs as well. `other` is the mode besides hybrid whose ports have such a list.
template <int column, PortMode other, AddVlan add>
Error write_vlan_list(Set& set) {
    InterfaceKey row;
    InterfaceName name;
    VlanList wanted;
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof wanted.octets));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, name));
    if (!set.acting()) return noError;
    set.copy(wanted.octets, sizeof wanted.octets);
    const Command show("show snmp vlan-port %d", row.ifindex);
    VlanList current;  // empty when the lookup is refused
    set.lookup(show, column, current.octets, sizeof current.octets);
    std::uint32_t mode = number_of(set, show, 2);
    if (mode != hybridPort && mode != other) mode = 0;  // which has no lines
    // A port that cannot be entered is passed over without an error, on purpose.
    if (set.enter(name) != noError) return noError;
    const auto change = [&](AddVlan* line) {
        return [&set, mode, line](int vid) { return line(set, mode, static_cast<std::uint32_t>(vid)); };
    };
    const Difference lists(current, wanted);
    TRY(lists.removed.for_each(change(remove_vlan)));
    return lists.added.for_each(change(add));
}
template <int column>
constexpr auto write_tagged_list = write_vlan_list<column, trunkPort, add_tagged_vlan>;
template <int column>
constexpr auto write_untagged_list = write_vlan_list<column, accessPort, add_untagged_vlan>;

constexpr Table<InterfaceKey> nVlanPortIfCtrlTable{
    .id = NVLANPORTIFCTRLTABLE,
    .command = "show snmp vlan-port %d",
    .columns =
        {
            {1, "nVlanPortIfIndex", Integer, ReadOnly, never},
            {2, "nVlanPortIfMode", Integer, ReadWrite, WRITER(write_nVlanPortIfMode)},
            {3, "nVlanPortIfTrunkNativeVlanTag", Integer, ReadWrite, WRITER(write_nVlanPortIfTrunkNativeVlanTag)},
            {4, "nVlanPortIfAcceptableFrameTypes", Integer, ReadWrite, WRITER(write_nVlanPortIfAcceptableFrameTypes)},
            {5, "nVlanPortIfVlanPrecedence", Integer, ReadWrite, WRITER(write_nVlanPortIfVlanPrecedence)},
            {6, "nVlanPortIfTagAllowVlanLstFirst2K", OctetString, ReadWrite, SHARED(write_tagged_list<6>)},
            {7, "nVlanPortIfTagAllowVlanLstSecond2K", OctetString, ReadWrite, SHARED(write_tagged_list<7>)},
            {8, "nVlanPortIfUntagAllowVlanLstFirst2K", OctetString, ReadWrite, SHARED(write_untagged_list<8>)},
            {9, "nVlanPortIfUntagAllowVlanLstSecond2K", OctetString, ReadWrite, SHARED(write_untagged_list<9>)},
        },
};

// --- nVlanProtocolVlanGroupTable, nVlanProtocolVlanIfCtrlTable -------------------------------------------------------

TABLE(nVlanProtocolVlanGroupTable, NVLANPROTOCOLVLANGROUPTABLE, 1, 4, 1);
TABLE(nVlanProtocolVlanIfCtrlTable, NVLANPROTOCOLVLANIFCTRLTABLE, 1, 5, 1);

// Here LLC is 3, an unchanged group is sent again, and the row status stages in COMMIT, too.
struct CorvinProtocols : Protocols {
    static constexpr std::uint32_t llc = 3;
    static constexpr Asn group_type = Gauge32;
    static constexpr const char* group_id = "protocol-group-id";
    static constexpr bool sends_same_group = true;
    static constexpr bool clears_before_line = false;
    static constexpr bool status_stages_in_commit = true;
    static constexpr bool has_priority = true;
};
using CorvinGroup = GroupRow<CorvinProtocols>;
using CorvinBinding = BindingRow<CorvinProtocols>;

constexpr Table<ProtocolKey> nVlanProtocolVlanGroupTable{
    .id = NVLANPROTOCOLVLANGROUPTABLE,
    .command = {"show snmp protocol-group", [](const ProtocolKey& row) { return show_protocol("protocol-group", row); },
                &ProtocolKey::frame_type},
    .columns =
        {
            {1, "nVlanProtocolVlanFrameType", Integer, ReadOnly, never},
            {2, "nVlanProtocolVlanProtocolValue", OctetString, ReadOnly, never},
            {3, "nVlanProtocolVlanGroupId", Gauge32, ReadWrite, SHARED(write_group_id<CorvinProtocols>)},
            {4, "nVlanProtocolVlanGroupRowStatus", Integer, ReadWrite, SHARED(write_staged_status<CorvinGroup>)},
        },
};

constexpr Table<BindingKey> nVlanProtocolVlanIfCtrlTable{
    .id = NVLANPROTOCOLVLANIFCTRLTABLE,
    .command = {"show snmp protocol-vlan", [](const BindingKey& row) { return show_binding("", row); },
                &BindingKey::ifindex},
    .columns =
        {
            {1, "nVlanProtocolVlanIfIndex", Integer, ReadOnly, never},
            {2, "nVlanProtocolVlanIfGroupId", Gauge32, ReadOnly, never},
            {3, "nVlanProtocolVlanVlanId", Integer, ReadWrite, SHARED(write_staged_vlan<CorvinBinding>)},
            {4, "nVlanProtocolVlanPriority", Gauge32, ReadWrite, SHARED(write_staged_priority<CorvinBinding>)},
            {5, "nVlanProtocolVlanRowStatus", Integer, ReadWrite, SHARED(write_staged_status<CorvinBinding>)},
        },
};

MODULE_END(31, corvinVlanMIBGlobals, nVlanMacVlanTable, nVlanSubnetVlanTable, nVlanPortIfCtrlTable,
           nVlanProtocolVlanGroupTable, nVlanProtocolVlanIfCtrlTable);

}  // namespace switchmib::MODULE
