// Switch ports: their table, what lookups say of one, and the lines that set what only ports have.
#include "switch/ports.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>

namespace sw {
namespace {

constexpr std::uint32_t kFirstCombo = 21;
constexpr std::uint32_t kFirstFiber = 25;
constexpr std::uint32_t kPorts = 26;

// Port n as it leaves the factory, with the cables that happen to be plugged in.
Port make_port(std::uint32_t n) {
    Port port{.number = n};
    const bool plugged = n % 4 != 0 && n != kPorts;
    if (n >= kFirstFiber && n <= kPorts) {
        port.flags = Port::kSpeedFixed | (n == kPorts ? Port::kFlowControlFixed : Port::kCanBreakOut);
        port.max_mbps = 10000;
        port.media_type = 3;
        port.fiber = {
            .cable = plugged, .speed = 4, .duplex = 1, .flow_control_send = true, .flow_control_receive = true};
        return port;
    }
    if (n >= kFirstCombo && n < kFirstFiber) {
        port.flags = Port::kCombo;
        port.media_type = 2;
        port.fiber.cable = n == kFirstCombo + 1;
        port.fiber.duplex = 1;
    }
    port.copper.cable = plugged && !port.fiber.cable;
    return port;
}

Interface interface_of(const Port& port) {
    const char* kind = port.max_mbps > 1000 ? "10GBASE-R"
                       : port.combo()       ? "10/100/1000BASE-T or 1000BASE-X"
                                            : "10/100/1000BASE-T";
    const std::string name = fmt::format("port{}", port.number);
    return {.name = name,
            .description = name + ' ' + kind,
            .mac = {0x02, 0x53, 0x57, 0x10, 0x00, static_cast<unsigned char>(port.number)},  // locally administered
            .connector = true,
            .mbps = port.mbps(),
            .carrier = port.link().cable,
            .enabled = port.number != 20};
}

enum Duplex : std::uint32_t { kFull = 1, kHalf = 2, kAutoDuplex = 3 };

// A speed as the table has it, the words that set it, and its Mbit/s; 0: the most that both ends can do.
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
std::optional<Medium> medium_of(const Port& port, std::string_view word) {
    if (port.combo() == word.empty()) return {};
    if (!port.combo()) return port.medium();
    return word == "fiber" ? kFiber : kCopper;
}

// Fiber has one speed. Two copper ends at that speed need a master, which lines of a combo port must name.
void set_speed(Port& port, Medium medium, const Speed& speed) {
    require((port.flags & Port::kSpeedFixed) == 0, "its speed cannot be set");
    const bool gigabit = speed.value == kGigabit, fiber = medium == kFiber;
    require(fiber ? gigabit || speed.value == kAuto : !gigabit || !port.combo(), "this medium has no such speed");
    port.link(medium).speed = fiber && gigabit && port.combo() ? kGigabitFiber : speed.value;
}

void set_duplex(Port& port, Medium medium, std::string_view word) {
    require(medium != kFiber, "fiber is always full duplex");
    port.link(medium).duplex = word == "full" ? kFull : word == "half" ? kHalf : kAutoDuplex;
}

// Of one direction, or of both where none is named.
void set_flow_control(Port& port, Medium medium, const Argument& direction, bool on) {
    require((port.flags & Port::kFlowControlFixed) == 0, "its flow control cannot be set");
    Link& link = port.link(medium);
    if (direction.text != "receive") link.flow_control_send = on;
    if (direction.text != "send") link.flow_control_receive = on;
}

void set_media_type(Port& port, std::string_view medium, bool failover) {
    require(port.combo(), "it has one medium");
    port.media_type = (medium == "fiber" ? 1 : 2) + (failover ? 0 : 2);
}

std::uint32_t speed_status(const Port& port) {
    switch (port.mbps()) {
        case 10: return 1;
        case 100: return 2;
        case 1000: return 3;
        default: return 4;
    }
}

std::uint32_t duplex_status(const Port& port) { return port.half_duplex() ? kHalf : kFull; }

// 0 none, 1 send, 2 receive, 3 both
std::uint32_t flow_control_status(const Port& port) {
    return (port.link().flow_control_send ? 1 : 0) + (port.link().flow_control_receive ? 2 : 0);
}

// 0 not possible, 1 broken out, 2 not
std::uint32_t breakout(const Port& port) {
    if (!(port.flags & Port::kCanBreakOut)) return 0;
    return port.broken_out ? 1 : 2;
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
    return medium() == kCopper && number % 5 == 0 ? 100 : max_mbps;
}

bool Port::half_duplex() const {
    if (mbps() >= 1000) return false;
    // A hub is at the end of port 15.
    return link().duplex == kHalf || (link().duplex == kAutoDuplex && number == 15);
}

Ports::Ports(Switch& its_switch) : Area(its_switch), interfaces_(its_switch.area<Interfaces>()) {
    const auto count = std::max(kPorts, static_cast<std::uint32_t>(its_switch.size().ports));
    for (std::uint32_t n = 1; n <= count; ++n) {
        const Port& port = ports_[kPortIfIndexBase + n] = make_port(n);
        interfaces_.make(kPortIfIndexBase + n, interface_of(port));
    }
}

const Port* Ports::find(std::string_view name) const {
    const auto port = ports_.find(interfaces_.find(name));
    return port == ports_.end() ? nullptr : &port->second;
}

void Ports::settle(std::uint32_t ifindex) {
    const Port& port = ports_.at(ifindex);
    interfaces_.link(ifindex, port.link().cable, port.mbps());
    switch_.announce(&Area::port_changed, ifindex);
}

Lines<Port> Ports::lines(Description& d) {
    return interfaces_.lines(d, kPortIfIndexBase + 1, kPortIfIndexBase + kMostPorts, "switch port")
        .of(ports_, [this](const Entered& entered) { settle(entered.object); });
}

void Ports::describe(Description& d) {
    d.scalars("switchPortMIBGlobals", "show swport table_number",
              {{1, "swPortTableNumber", [this] { return ports_.size(); }}});
    // 0 without a link
    const auto while_up = [this](std::uint32_t (*status)(const Port&)) {
        return
            [this, status](const Port& p, const Index& index) { return interfaces_.is_up(index[0]) ? status(p) : 0; };
    };
    d.table(
        {.name = "swPortTable",
         .show = "show swport swport_table [{int}]",
         .rows = rows_of(
             ports_,
             {{1, "swPortIndex", from_index()},
              {2, "swPortDuplex", [](const Port& p) { return p.link().duplex; }},
              {3, "swPortDuplexStatus", while_up(duplex_status)},
              {4, "swPortSpeed", [](const Port& p) { return p.link().speed; }},
              {5, "swPortSpeedStatus", while_up(speed_status)},
              {6, "swPortFlowControlSend", zero_or_one([](const Port& p) { return p.link().flow_control_send; })},
              {7, "swPortFlowControlReceive", zero_or_one([](const Port& p) { return p.link().flow_control_receive; })},
              {8, "swPortFlowControlStatus", while_up(flow_control_status)},
              {9, "swPortMedium", &Port::media_type},
              {10, "swPortBreakout", breakout},
              {11, "swPortMaxRcvFrameSize", &Port::max_frame}})});
    d.lookup("show swport type-medium {int}",
             rows_of(ports_, {{1, "flags", &Port::flags}, {2, "medium", &Port::medium}}));

    const Lines<Port> port = lines(d);
    // One that sets something of one medium, which the line's last word may name.
    const auto link_line = [&port](const std::string& pattern, auto set) {
        port.line(pattern, [set](Port& p, const Arguments& arguments) {
            const std::optional<Medium> medium = medium_of(p, arguments.back().text);
            require(medium.has_value(),
                    p.combo() ? "a combo port's line names the medium" : "only a combo port has media to name");
            set(p, *medium, arguments);
        });
    };
    link_line("duplex full|half|auto [copper|fiber]",
              [](Port& p, Medium medium, const Arguments& arguments) { set_duplex(p, medium, arguments[0].text); });
    for (const Speed& speed : kSpeeds)
        link_line(fmt::format("speed {} [copper|fiber]", speed.words),
                  [&speed](Port& p, Medium medium, const Arguments&) { set_speed(p, medium, speed); });
    link_line("flowcontrol [send|receive] on|off [copper|fiber]",
              [](Port& p, Medium medium, const Arguments& arguments) {
                  set_flow_control(p, medium, arguments[0], arguments[1].text == "on");
              });
    port.line("media-type fiber|copper [auto-failover]",
              [](Port& p, const Arguments& arguments) { set_media_type(p, arguments[0].text, arguments[1].present); });
    port.number("max-rcv-frame-size {64..12288}", &Port::max_frame);

    for (const bool on : {true, false})
        d.lines(*this).line(on ? "interface breakout port {word}" : "no interface breakout port {word}",
                            [this, on](const Arguments& arguments) {
                                const auto entry = ports_.find(interfaces_.find(arguments[0].text));
                                require(entry != ports_.end(), "there is no such port");
                                require((entry->second.flags & Port::kCanBreakOut) != 0,
                                        "the port cannot be broken out");
                                entry->second.broken_out = on;
                            });
}

void add_ports(Switch& areas) { areas.area<Ports>(); }

}  // namespace sw
