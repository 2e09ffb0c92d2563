// The forwarding database: which addresses the switch has learned on which ports, multicast groups and static multicast
// addresses.
#pragma once

#include "switch/vlans.h"

#include <map>

namespace sw {

class Forwarding : public Area {
public:
    explicit Forwarding(Switch&);
    void describe(Description&) override;
    void interface_went(std::uint32_t ifindex, bool up) override;
    void vlan_removed(std::uint32_t vid) override;

    // Visits the addresses that are known on ports.
    void for_each_learned(const std::function<void(std::uint32_t ifindex, const Mac&)>& visit) const;

    // A port joins or leaves a group, which is an IP address as in an index.
    void join_group(std::uint32_t vid, std::uint32_t ifindex, const Index& group);
    void leave_group(std::uint32_t vid, std::uint32_t ifindex, const Index& group);

private:
    // A station on a port. It sends for some time, is silent for some time, and so on: its address is there while it
    // sends, and then until it has aged.
    struct Station {
        std::uint32_t ifindex = 0;  // 0: the switch itself
        Duration talks{};           // in each cycle; kCycle: always
        Duration shift{};           // how far into its first cycle it was at the start
        Duration forgotten{};       // when the port last went down or the address aged: it is learned again
    };
    // Ports that frames to a multicast address in a VLAN go to.
    struct Group {
        std::map<std::uint32_t, int> members{};  // by port number: how many groups of that address it has joined
        PortList fixed{};                        // by configuration
        bool is_fixed() const { return fixed.octets != PortList().octets; }
    };
    struct Known {
        std::uint32_t vid;
        const Station* station;
    };
    struct Filtering {
        std::uint32_t mode =
            2;  // to multicast addresses: 1 forwards all frames, 2 those that are not registered, 3 neither
    };

    void add_station(std::uint32_t vid, const Mac& mac, const Station& station);
    void add_stations(std::uint32_t vid, std::uint32_t ifindex, std::uint32_t number);
    bool knows(std::uint32_t vid, const Station& station) const;
    std::uint32_t count(std::uint32_t vid) const;
    void set_aging(Duration time);
    PortList members(const Group& group, const Index& row, bool with_fixed) const;
    void set_fixed(const Arguments& arguments, bool fixed);
    void remove_fixed(const Arguments& arguments);
    void add_count_tables(Description&);
    void add_station_tables(Description&);
    void add_group_tables(Description&);
    void add_static_tables(Description&);
    void add_filtering_modes(Description&);

    Ports& ports_;
    Vlans& vlans_;
    Duration aging_ = std::chrono::seconds(300);    // 0: addresses do not age
    std::map<Index, Station> stations_;             // by VLAN, address
    std::map<Index, Known> by_address_;             // the same; an address is in one VLAN
    std::map<Index, Group> groups_;                 // by VLAN, address
    std::map<std::uint32_t, Filtering> filtering_;  // by ifIndex
};

}  // namespace sw
