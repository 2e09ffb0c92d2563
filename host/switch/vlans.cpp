// VLANs: the tables of VLANs and of their ports, what writers look up of them, and the lines that make, name and remove
// VLANs and put ports into them.
#include "switch/vlans.h"

#include <fmt/format.h>

#include <array>

namespace sw {
namespace {

constexpr std::size_t kLongestName = 32;

// Ports 13 to 16 are hybrid, 17 and 18 tunnels, 19 has a host of a private VLAN and 20 what those reach, 25 and 26 are
// trunks, the others access ports.
PortMode mode_of(std::uint32_t n) {
    if (n == 25 || n == 26) return PortMode::trunk;
    if (n > 12 && n <= 16) return PortMode::hybrid;
    if (n == 19) return PortMode::private_host;
    if (n == 20) return PortMode::private_promiscuous;
    return n == 17 || n == 18 ? PortMode::tunnel : PortMode::access;
}

bool is_access(PortMode mode) { return mode == PortMode::access; }
bool is_hybrid(PortMode mode) { return mode == PortMode::hybrid || mode == PortMode::tunnel; }
bool is_trunk(PortMode mode) { return mode == PortMode::trunk; }

}  // namespace

Vlans::Vlans(Switch& its_switch) : Area(its_switch), ports_(its_switch.area<Ports>()) {
    const std::pair<std::uint32_t, const char*> named[] = {
        {kDefaultVlan, "default"}, {10, "office"}, {20, "voice"}, {30, "guests"}};
    for (const auto& [vid, name] : named) make(vid).name = name;
    for (std::uint32_t vid = 2; vid <= kLastVlan && vlans_.size() < its_switch.size().vlans; ++vid) make(vid);
    for (auto& [vid, vlan] : vlans_) vlan.created = Duration();
    for (const auto& [ifindex, port] : ports_.all()) fill(ifindex, port.number);
}

// Access ports 5 to 8 are in VLAN 10, 9 to 12 in VLAN 20. Hybrid ports have VLAN 10 with tags and VLAN 20 without,
// tunnels VLAN 30, trunks all of them with tags.
void Vlans::fill(std::uint32_t ifindex, std::uint32_t n) {
    PortVlans& port = by_port_[ifindex];
    port.mode = mode_of(n);
    port.pvid = n > 4 && n <= 8 ? 10 : n > 8 && n <= 12 ? 20 : kDefaultVlan;
    join(ifindex, port.pvid, true);
    if (port.mode == PortMode::hybrid) {
        join(ifindex, 10, false);
        join(ifindex, 20, true);
    }
    if (port.mode == PortMode::tunnel) join(ifindex, 30, true);
    if (is_trunk(port.mode)) set_mode(ifindex, PortMode::trunk);
}

Vlan& Vlans::make(std::uint32_t vid) {
    const auto [entry, made] = vlans_.try_emplace(vid);
    if (made) {
        entry->second = {.name = fmt::format("VLAN{:04}", vid), .created = uptime()};
        switch_.announce(&Area::vlan_made, vid);
    }
    return entry->second;
}

bool Vlans::remove(std::uint32_t vid) {
    if (vlans_.erase(vid) == 0) return false;
    ++removed_;
    for (auto& [ifindex, port] : by_port_)
        if (port.pvid == vid) {
            port.pvid = kDefaultVlan;
            join(ifindex, kDefaultVlan, true);
        }
    switch_.announce(&Area::vlan_removed, vid);
    return true;
}

bool Vlans::has(std::uint32_t vid, std::uint32_t ifindex) const {
    const auto vlan = vlans_.find(vid);
    return vlan != vlans_.end() && vlan->second.egress.has(ifindex - kPortIfIndexBase);
}

void Vlans::join(std::uint32_t ifindex, std::uint32_t vid, bool untagged) {
    vlans_.at(vid).egress.set(ifindex - kPortIfIndexBase, true);
    vlans_.at(vid).untagged.set(ifindex - kPortIfIndexBase, untagged);
}

void Vlans::leave(std::uint32_t ifindex, std::uint32_t vid) {
    vlans_.at(vid).egress.set(ifindex - kPortIfIndexBase, false);
    vlans_.at(vid).untagged.set(ifindex - kPortIfIndexBase, false);
}

void Vlans::set_native(std::uint32_t ifindex, std::uint32_t vid) {
    PortVlans& port = by_port_.at(ifindex);
    // An access port is in one VLAN, a private one leaves its own. A trunk has one VLAN without tags, and keeps its
    // former one with them.
    if (is_access(port.mode) || is_private(port.mode)) leave(ifindex, port.pvid);
    if (is_trunk(port.mode)) vlans_.at(port.pvid).untagged.set(ifindex - kPortIfIndexBase, false);
    port.pvid = vid;
    join(ifindex, vid, true);
}

// The port leaves its VLANs but its own one; a trunk carries all of them.
void Vlans::set_mode(std::uint32_t ifindex, PortMode mode) {
    PortVlans& port = by_port_.at(ifindex);
    port.mode = mode;
    port.tags_native = false;
    for (const auto& [vid, vlan] : vlans_) leave(ifindex, vid);
    if (is_trunk(mode))
        for (const auto& [vid, vlan] : vlans_) join(ifindex, vid, false);
    join(ifindex, port.pvid, true);
}

Value Vlans::allowed(std::uint32_t ifindex, bool tagged) const {
    const std::uint32_t n = ifindex - kPortIfIndexBase;
    Value list(512, '\0');
    for (const auto& [vid, vlan] : vlans_)
        if (vlan.egress.has(n) && vlan.untagged.has(n) != tagged)
            list[(vid - 1) / 8] = static_cast<char>(list[(vid - 1) / 8] | 0x80 >> (vid - 1) % 8);
    return list;
}

Lines<Vlan> Vlans::lines(Description& d) {
    return d.lines<Vlan>({kVlan}, [this](const Entered& entered) -> Vlan& {
        const auto vlan = vlans_.find(entered.object);
        require(vlan != vlans_.end(), "the VLAN is gone");
        return vlan->second;
    });
}

void Vlans::describe(Description& d) {
    d.scalars("qBridgeMIBGlobals", "",
              {{4, "dot1qNumVlans", [this] { return vlans_.size(); }, "show snmp vlan number"},
               {6, "dot1qVlanNumDeletes", &removed_, "show snmp vlan-delete-num"}});
    d.scalars("ieee8021QBridgeMibGlobals", "show snmp ieee vlan-delete-num",
              {{1, "ieee8021QBridgeVlanNumDeletes", [this] { return counter64(removed_); }}});
    add_vlan_tables(d);
    add_port_tables(d);

    const Lines<Vlans> global = d.lines(*this);
    global.line("vlan {1..4094}", [this](const Arguments& arguments) {
        make(arguments[0].number);
        return Entered{kVlan, arguments[0].number};
    });
    global.line("no vlan {1..4094}", [this](const Arguments& arguments) {
        require(arguments[0].number != kDefaultVlan, "the default VLAN cannot be removed");
        require(remove(arguments[0].number), "there is no such VLAN");
    });
    global.flag("mvrp global", &Vlans::mvrp_);
    lines(d).text("name {text}", &Vlan::name, kLongestName);
    add_port_lines(d);
}

// The IEEE's tables are the Q-bridge's with the bridge's component before the index, and other columns.
void Vlans::add_vlan_tables(Description& d) {
    const std::string ieee = "ieee8021QBridge";
    const auto current = [this](int first, const std::string& prefix) {
        return rows_of(vlans_, {{first, prefix + "VlanFdbId", [](const Vlan&, const Index& index) { return index[0]; }},
                                {first + 1, prefix + "VlanCurrentEgressPorts", &Vlan::egress},
                                {first + 2, prefix + "VlanCurrentUntaggedPorts", &Vlan::untagged},
                                {first + 3, prefix + "VlanStatus", 2},  // permanent
                                {first + 4, prefix + "VlanCreationTime", &Vlan::created}});
    };
    // The VLANs as they are now: none of them was left by an earlier time.
    d.table({.name = "dot1qVlanCurrentTable",
             .show = "show snmp vlan-current [{int:2}]",
             .key = {kInteger, kInteger},
             .rows = current(3, "dot1q").under({0})});
    d.table({.name = ieee + "VlanCurrentTable",
             .show = "show snmp ieee vlan-current [{int:3}]",
             .key = {kInteger, kInteger, kInteger},
             .rows = current(4, ieee).under({0, kComponent})});

    const auto configured = [this](int first, const std::string& prefix) {
        return rows_of(vlans_, {{first, prefix + "VlanStaticName", &Vlan::name},
                                {first + 1, prefix + "VlanStaticEgressPorts", &Vlan::egress},
                                {first + 3, prefix + "VlanStaticUntaggedPorts", &Vlan::untagged},
                                {first + 4, prefix + "VlanStaticRowStatus", 1}});  // active
    };
    d.table({.name = "dot1qVlanStaticTable", .show = "show snmp vlan-static [{int}]", .rows = configured(1, "dot1q")});
    d.table({.name = ieee + "VlanStaticTable",
             .show = "show snmp ieee vlan-static [{int:2}]",
             .key = {kInteger, kInteger},
             .rows = configured(3, ieee).under({kComponent})});
    d.lookup("show snmp vlan-static {int} portlist", configured(1, "dot1q"));
    d.lookup("show snmp ieee vlan-static {int} portlist", configured(3, ieee));

    const std::map<std::uint32_t, std::uint32_t> components{{kComponent, 0}};
    d.table({.name = ieee + "Table",
             .show = "show snmp ieee bridge [{int}]",
             .rows = rows_of(std::map(components), {{2, ieee + "VlanVersionNumber", 2},
                                                    {3, ieee + "MaxVlanId", kLastVlan},
                                                    {4, ieee + "MaxSupportedVlans", kLastVlan},
                                                    {5, ieee + "NumVlans", [this] { return vlans_.size(); }},
                                                    {6, ieee + "MvrpEnabledStatus", [this] { return mvrp_; }}})});
}

void Vlans::add_port_tables(Description& d) {
    // The accepted frames as each table numbers them: all, tagged, untagged.
    const auto frames = [](std::array<std::uint32_t, 3> numbers) {
        return [numbers](const PortVlans& port) { return numbers[port.frame_types - 1]; };
    };
    d.table({.name = "dot1qPortVlanTable",
             .show = "show snmp port-vlan [{int}]",
             .rows = rows_of(by_port_, {{1, "dot1qPvid", &PortVlans::pvid},
                                        {2, "dot1qPortAcceptableFrameTypes", frames({1, 2, 3})},
                                        {3, "dot1qPortIngressFiltering", &PortVlans::ingress_checking}})});
    // No registration has failed; MVRP's neighbours are one a port.
    const auto neighbour = [](const PortVlans& port, const Index& index) {
        return port.mvrp ? Mac{0x02, 0x53, 0x57, 0x20, 0x00, static_cast<unsigned char>(index[0] - kPortIfIndexBase)}
                         : Mac{};
    };
    d.table(
        {.name = "ieee8021QBridgePortVlanTable",
         .show = "show snmp ieee port-vlan [{int:2}]",
         .key = {kInteger, kInteger},
         .rows = rows_of(by_port_, {{1, "ieee8021QBridgePvid", &PortVlans::pvid},
                                    {2, "ieee8021QBridgePortAcceptableFrameTypes", frames({1, 3, 2})},
                                    {3, "ieee8021QBridgePortIngressFiltering", &PortVlans::ingress_checking},
                                    {4, "ieee8021QBridgePortMvrpEnabledStatus", &PortVlans::mvrp},
                                    {5, "ieee8021QBridgePortMvrpFailedRegistrations", counter64(0)},
                                    {6, "ieee8021QBridgePortMvrpLastPduOrigin", neighbour},
                                    {7, "ieee8021QBridgePortRestrictedVlanRegistration", &PortVlans::mvrp_forbidden}})
                     .under({kComponent})});
    // Every list is a whole one, whatever its name says of it.
    const auto list = [this](bool tagged) {
        return [this, tagged](const PortVlans&, const Index& index) { return allowed(index[0], tagged); };
    };
    const Rows control = rows_of(by_port_, {{2, "nVlanPortIfMode", &PortVlans::mode},
                                            {3, "nVlanPortIfTrunkNativeVlanTag", &PortVlans::tags_native},
                                            {4, "nVlanPortIfAcceptableFrameTypes", frames({3, 1, 2})},
                                            {5, "nVlanPortIfVlanPrecedence", &PortVlans::precedence},
                                            {6, "nVlanPortIfTagAllowVlanLstFirst2K", list(true)},
                                            {7, "nVlanPortIfTagAllowVlanLstSecond2K", list(true)},
                                            {8, "nVlanPortIfUntagAllowVlanLstFirst2K", list(false)},
                                            {9, "nVlanPortIfUntagAllowVlanLstSecond2K", list(false)}});
    d.table({.name = "nVlanPortIfCtrlTable", .show = "show snmp vlan-port {int}", .rows = control});
    d.lookup("show snmp vlan-port {int}", control);
    d.lookup("show snmp vlan-mode {int}", rows_of(by_port_, {{0, "mode", &PortVlans::mode}}));
}

void Vlans::add_port_lines(Description& d) {
    const Lines<PortVlans> port = ports_.lines(d).of(by_port_);
    port.flag("ingress-checking", &PortVlans::ingress_checking);
    port.choice("acceptable-frame admit-all|tagged-only|untagged-only", &PortVlans::frame_types);
    port.choice("vlan precedence mac-vlan|subnet-vlan", &PortVlans::precedence);
    port.flag("mvrp enable", &PortVlans::mvrp);
    port.flag("mvrp registration forbidden", &PortVlans::mvrp_forbidden);
    const std::pair<PortMode, const char*> modes[] = {{PortMode::access, "access"},
                                                      {PortMode::hybrid, "hybrid"},
                                                      {PortMode::trunk, "trunk"},
                                                      {PortMode::tunnel, "dot1q-tunnel"},
                                                      {PortMode::private_host, "private-vlan host"},
                                                      {PortMode::private_promiscuous, "private-vlan promiscuous"}};
    for (const auto& [mode, words] : modes)
        port.line(std::string("switchport mode ") + words,
                  [this, mode = mode](PortVlans&, const Arguments&, const Entered& entered) {
                      set_mode(entered.object, mode);
                  });

    // One that only ports of a certain mode take; a number is the VLAN's.
    const auto mode_line = [this, &port](const char* pattern, bool (*takes)(PortMode), auto set) {
        port.line(pattern, [this, takes, set](PortVlans& p, const Arguments& arguments, const Entered& entered) {
            require(takes(p.mode), "the port is in another mode");
            const std::uint32_t vid = arguments.empty() ? kDefaultVlan : arguments.back().number;
            require(has(vid), "there is no such VLAN");
            set(entered.object, vid, arguments);
        });
    };
    const auto to_native = [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
        set_native(ifindex, vid);
    };
    const auto to_leave = [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
        require(has(vid, ifindex), "the port is not in that VLAN");
        leave(ifindex, vid);
    };
    mode_line("switchport access vlan {1..4094}", is_access, to_native);
    mode_line("no switchport access vlan", is_access, to_native);
    mode_line("switchport hybrid allowed vlan add tagged|untagged {1..4094}", is_hybrid,
              [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments& arguments) {
                  const bool untagged = arguments[0].text == "untagged";
                  require(untagged || by_port_.at(ifindex).mode != PortMode::tunnel, "the port sends no tags");
                  join(ifindex, vid, untagged);
              });
    mode_line("switchport hybrid allowed vlan remove {1..4094}", is_hybrid, to_leave);
    mode_line("switchport trunk allowed vlan add {1..4094}", is_trunk,
              [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
                  join(ifindex, vid, vid == by_port_.at(ifindex).pvid);
              });
    mode_line("switchport trunk allowed vlan remove {1..4094}", is_trunk, to_leave);
    for (const bool tagged : {true, false})
        mode_line(tagged ? "switchport trunk native vlan tag" : "no switchport trunk native vlan tag", is_trunk,
                  [this, tagged](std::uint32_t ifindex, std::uint32_t, const Arguments&) {
                      PortVlans& its = by_port_.at(ifindex);
                      its.tags_native = tagged;
                      join(ifindex, its.pvid, !tagged);
                  });
    mode_line("switchport hybrid native vlan {1..4094}", is_hybrid, to_native);
    mode_line("switchport trunk native vlan {1..4094}", is_trunk, to_native);
}

void add_vlans(Switch& areas) { areas.area<Vlans>(); }

}  // namespace sw
