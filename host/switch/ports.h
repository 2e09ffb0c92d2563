// Switch ports, as other areas use them.
#pragma once

#include "switch/interfaces.h"

#include <map>

namespace sw {

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

    std::uint32_t number = 0;  // from 1 on
    std::uint32_t flags = 0;
    std::uint32_t max_mbps = 1000;
    std::uint32_t media_type = 4;  // 1 fiber, 2 copper, each with failover to the other; 3 fiber, 4 copper
    Link copper{};
    Link fiber{};
    bool broken_out = false;
    std::uint32_t max_frame = 1536;  // octets

    bool combo() const { return flags & kCombo; }
    bool has_copper() const { return combo() || media_type == 4; }
    Medium medium() const;  // the active one
    Link& link(Medium medium) { return medium == kFiber ? fiber : copper; }
    const Link& link() const { return medium() == kFiber ? fiber : copper; }
    std::uint32_t mbps() const;  // what the link runs at, or would
    bool half_duplex() const;
};

// A port list that a line has as three numbers: words whose octets are in little-endian order.
inline PortList port_list(const Argument* words) {
    PortList list;
    for (std::size_t i = 0; i < list.octets.size(); ++i)
        list.octets[i] = static_cast<unsigned char>(words[i / 4].number >> 8 * (i % 4));
    return list;
}

class Ports : public Area {
public:
    explicit Ports(Switch&);
    void describe(Description&) override;

    const std::map<std::uint32_t, Port>& all() const { return ports_; }  // by ifIndex
    const Port* find(std::string_view name) const;                       // null: there is no such port
    // What an area keeps for each port, by ifIndex.
    template <class Facts>
    std::map<std::uint32_t, Facts> each(const Facts& facts = {}) const {
        std::map<std::uint32_t, Facts> by_port;
        for (const auto& [ifindex, port] : ports_) by_port.emplace(ifindex, facts);
        return by_port;
    }
    const Interfaces& interfaces() const { return interfaces_; }

    // Lines of interface mode that ports alone take.
    Lines<Port> lines(Description&);

private:
    void settle(std::uint32_t ifindex);

    Interfaces& interfaces_;
    std::map<std::uint32_t, Port> ports_;
};

}  // namespace sw
