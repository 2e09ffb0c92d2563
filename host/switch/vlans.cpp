// VLANs: the tables of VLANs and of their ports, what writers look up of them, and the lines that make, name and remove
// VLANs and put ports into them.
#include "switch/vlans.h"

#include <fmt/format.h>

#include <iterator>

namespace sw {
namespace {

constexpr std::size_t kLongestName = 32;

// Ports 13 to 16 are hybrid, 17 and 18 hybrid without tags, 25 and 26 trunks, the others access ports.
PortMode mode_of(std::uint32_t n) {
    if (n == 25 || n == 26) return PortMode::trunk;
    if (n > 12 && n <= 16) return PortMode::hybrid;
    return n == 17 || n == 18 ? PortMode::untagged_hybrid : PortMode::access;
}

bool is_access(PortMode mode) { return mode == PortMode::access; }
bool is_hybrid(PortMode mode) { return mode == PortMode::hybrid || mode == PortMode::untagged_hybrid; }
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
// hybrid ports without tags VLAN 30, trunks all of them with tags.
void Vlans::fill(std::uint32_t ifindex, std::uint32_t n) {
    PortVlans& port = by_port_[ifindex];
    port.mode = mode_of(n);
    port.pvid = n > 4 && n <= 8 ? 10 : n > 8 && n <= 12 ? 20 : kDefaultVlan;
    join(ifindex, port.pvid, true);
    if (port.mode == PortMode::hybrid) {
        join(ifindex, 10, false);
        join(ifindex, 20, true);
    }
    if (port.mode == PortMode::untagged_hybrid) join(ifindex, 30, true);
    if (is_trunk(port.mode))
        for (const auto& [vid, vlan] : vlans_) join(ifindex, vid, vid == port.pvid);
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
    // An access port is in one VLAN. A trunk has one VLAN without tags, and keeps its former one with them.
    if (is_access(port.mode)) leave(ifindex, port.pvid);
    if (is_trunk(port.mode)) vlans_.at(port.pvid).untagged.set(ifindex - kPortIfIndexBase, false);
    port.pvid = vid;
    join(ifindex, vid, true);
}

Lines<Vlan> Vlans::lines(Description& d) {
    return d.lines<Vlan>({kVlan}, [this](const Entered& entered, std::string& refusal) -> Vlan* {
        const auto vlan = vlans_.find(entered.object);
        if (vlan != vlans_.end()) return &vlan->second;
        refusal = "the VLAN is gone";
        return nullptr;
    });
}

void Vlans::describe(Description& d) {
    d.scalars("qBridgeMIBGlobals", "",
              {{4, "dot1qNumVlans", [this] { return vlans_.size(); }, "show snmp vlan number"},
               {6, "dot1qVlanNumDeletes", &removed_, "show snmp vlan-delete-num"}});
    d.table({.name = "dot1qVlanCurrentTable",
             .show = "show snmp vlan-current [{int:2}]",
             .key = {kInteger, kInteger},
             // The VLANs as they are now: none of them was left by an earlier time.
             .rows = rows_of(vlans_, {{3, "dot1qVlanFdbId", from_index()},
                                      {4, "dot1qVlanCurrentEgressPorts", &Vlan::egress},
                                      {5, "dot1qVlanCurrentUntaggedPorts", &Vlan::untagged},
                                      {6, "dot1qVlanStatus", 2},  // permanent
                                      {7, "dot1qVlanCreationTime", &Vlan::created}})
                         .under({0})});
    d.table({.name = "dot1qVlanStaticTable",
             .show = "show snmp vlan-static [{int}]",
             .rows = rows_of(vlans_, {{1, "dot1qVlanStaticName", &Vlan::name},
                                      {2, "dot1qVlanStaticEgressPorts", &Vlan::egress},
                                      {4, "dot1qVlanStaticUntaggedPorts", &Vlan::untagged},
                                      {5, "dot1qVlanStaticRowStatus", 1}})});  // active
    d.table({.name = "dot1qPortVlanTable",
             .show = "show snmp port-vlan [{int}]",
             .rows = rows_of(by_port_, {{1, "dot1qPvid", &PortVlans::pvid},
                                        {2, "dot1qPortAcceptableFrameTypes", &PortVlans::frame_types},
                                        {3, "dot1qPortIngressFiltering", &PortVlans::ingress_checking}})});
    d.lookup("show snmp vlan-static {int} portlist",
             rows_of(vlans_, {{2, "egress", &Vlan::egress}, {4, "untagged", &Vlan::untagged}}));
    d.lookup("show snmp vlan-mode {int}", rows_of(by_port_, {{0, "mode", &PortVlans::mode}}));

    const Lines<Vlans> global = d.lines(*this);
    global.line("vlan {1..4094}", [this](const Arguments& arguments) {
        make(arguments[0].number);
        return enter(kVlan, arguments[0].number);
    });
    global.line("no vlan {1..4094}", [this](const Arguments& arguments) {
        if (arguments[0].number == kDefaultVlan) return refused("the default VLAN cannot be removed");
        return remove(arguments[0].number) ? accepted : refused("there is no such VLAN");
    });
    lines(d).text("name {text}", &Vlan::name, kLongestName);
    add_port_lines(d);
}

void Vlans::add_port_lines(Description& d) {
    const Lines<PortVlans> port = ports_.lines(d).of(by_port_);
    port.flag("ingress-checking", &PortVlans::ingress_checking);
    port.choice("acceptable-frame admit-all|tagged-only|untagged-only", &PortVlans::frame_types);

    // One that only ports of a certain mode take; a number is the VLAN's.
    const auto mode_line = [this, &port](const char* pattern, bool (*takes)(PortMode), auto set) {
        port.line(pattern, [this, takes, set](PortVlans& p, const Arguments& arguments, const Entered& entered) {
            if (!takes(p.mode)) return refused("the port is in another mode");
            const std::uint32_t vid = arguments.empty() ? kDefaultVlan : arguments.back().number;
            if (!has(vid)) return refused("there is no such VLAN");
            return set(entered.object, vid, arguments);
        });
    };
    const auto to_native = [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
        set_native(ifindex, vid);
        return accepted;
    };
    const auto to_leave = [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
        if (!has(vid, ifindex)) return refused("the port is not in that VLAN");
        leave(ifindex, vid);
        return accepted;
    };
    mode_line("switchport access vlan {1..4094}", is_access, to_native);
    mode_line("no switchport access vlan", is_access, to_native);
    mode_line("switchport hybrid allowed vlan add tagged|untagged {1..4094}", is_hybrid,
              [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments& arguments) {
                  const bool untagged = arguments[0].text == "untagged";
                  if (!untagged && by_port_.at(ifindex).mode == PortMode::untagged_hybrid)
                      return refused("the port sends no tags");
                  join(ifindex, vid, untagged);
                  return accepted;
              });
    mode_line("switchport hybrid allowed vlan remove {1..4094}", is_hybrid, to_leave);
    mode_line("switchport trunk allowed vlan add {1..4094}", is_trunk,
              [this](std::uint32_t ifindex, std::uint32_t vid, const Arguments&) {
                  join(ifindex, vid, vid == by_port_.at(ifindex).pvid);
                  return accepted;
              });
    mode_line("switchport trunk allowed vlan remove {1..4094}", is_trunk, to_leave);
    mode_line("switchport hybrid native vlan {1..4094}", is_hybrid, to_native);
    mode_line("switchport trunk native vlan {1..4094}", is_trunk, to_native);
}

void add_vlans(Switch& areas) { areas.area<Vlans>(); }

}  // namespace sw
