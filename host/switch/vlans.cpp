// VLANs: the tables of VLANs and of their ports, what writers look up of them, and the lines that make, name and remove
// VLANs and put ports into them.
#include "switch/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace sw {
namespace {

constexpr std::uint32_t kDefaultVlan = 1;
constexpr std::size_t kLongestName = 32;

// From then on untagged frames of the port belong to this VLAN.
void set_native(Model& model, Port& port, std::uint32_t vid) {
    // A trunk has one VLAN without tags, and keeps its former one with them.
    if (port.mode == PortMode::trunk) model.vlans.at(port.pvid).untagged.set(port.number(), false);
    port.pvid = vid;
    model.join(port, vid, true);
}

void set_access_vlan(Model& model, Port& port, std::uint32_t vid) {
    model.leave(port, port.pvid);
    set_native(model, port, vid);
}

// Rows of the VLANs as they are now: none of them was left by an earlier time.
Rows at_time_zero(Rows rows) {
    return translated(
        std::move(rows),
        [](const Index& index) { return Index{index[0] == 0 ? index[1] : std::numeric_limits<oid>::max()}; },
        [](const Index& index) -> std::optional<Index> {
            return Index{0, index[0]};
        });
}

void add_tables(Model& model, TableStore& store) {
    store.add(
        "qBridgeMIBGlobals",
        {{4, "show snmp vlan number", [&model] { return number(static_cast<std::uint32_t>(model.vlans.size())); }},
         {6, "show snmp vlan-delete-num", [&model] { return number(model.vlans_removed); }}});

    const auto egress = [](const Vlan& v) { return v.egress.value(); };
    const auto untagged = [](const Vlan& v) { return v.untagged.value(); };
    store.add({.name = "dot1qVlanCurrentTable",
               .first = "show snmp vlan-current",
               .keyed = "show snmp vlan-current {int}",
               .key = {{2}, {2}},
               .rows = at_time_zero(rows_of(model.vlans, {{3, [](const Vlan& v) { return number(v.vid); }},
                                                          {4, egress},
                                                          {5, untagged},
                                                          {6, [](const Vlan&) { return number(2); }},  // permanent
                                                          {7, [](const Vlan& v) { return ticks(v.created); }}})),
               .arguments = [](const Index& index) { return Index{index[1]}; },
               .is_first = [](const Index& index) { return index[1] == 0; }});
    store.add({.name = "dot1qVlanStaticTable",
               .first = "show snmp vlan-static",
               .keyed = "show snmp vlan-static {int}",
               .key = {{2}},
               .rows = rows_of(model.vlans, {{1, [](const Vlan& v) { return v.name; }},
                                             {2, egress},
                                             {4, untagged},
                                             {5, [](const Vlan&) { return number(1); }}})});  // active
    store.add({.name = "dot1qPortVlanTable",
               .first = "show snmp port-vlan",
               .keyed = "show snmp port-vlan {int}",
               .key = {{2}},
               .rows = rows_of(model.ports, {{1, [](const Port& p) { return number(p.pvid); }},
                                             {2, [](const Port& p) { return number(p.frame_types); }},
                                             {3, [](const Port& p) { return truth(p.ingress_checking); }}})});

    store.add(
        {.keyed = "show snmp vlan-static {int} portlist", .rows = rows_of(model.vlans, {{2, egress}, {4, untagged}})});
    const auto mode = [](const Port& p) { return number(static_cast<std::uint32_t>(p.mode)); };
    store.add({.keyed = "show snmp vlan-mode {int}", .rows = rows_of(model.ports, {{0, mode}})});
}

void add_vlan_lines(Model& model, CommandLine& lines) {
    lines.add(Mode::global, "vlan {1..4094}", [&model](const Arguments& arguments) {
        model.entered_vlan = &model.vlan(arguments[0].number);
        return Outcome{{}, Mode::vlan};
    });
    lines.add(Mode::global, "no vlan {1..4094}", [&model](const Arguments& arguments) {
        if (arguments[0].number == kDefaultVlan) return refused("the default VLAN cannot be removed");
        return model.remove_vlan(arguments[0].number) ? accepted : refused("there is no such VLAN");
    });
    lines.add(Mode::vlan, "name {text}", [&model](const Arguments& arguments) {
        if (arguments[0].text.size() > kLongestName)
            return refused(fmt::format("a name has at most {} octets", kLongestName));
        model.entered_vlan->name = arguments[0].text;
        return accepted;
    });
}

void add_port_lines(Model& model, CommandLine& lines) {
    const auto setting = [&](const char* pattern, auto set) { add_port_setting(model, lines, pattern, set); };
    // One that only ports of a certain mode take; a number is the VLAN's.
    const auto mode_setting = [&](const char* pattern, auto takes, auto set) {
        setting(pattern, [&model, takes, set](Port& port, const Arguments& arguments) {
            if (!takes(port.mode)) return refused("the port is in another mode");
            const std::uint32_t vid = arguments.empty() ? kDefaultVlan : arguments.back().number;
            if (!model.vlans.contains(vid)) return refused("there is no such VLAN");
            return set(port, vid, arguments);
        });
    };
    const auto access = [](PortMode mode) { return mode == PortMode::access; };
    const auto hybrid = [](PortMode mode) { return mode == PortMode::hybrid || mode == PortMode::untagged_hybrid; };
    const auto trunk = [](PortMode mode) { return mode == PortMode::trunk; };
    const auto to_access = [&model](Port& port, std::uint32_t vid, const Arguments&) {
        set_access_vlan(model, port, vid);
        return accepted;
    };
    const auto to_native = [&model](Port& port, std::uint32_t vid, const Arguments&) {
        set_native(model, port, vid);
        return accepted;
    };
    const auto to_leave = [&model](Port& port, std::uint32_t vid, const Arguments&) {
        if (!model.vlans.at(vid).egress.has(port.number())) return refused("the port is not in that VLAN");
        model.leave(port, vid);
        return accepted;
    };
    mode_setting("switchport access vlan {1..4094}", access, to_access);
    mode_setting("no switchport access vlan", access, to_access);
    mode_setting("switchport hybrid allowed vlan add tagged|untagged {1..4094}", hybrid,
                 [&model](Port& port, std::uint32_t vid, const Arguments& arguments) {
                     const bool untagged = arguments[0].text == "untagged";
                     if (!untagged && port.mode == PortMode::untagged_hybrid) return refused("the port sends no tags");
                     model.join(port, vid, untagged);
                     return accepted;
                 });
    mode_setting("switchport hybrid allowed vlan remove {1..4094}", hybrid, to_leave);
    mode_setting("switchport trunk allowed vlan add {1..4094}", trunk,
                 [&model](Port& port, std::uint32_t vid, const Arguments&) {
                     model.join(port, vid, vid == port.pvid);
                     return accepted;
                 });
    mode_setting("switchport trunk allowed vlan remove {1..4094}", trunk, to_leave);
    mode_setting("switchport hybrid native vlan {1..4094}", hybrid, to_native);
    mode_setting("switchport trunk native vlan {1..4094}", trunk, to_native);

    setting("acceptable-frame admit-all|tagged-only|untagged-only", [](Port& port, const Arguments& arguments) {
        const char first = arguments[0].text.front();
        port.frame_types = first == 'a' ? 1 : first == 't' ? 2 : 3;
        return accepted;
    });
    setting("ingress-checking", [](Port& port, const Arguments&) {
        port.ingress_checking = true;
        return accepted;
    });
    setting("no ingress-checking", [](Port& port, const Arguments&) {
        port.ingress_checking = false;
        return accepted;
    });
}

}  // namespace

Vlan& Model::vlan(std::uint32_t vid) {
    const auto [entry, made] = vlans.try_emplace(vid);
    Vlan& vlan = entry->second;
    if (!made) return vlan;
    vlan = {.vid = vid, .name = fmt::format("VLAN{:04}", vid), .created = uptime()};
    settle_vlan(vid);
    return vlan;
}

bool Model::remove_vlan(std::uint32_t vid) {
    if (vlans.erase(vid) == 0) return false;
    ++vlans_removed;
    for (auto& [ifindex, port] : ports)
        if (port.pvid == vid) {
            port.pvid = kDefaultVlan;
            join(port, kDefaultVlan, true);
        }
    forget_groups(vid);
    settle_vlan(vid);
    return true;
}

void Model::join(const Port& port, std::uint32_t vid, bool untagged) {
    vlans.at(vid).egress.set(port.number(), true);
    vlans.at(vid).untagged.set(port.number(), untagged);
}

void Model::leave(const Port& port, std::uint32_t vid) {
    vlans.at(vid).egress.set(port.number(), false);
    vlans.at(vid).untagged.set(port.number(), false);
}

// Access ports 5 to 8 are in VLAN 10, 9 to 12 in VLAN 20. Hybrid ports have VLAN 10 with tags and VLAN 20 without,
// hybrid ports without tags VLAN 30, trunks all of them with tags.
void make_vlans(Model& model, std::size_t count) {
    const std::pair<std::uint32_t, const char*> named[] = {
        {1, "default"}, {10, "office"}, {20, "voice"}, {30, "guests"}};
    for (const auto& [vid, name] : named) {
        model.vlan(vid).name = name;
        model.vlan(vid).created = Duration();
    }
    for (std::uint32_t vid = 2; vid <= kLastVlan && model.vlans.size() < count; ++vid)
        model.vlan(vid).created = Duration();
    for (auto& [ifindex, port] : model.ports) {
        const std::uint32_t n = port.number();
        port.pvid = n > 4 && n <= 8 ? 10 : n > 8 && n <= 12 ? 20 : kDefaultVlan;
        model.join(port, port.pvid, true);
        if (port.mode == PortMode::hybrid) {
            model.join(port, 10, false);
            model.join(port, 20, true);
        }
        if (port.mode == PortMode::untagged_hybrid) model.join(port, 30, true);
        if (port.mode == PortMode::trunk)
            for (const auto& [vid, vlan] : model.vlans) model.join(port, vid, vid == port.pvid);
    }
}

void add_vlans(Model& model, TableStore& store, CommandLine& lines) {
    add_tables(model, store);
    add_vlan_lines(model, lines);
    add_port_lines(model, lines);
}

}  // namespace sw
