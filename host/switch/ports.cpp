// Switch ports: their table, what they are to whoever asks for one, and the lines that set what only ports have.
#include "switch/model.h"

#include <fmt/format.h>

#include <array>
#include <optional>

namespace sw {
namespace {

enum Duplex : std::uint32_t { kFull = 1, kHalf = 2, kAutoDuplex = 3 };

// A speed as the table has it, the words that set it, and what it comes to; 0: what both ends can do.
struct Speed {
    std::int32_t value;
    const char* words;
    std::uint32_t mbps;
};
constexpr std::array<Speed, 12> kSpeeds{{
    {-2, "1000 slave", 1000},
    {-1, "1000 master", 1000},
    {1, "10", 10},
    {2, "100", 100},
    {3, "1000", 1000},
    {6, "auto", 0},
    {7, "auto 10", 10},
    {8, "auto 100", 100},
    {9, "auto 1000", 1000},
    {10, "auto 10,100", 100},
    {11, "auto 10,1000", 1000},
    {12, "auto 100,1000", 1000},
}};
constexpr std::int32_t kGigabit = 3;
constexpr std::int32_t kGigabitFiber = -3;  // of a combo port
constexpr std::int32_t kAuto = 6;

// The medium that a line means. Lines name it for a combo port, and for no other.
std::optional<Medium> medium_of(const Port& port, const std::string& word) {
    if (port.combo() == word.empty()) return {};
    if (!port.combo()) return port.medium();
    return word == "fiber" ? kFiber : kCopper;
}

// The setting's number, none when the medium doesn't take it.
std::optional<std::int32_t> speed_of(const Port& port, Medium medium, const std::string& words) {
    for (const Speed& speed : kSpeeds) {
        if (speed.words != words) continue;
        const bool gigabit = speed.value == kGigabit;
        if (medium == kFiber) {
            if (!gigabit && speed.value != kAuto) return {};
            return gigabit && port.combo() ? kGigabitFiber : speed.value;
        }
        // Two copper ends at this speed need a master: a combo port insists on being told.
        if (gigabit && port.combo()) return {};
        return speed.value;
    }
    return {};
}

Outcome set_speed(Port& port, Medium medium, const std::string& words) {
    if (port.flags & Port::kSpeedFixed) return refused("its speed cannot be set");
    const std::optional<std::int32_t> speed = speed_of(port, medium, words);
    if (!speed) return refused("this medium has no such speed");
    port.link(medium).speed = *speed;
    return accepted;
}

Outcome set_duplex(Port& port, Medium medium, const std::string& word) {
    if (medium == kFiber) return refused("fiber is always full duplex");
    port.link(medium).duplex = word == "full" ? kFull : word == "half" ? kHalf : kAutoDuplex;
    return accepted;
}

Outcome set_flow_control(Port& port, Medium medium, const std::string& direction, bool on) {
    if (port.flags & Port::kFlowControlFixed) return refused("its flow control cannot be set");
    Link& link = port.link(medium);
    (direction == "send" ? link.flow_control_send : link.flow_control_receive) = on;
    return accepted;
}

Outcome set_media_type(Port& port, const std::string& medium, bool failover) {
    if (!port.combo()) return refused("it has one medium");
    port.media_type = (medium == "fiber" ? 1 : 2) + (failover ? 0 : 2);
    return accepted;
}

std::uint32_t speed_status(const Port& port) {
    switch (port.mbps()) {
        case 10: return 1;
        case 100: return 2;
        case 1000: return 3;
        default: return 4;
    }
}

std::uint32_t duplex_status(const Port& port) {
    return port.link().duplex == kHalf && port.mbps() < 1000 ? kHalf : kFull;
}

// 0 none, 1 send, 2 receive, 3 both
std::uint32_t flow_control_status(const Port& port) {
    return (port.link().flow_control_send ? 1 : 0) + (port.link().flow_control_receive ? 2 : 0);
}

// 0 not possible, 1 broken out, 2 not
std::uint32_t breakout(const Port& port) {
    if (!(port.flags & Port::kCanBreakOut)) return 0;
    return port.broken_out ? 1 : 2;
}

Columns<Port> port_columns(const Model& model) {
    // 0 without a link
    const auto while_up = [&model](std::uint32_t (*status)(const Port&)) {
        return [&model, status](const Port& p) { return number(model.interfaces.at(p.ifindex).up ? status(p) : 0); };
    };
    return {
        {1, [](const Port& p) { return number(p.ifindex); }},
        {2, [](const Port& p) { return number(p.link().duplex); }},
        {3, while_up(duplex_status)},
        {4, [](const Port& p) { return number(static_cast<std::uint32_t>(p.link().speed)); }},
        {5, while_up(speed_status)},
        {6, [](const Port& p) { return number(p.link().flow_control_send); }},
        {7, [](const Port& p) { return number(p.link().flow_control_receive); }},
        {8, while_up(flow_control_status)},
        {9, [](const Port& p) { return number(p.media_type); }},
        {10, [](const Port& p) { return number(breakout(p)); }},
        {11, [](const Port& p) { return number(p.max_frame); }},
    };
}

}  // namespace

Medium Port::medium() const {
    switch (media_type) {
        case 1: return copper.cable && !fiber.cable ? kCopper : kFiber;
        case 2: return fiber.cable && !copper.cable ? kFiber : kCopper;
        case 3: return kFiber;
        default: return kCopper;
    }
}

std::uint32_t Port::mbps() const {
    for (const Speed& speed : kSpeeds)
        if (speed.value == link().speed && speed.mbps != 0) return speed.mbps;
    // Every fifth port has an older device at the end of its copper.
    return medium() == kCopper && ifindex % 5 == 0 ? 100 : max_mbps;
}

void add_ports(Model& model, TableStore& store, CommandLine& lines) {
    store.add("switchPortMIBGlobals", {{1, "show swport table_number",
                                        [&model] { return number(static_cast<std::uint32_t>(model.ports.size())); }}});
    store.add({.name = "swPortTable",
               .first = "show swport swport_table",
               .keyed = "show swport swport_table {int}",
               .key = {{2}},
               .rows = rows_of(model.ports, port_columns(model))});
    store.add({.keyed = "show swport type-medium {int}",
               .rows = rows_of(model.ports, {{1, [](const Port& p) { return number(p.flags); }},
                                             {2, [](const Port& p) { return number(p.medium()); }}})});

    const auto setting = [&](const char* pattern, auto set) { add_port_setting(model, lines, pattern, set); };
    // One that sets something of one medium, which the line's last word may name.
    const auto link_setting = [&setting](const char* pattern, auto set) {
        setting(pattern, [set](Port& port, const Arguments& arguments) {
            const std::optional<Medium> medium = medium_of(port, arguments.back().text);
            if (medium) return set(port, *medium, arguments);
            return refused(port.combo() ? "a combo port's line names the medium"
                                        : "only a combo port has media to name");
        });
    };
    link_setting("duplex full|half|auto [copper|fiber]", [](Port& port, Medium medium, const Arguments& arguments) {
        return set_duplex(port, medium, arguments[0].text);
    });
    link_setting("speed 10|100|1000 [copper|fiber]", [](Port& port, Medium medium, const Arguments& arguments) {
        return set_speed(port, medium, arguments[0].text);
    });
    link_setting("speed 1000 slave|master [copper|fiber]", [](Port& port, Medium medium, const Arguments& arguments) {
        return set_speed(port, medium, "1000 " + arguments[0].text);
    });
    link_setting("speed auto [10|100|1000|10,100|10,1000|100,1000] [copper|fiber]",
                 [](Port& port, Medium medium, const Arguments& arguments) {
                     const std::string& only = arguments[0].text;
                     return set_speed(port, medium, only.empty() ? "auto" : "auto " + only);
                 });
    link_setting("flowcontrol send|receive on|off [copper|fiber]",
                 [](Port& port, Medium medium, const Arguments& arguments) {
                     return set_flow_control(port, medium, arguments[0].text, arguments[1].text == "on");
                 });
    setting("media-type fiber|copper [auto-failover]", [](Port& port, const Arguments& arguments) {
        return set_media_type(port, arguments[0].text, !arguments[1].text.empty());
    });
    setting("max-rcv-frame-size {64..12288}", [](Port& port, const Arguments& arguments) {
        port.max_frame = arguments[0].number;
        return accepted;
    });

    const auto break_out = [&model, &lines](const char* pattern, bool broken_out) {
        lines.add(Mode::global, pattern, [&model, broken_out](const Arguments& arguments) {
            const Interface* interface = model.find(arguments[0].text);
            if (interface == nullptr || interface->port == nullptr) return refused("there is no such port");
            if (!(interface->port->flags & Port::kCanBreakOut)) return refused("the port cannot be broken out");
            interface->port->broken_out = broken_out;
            return accepted;
        });
    };
    break_out("interface breakout port {word}", true);
    break_out("no interface breakout port {word}", false);
}

}  // namespace sw
