#include "L2/vlans.h"

#include "framework/ifindex.h"
#include "framework/module.h"

namespace switchmib {

constexpr std::uint32_t interface_of(int port) { return kPortIfIndexBase + static_cast<std::uint32_t>(port); }

// --- ports of a VLAN -------------------------------------------------------------------------------------------------

std::uint32_t port_mode(const Set& set, std::uint32_t ifindex) {
    return number_of(set, {"show snmp vlan-mode %d", ifindex}, 0);
}

Error add_tagged_vlan(const Set& set, std::uint32_t mode, std::uint32_t vid) {
    switch (mode) {
        case accessPort: return set.sub({"switchport access vlan %d", vid});
        case hybridPort: return set.sub({"switchport hybrid allowed vlan add tagged %d", vid});
        case trunkPort: return set.sub({"switchport trunk allowed vlan add %d", vid});
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan add untagged %d", vid});
        default: return genErr;
    }
}

Error add_untagged_vlan(const Set& set, std::uint32_t mode, std::uint32_t vid) {
    switch (mode) {
        case accessPort: return set.sub({"switchport access vlan %d", vid});
        case hybridPort:
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan add untagged %d", vid});
        default: return genErr;  // a trunk carries no VLAN untagged
    }
}

Error remove_vlan(const Set& set, std::uint32_t mode, std::uint32_t vid) {
    switch (mode) {
        case accessPort: return set.sub("no switchport access vlan");
        case hybridPort:
        case untaggedHybridPort: return set.sub({"switchport hybrid allowed vlan remove %d", vid});
        case trunkPort: return set.sub({"switchport trunk allowed vlan remove %d", vid});
        default: return genErr;
    }
}

// Enters a bridge port, and sends the line that its mode has.
static Error change_port(const Set& set, int port, std::uint32_t vid, AddVlan* line) {
    InterfaceName name;
    const std::uint32_t mode = port_mode(set, interface_of(port));
    TRY(set.interface_name(interface_of(port), name));
    TRY(set.enter(name));
    return line(set, mode, vid);
}

Error change_ports(const Set& set, std::uint32_t vid, const Command& show, int column, const PortList& wanted,
                   AddVlan* add) {
    PortList current;  // empty when the lookup is refused
    set.lookup(show, column, current.octets, sizeof current.octets);
    const Difference change(current, wanted);
    TRY(change.removed.for_each([&](int port) { return change_port(set, port, vid, remove_vlan); }));
    return change.added.for_each([&](int port) { return change_port(set, port, vid, add); });
}

Error set_native_vlan(const Set& set, std::uint32_t ifindex, const InterfaceName& name, std::uint32_t vid) {
    const std::uint32_t mode = port_mode(set, ifindex);
    TRY(set.enter(name));
    switch (mode) {
        case hybridPort: return set.sub({"switchport hybrid native vlan %d", vid});
        case trunkPort: return set.sub({"switchport trunk native vlan %d", vid});
        // The port's interface index in place of the PVID; backends are matched to it.
        case untaggedHybridPort: return set.sub({"switchport hybrid native vlan %d", ifindex});
        default: return genErr;
    }
}

// --- static VLANs ----------------------------------------------------------------------------------------------------

bool untagged_is_egress(const VlanStatic& staged) {
    return staged.untagged.for_each([&](int port) {
        return PORTLIST_chk_port_exist(staged.egress.octets, port) ? noError : genErr;
    }) == noError;
}

// Creates the staged row under the row status's own VLAN id.
Error create_vlan(const Set& set, VlanStatic& staged, std::uint32_t vid) {
    if (const Error error = set.global({"vlan %d", vid}); error != noError) {
        staged.create_failed = 1;
        return error;
    }
    // The name that the backend gives by itself is not sent.
    const Text<sizeof staged.name> default_name("VLAN%04d", vid);
    if (staged.name[0] != '\0' && std::strcmp(staged.name, default_name) != 0) TRY(set.sub({"name %s", staged.name}));
    TRY(staged.untagged.for_each([&](int port) { return change_port(set, port, vid, add_untagged_vlan); }));
    const PortList tagged = staged.egress.differing(staged.untagged);
    TRY(tagged.for_each([&](int port) { return change_port(set, port, vid, add_tagged_vlan); }));
    staged = {};
    return noError;
}

// --- protocol groups -------------------------------------------------------------------------------------------------

constinit ProtoGroup proto_group{};
constinit ProtoPort proto_port{};

ProtocolText protocol_text(const Octets<2>& protocol) {
    const unsigned char* o = protocol.octets;
    return {"%x%x%x%x", o[0] & 0xf, o[0] >> 4, o[1] & 0xf, o[1] >> 4};
}

const char* frame_word(std::uint32_t frame_type, std::uint32_t llc) {
    if (frame_type == llc) return "llc";
    return frame_type == 1 ? "ethernet2" : frame_type == 2 ? "snap" : nullptr;
}

Error bind_group(const Set& set, const InterfaceName& name, const ProtoPort& binding, bool has_priority) {
    TRY(set.enter(name));
    if (!has_priority) return set.sub({"protocol-vlan profile %d vlan %d", binding.group, binding.vid});
    return set.sub({"protocol-vlan profile %d vlan %d priority %d", binding.group, binding.vid, binding.priority});
}

// --- static multicast ------------------------------------------------------------------------------------------------

static Error static_port_line(const Set& set, const char* no, const Mac& mac, std::uint32_t vid, int port) {
    InterfaceName name;
    TRY(set.interface_name(interface_of(port), name));
    return set.global({"%smac address-table static %s vlan %d interface %s", no, lower(mac).c_str(), vid, name.text});
}

Error add_static_port(const Set& set, const Mac& mac, std::uint32_t vid, int port) {
    return static_port_line(set, "", mac, vid, port);
}

Error change_static_ports(const Set& set, const Mac& mac, std::uint32_t vid, const Command& show,
                          const PortList& wanted) {
    PortList current;
    if (!set.lookup(show, 3, current.octets, sizeof current.octets)) return genErr;
    const Difference change(current, wanted);
    TRY(change.added.for_each([&](int port) { return static_port_line(set, "", mac, vid, port); }));
    return change.removed.for_each([&](int port) { return static_port_line(set, "no ", mac, vid, port); });
}

}  // namespace switchmib
