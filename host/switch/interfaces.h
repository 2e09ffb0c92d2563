// What all interfaces have, whatever they are; areas make theirs here and say what is connected to them.
#pragma once

#include "switch/area.h"

#include <map>
#include <string>

namespace sw {

constexpr Mac kOwnMac{0x02, 0x53, 0x57, 0x10, 0x00, 0x00};  // the switch's, as a station

struct Interface {
    std::string name;  // of the command line
    std::string description;
    std::uint32_t type = 6;  // ifType: 6 Ethernet, 136 VLAN interface, 131 tunnel
    Mac mac{};
    bool connector = false;
    std::uint32_t mbps = 0;
    bool carrier = false;  // it is up as far as it is enabled

    bool enabled = true;
    bool link_trap = true;
    std::string alias{};
    Duration created{};
    Stopwatch up{};
};

// What goes through an interface. The rates are steady and differ from interface to interface; they make frames first,
// and octets of them.
struct Direction {
    std::uint64_t octets, unicast, multicast, broadcast, not_unicast, discards, errors;
};
struct Traffic {
    Direction in, out;
};
Traffic traffic(std::uint32_t ifindex, Duration up);  // while it is up for so long

class Interfaces : public Area {
public:
    using Area::Area;
    void describe(Description&) override;

    void make(std::uint32_t ifindex, Interface interface);
    bool remove(std::uint32_t ifindex);  // false: there is none
    // Takes what an interface runs at and whether something is at its other end.
    void link(std::uint32_t ifindex, bool carrier, std::uint32_t mbps);

    const Interface* find(std::uint32_t ifindex) const;  // null: there is none
    std::uint32_t find(std::string_view name) const;     // its ifIndex; 0: there is none
    bool is_up(std::uint32_t ifindex) const;
    const std::map<std::uint32_t, Interface>& all() const { return interfaces_; }

    // Lines of interface mode that all interfaces take.
    Lines<Interface> lines(Description&);
    // Those of one kind, whose ifIndexes are low to high; the others refuse them as "NAME is not a KIND".
    Lines<Interface> lines(Description&, std::uint32_t low, std::uint32_t high, const std::string& kind);

private:
    void settle(std::uint32_t ifindex);

    std::map<std::uint32_t, Interface> interfaces_;
    Duration changed_{};  // when an interface last came or went
};

}  // namespace sw
