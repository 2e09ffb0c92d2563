// What the switch is and what configuration lines change: ports, interfaces, VLANs, routes, multicast snooping, and the
// time that moves the counters.
//
// The model keeps facts; what tables say of them, and which lines change them, stands in the file of each area.
#pragma once

#include "switch/command_line.h"
#include "switch/table_store.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace sw {

using Duration = std::chrono::milliseconds;  // since the switch started, unless said otherwise

// Interface indexes are these and a tunnel's number, a VLAN's id, a port's number.
constexpr std::uint32_t kTunnelIfIndexBase = 896;
constexpr std::uint32_t kVlanIfIndexBase = 1024;
constexpr std::uint32_t kPortIfIndexBase = 5120;
constexpr std::uint32_t kLastVlan = 4094;

// A set of ports by their numbers, 1 to 96, as tables show it: port 1 is the first octet's highest bit.
struct PortList {
    std::array<unsigned char, 12> octets{};

    bool has(std::uint32_t port) const { return octets[(port - 1) / 8] & mask(port); }
    void set(std::uint32_t port, bool member) {
        unsigned char& octet = octets[(port - 1) / 8];
        octet = static_cast<unsigned char>(member ? octet | mask(port) : octet & ~mask(port));
    }
    Value value() const { return Value(octets.begin(), octets.end()); }

private:
    static unsigned mask(std::uint32_t port) { return 0x80u >> (port - 1) % 8; }
};

enum Medium : std::uint32_t { kCopper = 1, kFiber = 2 };

// What can be set for each medium of a port. Numbers are those of the switch port table.
struct Link {
    bool cable = false;        // something is at its other end
    std::int32_t speed = 6;    // auto; of a port that is not settable its one speed
    std::uint32_t duplex = 3;  // auto
    bool flow_control_send = false;
    bool flow_control_receive = false;
};

enum class PortMode : std::uint32_t { access = 1, hybrid, trunk, untagged_hybrid };

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
    PortMode mode = PortMode::access;
    std::uint32_t pvid = 1;
    std::uint32_t frame_types = 1;  // accepted ones: 1 all, 2 tagged, 3 untagged
    bool ingress_checking = true;

    std::uint32_t number() const { return ifindex - kPortIfIndexBase; }
    bool combo() const { return flags & kCombo; }
    Medium medium() const;  // the active one
    Link& link(Medium medium) { return medium == kFiber ? fiber : copper; }
    const Link& link() const { return medium() == kFiber ? fiber : copper; }
    std::uint32_t mbps() const;  // what the link runs at, or would
};

struct Vlan {
    std::uint32_t vid = 0;
    std::string name;
    Duration created{};
    PortList egress{};
    PortList untagged{};
};

// Number of sub-trees and types: what is told of IGMP and of MLD snooping.
enum Protocol : std::uint32_t { kIgmp = 1, kMld = 2 };
template <class Facts>
struct PerProtocol {
    Facts igmp{}, mld{};

    Facts& operator[](Protocol protocol) { return protocol == kIgmp ? igmp : mld; }
    const Facts& operator[](Protocol protocol) const { return protocol == kIgmp ? igmp : mld; }
};

// What can be set for snooping on a VLAN interface.
struct VlanSnooping {
    bool enabled = true;
    bool querier = false;
    bool immediate_leave = false;
    bool host_based_leave = false;
    PortList router_ports;     // set to be ones
    PortList no_router_ports;  // set not to become ones
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
    PerProtocol<VlanSnooping> snooping{};

    Duration up_time(Duration now) const { return up_before + (up ? now - last_change : Duration()); }
};

// A group, or a source of one, on a port: configured or learned from reports.
struct Membership {
    bool configured = false;
    Duration since{};
    Value reporter{};  // IPv4 address of who reported it
};

// What snooping has found and is told for ports. Rows by the index of their tables, where VLANs stand as their
// interfaces' ifIndex and addresses as type, length, octets.
struct Snooping {
    std::map<Index, Membership> groups;          // port, VLAN, group
    std::map<Index, Membership> sources;         // port, VLAN, group, source
    std::map<Index, Value> hosts;                // MAC address by VLAN, port, group, host
    std::map<Index, Duration> reports;           // since when, by VLAN, group
    std::map<Index, std::uint32_t> limits;       // groups at most, by port, VLAN, protocol
    std::map<Index, std::string> access_groups;  // access list by port, VLAN, protocol
};

struct Route {
    Index destination;  // type, length, octets, prefix length
    Index next_hop;     // type, length, octets
    std::uint32_t ifindex = 0;
    std::uint32_t protocol = 0;
    std::uint32_t metric = 0;
    Duration since{};
};

struct Model {
    // With at least so many VLANs.
    Model(std::function<Duration()> clock, std::size_t vlan_count);
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // Null when there is none.
    Interface* find(const std::string& name);
    // The interface of a VLAN, made when it is missing.
    Interface& vlan_interface(std::uint32_t vid);
    bool remove_vlan_interface(std::uint32_t vid);  // false: there is none
    // The VLAN, made with its default name when it is missing.
    Vlan& vlan(std::uint32_t vid);
    // Its ports leave it, and what snooping knows of it goes. false: there is none.
    bool remove_vlan(std::uint32_t vid);
    void join(const Port& port, std::uint32_t vid, bool untagged);  // the VLAN is there
    void leave(const Port& port, std::uint32_t vid);
    // Takes the consequences of a change to an interface or its port: whether it is up.
    void settle(Interface& interface);
    void settle_vlan(std::uint32_t vid);  // as well a VLAN's interface, if there is one
    void forget_groups(std::uint32_t vid);

    std::function<Duration()> uptime;
    std::map<std::uint32_t, Port> ports;            // by ifIndex
    std::map<std::uint32_t, Interface> interfaces;  // by ifIndex, ports too
    Duration interfaces_changed{};                  // when an interface last came or went
    std::map<std::uint32_t, Vlan> vlans;            // by VLAN id
    std::uint32_t vlans_removed = 0;
    std::map<std::string, std::uint32_t> vrfs{{"", 0}, {"red", 1}};  // numbers by name; the default one has none
    std::map<Index, Route> routes;                                   // by VRF number, destination, next hop
    PerProtocol<Snooping> snooping;

    // Whose mode the command line is in.
    Interface* entered = nullptr;
    Vlan* entered_vlan = nullptr;
    std::uint32_t entered_vrf = 0;
};

// Hundredths of a second, as TimeTicks count them.
inline Value ticks(Duration time) { return number(static_cast<std::uint32_t>(time.count() / 10)); }

// A line of interface mode, set on the interface whose mode it is.
using Setting = std::function<Outcome(Interface&, const Arguments&)>;
void add_setting(Model& model, CommandLine& lines, const char* pattern, Setting set);
// One that VLAN interfaces refuse.
using PortSetting = std::function<Outcome(Port&, const Arguments&)>;
void add_port_setting(Model& model, CommandLine& lines, const char* pattern, PortSetting set);

// What the switch comes with, and at least so much of it.
void make_vlans(Model& model, std::size_t count);
void make_routes(Model& model, std::size_t count);
void make_groups(Model& model, std::size_t count);

// The areas: their tables and their lines.
void add_interfaces(Model& model, TableStore& store, CommandLine& lines);
void add_ports(Model& model, TableStore& store, CommandLine& lines);
void add_vlans(Model& model, TableStore& store, CommandLine& lines);
void add_routes(Model& model, TableStore& store, CommandLine& lines);
void add_snooping(Model& model, TableStore& store, CommandLine& lines);

}  // namespace sw
