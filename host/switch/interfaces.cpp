// Interfaces: ifTable and ifXTable over ports and VLAN interfaces, the VLAN interfaces' own table, and the lines that
// enter, make and remove interfaces and set what all of them have.
#include "switch/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace sw {
namespace {

constexpr std::size_t kLongestAlias = 64;
const Index kZeroDotZero{0, 0};

// What has gone through an interface so far. The rates are steady and differ from interface to interface; they make
// frames first, and octets of them.
struct Direction {
    std::uint64_t octets, unicast, multicast, broadcast, not_unicast, discards, errors;
};

struct Traffic {
    Direction in, out;
};

Direction direction(Duration up, std::uint64_t unicast_rate, std::uint64_t frame_size, std::uint64_t n) {
    const auto count = [&](std::uint64_t rate) { return rate * static_cast<std::uint64_t>(up.count()) / 1000; };
    Direction d{};
    d.unicast = count(unicast_rate);
    d.multicast = count(2 + n % 5);
    d.broadcast = count(1 + n % 3);
    d.not_unicast = d.multicast + d.broadcast;
    d.octets = d.unicast * frame_size + d.not_unicast * 90;
    d.discards = d.unicast / 50000;
    d.errors = d.unicast / 400000;
    return d;
}

Traffic traffic(const Interface& interface, Duration now) {
    const Duration up = interface.up_time(now);
    const std::uint64_t n = interface.ifindex % kVlanIfIndexBase;  // port number or VLAN id
    return {direction(up, 90 + 37 * n, 420 + 11 * (n % 60), n), direction(up, 80 + 29 * n, 560 + 7 * (n % 60), n + 1)};
}

Value counter32(std::uint64_t count) { return number(static_cast<std::uint32_t>(count)); }  // wraps, as counters do

// A column that counts.
auto counter(const Model& model, Direction Traffic::*way, std::uint64_t Direction::*what,
             Value (*width)(std::uint64_t) = counter32) {
    return [&model, way, what, width](const Interface& i) { return width(traffic(i, model.uptime()).*way.*what); };
}

std::uint32_t mbps(const Interface& interface) { return interface.port != nullptr ? interface.port->mbps() : 1000; }

// Capped where it doesn't fit.
std::uint32_t bits_per_second(std::uint32_t mbps) {
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    return mbps > kMost / 1'000'000 ? kMost : mbps * 1'000'000;
}

std::string describe(const Interface& interface) {
    if (interface.port == nullptr) return "VLAN interface " + interface.name;
    const bool ten_gigabit = interface.port->max_mbps > 1000;
    const char* kind = ten_gigabit               ? "10GBASE-R"
                       : interface.port->combo() ? "10/100/1000BASE-T or 1000BASE-X"
                                                 : "10/100/1000BASE-T";
    return fmt::format("{} {}", interface.name, kind);
}

// Locally administered; the VLAN interfaces share the switch's own.
Value mac(const Interface& interface) {
    const std::uint32_t last = interface.port != nullptr ? interface.ifindex - kPortIfIndexBase : 0;
    return {'\x02', '\x53', '\x57', '\x10', '\x00', static_cast<char>(last)};
}

Columns<Interface> if_columns(const Model& model) {
    const auto in = [&](std::uint64_t Direction::*what) { return counter(model, &Traffic::in, what); };
    const auto out = [&](std::uint64_t Direction::*what) { return counter(model, &Traffic::out, what); };
    return {
        {1, [](const Interface& i) { return number(i.ifindex); }},
        {2, [](const Interface& i) { return describe(i); }},
        {3, [](const Interface& i) { return number(i.port != nullptr ? 6 : 136); }},  // ethernetCsmacd, l3ipvlan
        {4, [](const Interface&) { return number(1500); }},
        {5, [](const Interface& i) { return number(bits_per_second(mbps(i))); }},
        {6, [](const Interface& i) { return mac(i); }},
        {7, [](const Interface& i) { return truth(i.enabled); }},
        {8, [](const Interface& i) { return truth(i.up); }},
        {9, [](const Interface& i) { return ticks(i.last_change); }},
        {10, in(&Direction::octets)},
        {11, in(&Direction::unicast)},
        {12, in(&Direction::not_unicast)},
        {13, in(&Direction::discards)},
        {14, in(&Direction::errors)},
        {15, [](const Interface&) { return number(0); }},
        {16, out(&Direction::octets)},
        {17, out(&Direction::unicast)},
        {18, out(&Direction::not_unicast)},
        {19, out(&Direction::discards)},
        {20, out(&Direction::errors)},
        {21, [](const Interface&) { return number(0); }},
        {22, [](const Interface&) { return object_id(kZeroDotZero); }},
    };
}

Columns<Interface> ifx_columns(const Model& model) {
    const auto in = [&](std::uint64_t Direction::*what, auto width) {
        return counter(model, &Traffic::in, what, width);
    };
    const auto out = [&](std::uint64_t Direction::*what, auto width) {
        return counter(model, &Traffic::out, what, width);
    };
    return {
        {1, [](const Interface& i) { return i.name; }},
        {2, in(&Direction::multicast, counter32)},
        {3, in(&Direction::broadcast, counter32)},
        {4, out(&Direction::multicast, counter32)},
        {5, out(&Direction::broadcast, counter32)},
        {6, in(&Direction::octets, counter64)},
        {7, in(&Direction::unicast, counter64)},
        {8, in(&Direction::multicast, counter64)},
        {9, in(&Direction::broadcast, counter64)},
        {10, out(&Direction::octets, counter64)},
        {11, out(&Direction::unicast, counter64)},
        {12, out(&Direction::multicast, counter64)},
        {13, out(&Direction::broadcast, counter64)},
        {14, [](const Interface& i) { return truth(i.link_trap); }},
        {15, [](const Interface& i) { return number(mbps(i)); }},
        {16, [](const Interface&) { return truth(false); }},
        {17, [](const Interface& i) { return truth(i.port != nullptr); }},
        {18, [](const Interface& i) { return i.alias; }},
        {19, [](const Interface& i) { return ticks(i.created); }},
    };
}

// The VLAN interfaces among the interfaces, by VLAN id instead of ifIndex.
Rows by_vlan(Rows rows) {
    constexpr std::uint32_t kBase = kVlanIfIndexBase;
    return translated(
        std::move(rows), [](const Index& index) { return Index{kBase + std::min(index[0], kLastVlan + 1)}; },
        [](const Index& index) -> std::optional<Index> {
            if (index[0] > kBase + kLastVlan) return {};
            return Index{index[0] - kBase};
        });
}

// Lines that any interface takes in its mode.
void add_settings(Model& model, CommandLine& lines) {
    const auto setting = [&](const char* pattern, Setting set) { add_setting(model, lines, pattern, std::move(set)); };
    setting("shutdown", [](Interface& interface, const Arguments&) {
        interface.enabled = false;
        return accepted;
    });
    setting("no shutdown", [](Interface& interface, const Arguments&) {
        interface.enabled = true;
        return accepted;
    });
    setting("linktrap {0..1}", [](Interface& interface, const Arguments& arguments) {
        interface.link_trap = arguments[0].number == 1;
        return accepted;
    });
    setting("desc {text}", [](Interface& interface, const Arguments& arguments) {
        const std::string& alias = arguments[0].text;
        if (alias.size() > kLongestAlias)
            return refused(fmt::format("a description has at most {} octets", kLongestAlias));
        interface.alias = alias;
        return accepted;
    });
    setting("no desc", [](Interface& interface, const Arguments&) {
        interface.alias.clear();
        return accepted;
    });
}

}  // namespace

void add_interfaces(Model& model, TableStore& store, CommandLine& lines) {
    store.add("interfacesGlobals", {{1, "show interface_uib interfaces_g", [&model] {
                                         return number(static_cast<std::uint32_t>(model.interfaces.size()));
                                     }}});
    store.add("ifMIBGlobals", {{1, "show interface_uib ifMIB_g", [&model] { return ticks(model.interfaces_changed); }},
                               // Interfaces are not stacked.
                               {2, "show interface_uib ifMIB_g", [] { return number(0); }}});
    store.add({.name = "ifTable",
               .keyed = "show interface_uib interfaces {int}",
               .key = {{2}},
               .rows = rows_of(model.interfaces, if_columns(model)),
               .clear_key_is_first_row = true});
    store.add({.name = "ifXTable",
               .keyed = "show interface_uib ifMIB {int}",
               .key = {{2}},
               .rows = rows_of(model.interfaces, ifx_columns(model)),
               .clear_key_is_first_row = true});

    const Columns<Interface> vlan_columns{
        {1, [](const Interface& i) { return number(i.ifindex - kVlanIfIndexBase); }},
        {2, [](const Interface& i) { return number(i.ifindex); }},
        {3, [](const Interface& i) { return i.name; }},
        {4, [](const Interface&) { return number(1); }},  // active
    };
    store.add({.name = "nVlanInterfaceTable",
               .first = "show vlan-interface",
               .keyed = "show vlan-interface {int}",
               .key = {{2}},
               .rows = by_vlan(rows_of(model.interfaces, vlan_columns)),
               .arguments = [](const Index& index) { return Index{index[0] + kVlanIfIndexBase}; }});

    const auto enter = [&model](Interface& interface) {
        model.entered = &interface;
        return Outcome{{}, Mode::interface};
    };
    lines.add(Mode::global, "interface vlan{1..4094}",
              [&model, enter](const Arguments& arguments) { return enter(model.vlan_interface(arguments[0].number)); });
    lines.add(Mode::global, "interface {word}", [&model, enter](const Arguments& arguments) {
        Interface* interface = model.find(arguments[0].text);
        return interface != nullptr ? enter(*interface) : refused("there is no such interface");
    });
    lines.add(Mode::global, "no interface vlan{1..4094}", [&model](const Arguments& arguments) {
        return model.remove_vlan_interface(arguments[0].number) ? accepted : refused("there is no such interface");
    });
    add_settings(model, lines);
}

}  // namespace sw
