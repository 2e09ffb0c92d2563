// What the VLAN modules share: the ports of a VLAN, the rows that a request collects before its row status applies
// them, protocol groups and their bindings to ports. Where the modules differ, the difference is a type that the
// templates here take.
#pragma once

#include "framework/address.h"
#include "framework/lists.h"
#include "framework/module.h"
#include "framework/write.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace switchmib {

// Some tables name the bridge's component in their index. The switch has one.
inline constexpr std::uint32_t kComponent = 1;

// The index parsed exactly, of the switch's own component.
template <class Key>
Error bridge_row(const Set& set, Key& row) {
    TRY(set.row(row));
    if constexpr (requires { row.component; })
        if (row.component != kComponent) return noSuchName;
    return noError;
}

// A number that the backend has for a writer; 0 when it is refused.
inline std::uint32_t number_of(const Set& set, const Command& show, int column) {
    std::uint32_t number = 0;
    return set.lookup(show, column, &number, sizeof number) ? number : 0;
}

// --- ports of a VLAN -------------------------------------------------------------------------------------------------

// A port's VLAN mode as "show snmp vlan-mode" gives it; 0 when it is refused.
enum PortMode : std::uint32_t { accessPort = 1, hybridPort = 2, trunkPort = 3, untaggedHybridPort = 4 };
std::uint32_t port_mode(const Set& set, std::uint32_t ifindex);

// Each sends the line that a port in this mode, which was entered, has for it; genErr in a mode that has none.
using AddVlan = Error(const Set&, std::uint32_t mode, std::uint32_t vid);
AddVlan add_tagged_vlan, add_untagged_vlan, remove_vlan;

// Makes `wanted` of the ports that column `column` of the command `show` has now: all removals, then all additions.
Error change_ports(const Set& set, std::uint32_t vid, const Command& show, int column, const PortList& wanted,
                   AddVlan* add);

// The VLAN of a port's untagged frames, by its mode.
Error set_native_vlan(const Set& set, std::uint32_t ifindex, const InterfaceName& name, std::uint32_t vid);

// A writer of the PVID in a table keyed by ifIndex.
template <class Key>
Error write_native_vlan(Set& set) {
    std::uint32_t vid;
    Key row;
    InterfaceName name;
    TRY(set.unsigned32(vid));
    TRY(bridge_row(set, row));
    TRY(set.interface_name(row.ifindex, name));
    return set.acting() ? set_native_vlan(set, row.ifindex, name, vid) : noError;
}

// --- static VLANs ----------------------------------------------------------------------------------------------------

// A VLAN's row between the varbinds of a request, and between requests: one at a time for each module.
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

bool untagged_is_egress(const VlanStatic& staged);
Error create_vlan(const Set& set, VlanStatic& staged, std::uint32_t vid);

// The writers of a table of static VLANs. V says how one module's differs:
//
//     struct StaticVlans {
//         using Key = VlanKey;                             with the VLAN id as `vid`
//         static constexpr VlanStatic& staged = vlan_static;
//         static constexpr NumberFormat ports{"show snmp vlan-static %d portlist"};
//         static constexpr int egress = 2, untagged = 4;   its columns
//     };
template <class V>
Error write_vlan_name(Set& set) {
    typename V::Key row;
    char name[sizeof V::staged.name];
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof name - 1));
    TRY(bridge_row(set, row));
    TRY(set.text(name));
    if (set.phase == reserve1) {
        V::staged = {};
        V::staged.vid = row.vid;
        std::copy_n(name, sizeof name, V::staged.name);
    }
    if (!set.acting() || V::staged.pending) return noError;
    TRY(set.global({"vlan %d", row.vid}));
    return set.sub({"name %s", name});
}

// What the three port-list columns begin with: RESERVE1 stages the list.
template <class V>
Error stage_ports(const Set& set, typename V::Key& row, PortList& ports, PortList VlanStatic::*list) {
    ports = {};
    TRY(set.type(OctetString));
    TRY(set.at_most(sizeof ports.octets));
    TRY(bridge_row(set, row));
    set.copy(ports.octets, sizeof ports.octets);
    if (set.phase == reserve1) {
        V::staged.pending = 0;
        V::staged.*list = ports;
    }
    return noError;
}

template <class V>
Error change_vlan_ports(const Set& set, std::uint32_t vid, int column, const PortList& wanted, AddVlan* add) {
    return change_ports(set, vid, {V::ports, vid}, column, wanted, add);
}

template <class V>
Error write_egress_ports(Set& set) {
    typename V::Key row;
    PortList ports;
    TRY(stage_ports<V>(set, row, ports, &VlanStatic::egress));
    if (!set.acting() || V::staged.pending) return noError;
    return change_vlan_ports<V>(set, row.vid, V::egress, ports, add_tagged_vlan);
}

// Staged and never applied.
template <class V>
Error write_forbidden_ports(Set& set) {
    typename V::Key row;
    PortList ports;
    return stage_ports<V>(set, row, ports, &VlanStatic::forbidden);
}

template <class V>
Error write_untagged_ports(Set& set) {
    typename V::Key row;
    PortList ports;
    TRY(stage_ports<V>(set, row, ports, &VlanStatic::untagged));
    if (V::staged.pending) return noError;
    if (set.phase == reserve2 && !PORTLIST_chk_empty(V::staged.egress.octets) && !untagged_is_egress(V::staged))
        return genErr;
    return set.acting() ? change_vlan_ports<V>(set, row.vid, V::untagged, ports, add_untagged_vlan) : noError;
}

template <class V>
Error write_vlan_status(Set& set) {
    std::int32_t status;
    typename V::Key row;
    TRY(set.integer(status));
    TRY(bridge_row(set, row));
    TRY(set.row_status(status));
    switch (set.phase) {
        case reserve1:
            // For every status, and whatever is staged; a refusal leaves the flag set.
            V::staged.pending = 1;
            return untagged_is_egress(V::staged) ? noError : genErr;
        case action:
            if (status == createAndGo) return create_vlan(set, V::staged, row.vid);
            if (status == destroy) return set.global({"no vlan %d", row.vid});
            return noError;
        case undo: {
            // Takes the VLAN away even when the request being undone didn't create it, on purpose.
            const bool created = V::staged.create_failed != 1;
            V::staged = {};
            return created ? set.global({"no vlan %d", row.vid}) : noError;
        }
        default: return noError;
    }
}

// --- rows that a request collects ------------------------------------------------------------------------------------

// A row of such a table in one phase of a SET. Its columns stage what they are set to in a record, whose `pending` flag
// says that a row status is in the request and applies it; without one they act on their own. A table's type R adds
//
//     Key key;
//     static constexpr Record& staged = record;
//     Error check(const Set&);                      what the row status checks before its value
//     Error create(const Set&), remove(const Set&)  what createAndGo and destroy send
//
// and where its columns are a VLAN id and a priority
//
//     static constexpr int vlan_column = 2, priority_column = 3;
//     void stage(std::uint32_t vid) const;                             a clear record, for this row
//     std::uint32_t current(const Set&, int column) const;             what the row has now; 0 when it is refused
//     Error replace(const Set&, std::uint32_t vid, std::uint32_t priority);
template <bool columns, bool status>
struct StagedRow {
    // Besides RESERVE1 in COMMIT, too, after the row was applied: that is for the next request.
    static constexpr bool columns_stage_in_commit = columns, status_stages_in_commit = status;

    static Error check(const Set&) { return noError; }
};

inline bool stages(const Set& set, bool in_commit) {
    return set.phase == reserve1 || (in_commit && set.phase == commit);
}

template <class R>
Error write_staged_status(Set& set) {
    std::int32_t status;
    R row;
    TRY(set.integer(status));
    TRY(bridge_row(set, row.key));
    TRY(row.check(set));
    TRY(set.row_status(status));
    if (stages(set, R::status_stages_in_commit)) R::staged.pending = 1;
    if (!set.acting()) return noError;
    if (status == createAndGo) return row.create(set);
    return status == destroy ? row.remove(set) : noError;
}

template <class R>
Error write_staged_vlan(Set& set) {
    std::int32_t vid;
    R row;
    TRY(set.integer(vid));
    TRY(bridge_row(set, row.key));
    if (stages(set, R::columns_stage_in_commit)) row.stage(static_cast<std::uint32_t>(vid));
    if (!set.acting() || R::staged.pending) return noError;
    return row.replace(set, static_cast<std::uint32_t>(vid), row.current(set, R::priority_column));
}

template <class R>
Error write_staged_priority(Set& set) {
    std::uint32_t priority;
    R row;
    TRY(set.unsigned32(priority));
    TRY(bridge_row(set, row.key));
    if (stages(set, R::columns_stage_in_commit)) {
        R::staged.pending = 0;
        R::staged.priority = priority;
    }
    if (!set.acting() || R::staged.pending) return noError;
    return row.replace(set, row.current(set, R::vlan_column), priority);
}

// --- protocol groups -------------------------------------------------------------------------------------------------

// The records are the same for all modules: a row that is pending in one is seen by the others.
struct ProtoGroup {
    std::uint32_t frame_type;
    Octets<2> protocol;
    Octets<2> zero;
    std::uint32_t group;
    std::uint32_t pending;
};
struct ProtoPort {
    std::uint32_t ifindex;
    std::uint32_t group;
    std::uint32_t vid;
    std::uint32_t priority;
    std::uint32_t pending;
};
static_assert(sizeof(ProtoGroup) == 16 && offsetof(ProtoGroup, group) == 8 && sizeof(ProtoPort) == 20);
SWITCHMIB_EXPORT ProtoGroup proto_group;
SWITCHMIB_EXPORT ProtoPort proto_port;

struct ProtocolKey {
    std::uint32_t frame_type;
    Octets<2> protocol;
    static constexpr Kind index[] = {Kind::integer, Kind::counted_string(2)};
};
struct BindingKey {
    std::uint32_t ifindex;
    std::uint32_t group;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// The protocol value in commands: the low digit of each octet comes before its high one, 0x0800 is "8000". Backends are
// matched to it.
using ProtocolText = Text<5>;
ProtocolText protocol_text(const Octets<2>& protocol);

// The command of a group's row, or for the group that it has: "show snmp <what> <frame type> 0x<protocol value>".
template <class Key>
Command show_protocol(const char* what, const Key& row) {
    return {"show snmp %s %d 0x%s", what, row.frame_type, protocol_text(row.protocol).c_str()};
}

// The word for a frame type: 1 is Ethernet II, 2 SNAP, `llc` LLC; null for another.
const char* frame_word(std::uint32_t frame_type, std::uint32_t llc);

// How a module's tables differ from the ones that most of them have.
struct Protocols {
    using Key = ProtocolKey;
    using Port = BindingKey;
    static constexpr std::uint32_t llc = 5;
    static constexpr Asn group_type = Integer;
    static constexpr int group_column = 3;            // of the group that a protocol has now
    static constexpr bool sends_same_group = false;   // a group that the protocol has already is sent, too
    static constexpr bool clears_before_line = true;  // the record, before createAndGo's line and not after it
    static constexpr bool status_stages_in_commit = false;
    static constexpr bool has_priority = false;
    // static constexpr const char* group_id: what asks for a protocol's group
};

template <class P>
struct GroupRow : StagedRow<false, P::status_stages_in_commit> {
    typename P::Key key;
    const char* frame;
    static constexpr ProtoGroup& staged = proto_group;

    Error check(const Set&) {
        frame = frame_word(key.frame_type, P::llc);
        return frame != nullptr ? noError : wrongValue;
    }
    std::uint32_t current(const Set& set) const {
        return number_of(set, show_protocol(P::group_id, key), P::group_column);
    }
    Error add(const Set& set, std::uint32_t group) const {
        return set.global({"protocol-vlan profile %d frame-type %s ether-type 0x%s", group, frame,
                           protocol_text(key.protocol).c_str()});
    }
    // The group is the record's, the protocol the key's.
    Error create(const Set& set) const {
        const std::uint32_t group = staged.group;
        if (P::clears_before_line) staged = {};
        TRY(add(set, group));
        staged = {};
        return noError;
    }
    Error remove(const Set& set) const { return set.global({"no protocol-vlan profile %d", current(set)}); }
};

template <class P>
Error write_group_id(Set& set) {
    std::uint32_t group = 0;
    GroupRow<P> row;
    TRY(set.type(P::group_type));
    TRY(set.length(sizeof group));
    TRY(bridge_row(set, row.key));
    TRY(row.check(set));
    set.copy(&group, sizeof group);
    if (set.phase == reserve1) proto_group = {row.key.frame_type, row.key.protocol, {}, group, 0};
    if (!set.acting() || proto_group.pending) return noError;
    const std::uint32_t current = row.current(set);
    if (current == group && !P::sends_same_group) return noError;
    TRY(set.global({"no protocol-vlan profile %d", current}));
    return row.add(set, group);
}

// --- protocol groups on ports ----------------------------------------------------------------------------------------

// The command of a binding's row: "show snmp <module>protocol-vlan <ifIndex> <group>".
template <class Key>
Command show_binding(const char* module, const Key& row) {
    return {"show snmp %sprotocol-vlan %d %d", module, row.ifindex, row.group};
}

// "protocol-vlan profile ..." in the port's mode, with the priority where the tables have one.
Error bind_group(const Set& set, const InterfaceName& name, const ProtoPort& binding, bool has_priority);

template <class P>
struct BindingRow : StagedRow<false, P::status_stages_in_commit> {
    typename P::Port key;
    InterfaceName name;
    static constexpr ProtoPort& staged = proto_port;
    static constexpr int vlan_column = 3, priority_column = 4;

    Error check(const Set&) { return Set::interface_name(key.ifindex, name); }
    // A table without a priority leaves the staged one to the table that has it.
    void stage(std::uint32_t vid) const {
        staged = {key.ifindex, key.group, vid, P::has_priority ? 0 : staged.priority, 0};
    }
    std::uint32_t current(const Set& set, int column) const {
        return P::has_priority ? number_of(set, show_binding("", key), column) : 0;
    }
    Error replace(const Set& set, std::uint32_t vid, std::uint32_t priority) {
        TRY(check(set));
        return bind_group(set, name, {key.ifindex, key.group, vid, priority, 0}, P::has_priority);
    }
    // The interface is the key's, everything else the record's.
    Error create(const Set& set) const {
        TRY(bind_group(set, name, staged, P::has_priority));
        staged = {};
        return noError;
    }
    Error remove(const Set& set) const {
        TRY(set.enter(name));
        return set.sub({"no protocol-vlan profile %d", key.group});
    }
};

// --- static multicast ------------------------------------------------------------------------------------------------

// "mac address-table static ..." for one bridge port.
Error add_static_port(const Set& set, const Mac& mac, std::uint32_t vid, int port);

// Makes `wanted` of the ports that column 3 of the command `show` has now; genErr when it is refused. Other than in
// change_ports(), each line names its interface, and additions come before removals.
Error change_static_ports(const Set& set, const Mac& mac, std::uint32_t vid, const Command& show,
                          const PortList& wanted);

}  // namespace switchmib
