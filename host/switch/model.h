// What the switch is and what configuration lines change: ports, interfaces, and the time that moves the counters.
//
// The model keeps facts; what tables say of them, and which lines change them, stands in the file of each area.
#pragma once

#include "switch/command_line.h"
#include "switch/table_store.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace sw {

using Duration = std::chrono::milliseconds;  // since the switch started, unless said otherwise

enum Medium : std::uint32_t { kCopper = 1, kFiber = 2 };

// What can be set for each medium of a port. Numbers are those of the switch port table.
struct Link {
    bool cable = false;        // something is at its other end
    std::int32_t speed = 6;    // auto; of a port that is not settable its one speed
    std::uint32_t duplex = 3;  // auto
    bool flow_control_send = false;
    bool flow_control_receive = false;
};

struct Port {
    // Type flags
    static constexpr std::uint32_t kCombo = 2;
    static constexpr std::uint32_t kSpeedFixed = 64;
    static constexpr std::uint32_t kFlowControlFixed = 128;
    static constexpr std::uint32_t kCanBreakOut = 1u << 28;

    std::uint32_t ifindex = 0;
    std::uint32_t flags = 0;
    std::uint32_t max_mbps = 1000;
    std::uint32_t media_type = 4;  // 1 fiber, 2 copper, each with failover to the other; 3 fiber, 4 copper
    Link copper;
    Link fiber;
    bool broken_out = false;
    std::uint32_t max_frame = 1536;  // octets

    bool combo() const { return flags & kCombo; }
    Medium medium() const;  // the active one
    Link& link(Medium medium) { return medium == kFiber ? fiber : copper; }
    const Link& link() const { return medium() == kFiber ? fiber : copper; }
    std::uint32_t mbps() const;  // what the link runs at, or would
};

struct Interface {
    std::uint32_t ifindex = 0;
    std::string name;
    Port* port = nullptr;  // null: a VLAN interface
    bool enabled = true;
    bool link_trap = true;
    std::string alias;
    Duration created{};
    bool up = false;
    Duration last_change{};  // when it last went up or down
    Duration up_before{};    // how long it was up before that

    Duration up_time(Duration now) const { return up_before + (up ? now - last_change : Duration()); }
};

struct Model {
    static constexpr std::uint32_t kVlanIfIndexBase = 1024;
    static constexpr std::uint32_t kPortIfIndexBase = 5120;

    explicit Model(std::function<Duration()> clock);
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // Null when there is none.
    Interface* find(const std::string& name);
    // The interface of a VLAN, made when it is missing.
    Interface& vlan_interface(std::uint32_t vid);
    bool remove_vlan_interface(std::uint32_t vid);  // false: there is none
    // Takes the consequences of a change to an interface or its port: whether it is up.
    void settle(Interface& interface);

    std::function<Duration()> uptime;
    std::map<std::uint32_t, Port> ports;            // by ifIndex
    std::map<std::uint32_t, Interface> interfaces;  // by ifIndex, ports too
    Duration interfaces_changed{};                  // when an interface last came or went
    Interface* entered = nullptr;                   // whose mode the command line is in
};

// Hundredths of a second, as TimeTicks count them.
inline Value ticks(Duration time) { return number(static_cast<std::uint32_t>(time.count() / 10)); }

// A line of interface mode, set on the interface whose mode it is.
using Setting = std::function<Outcome(Interface&, const Arguments&)>;
void add_setting(Model& model, CommandLine& lines, const char* pattern, Setting set);

// The areas: their tables and their lines.
void add_interfaces(Model& model, TableStore& store, CommandLine& lines);
void add_ports(Model& model, TableStore& store, CommandLine& lines);

}  // namespace sw
