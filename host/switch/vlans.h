// VLANs and their ports, as other areas use them.
#pragma once

#include "switch/ports.h"

#include <map>
#include <string>

namespace sw {

constexpr std::uint32_t kDefaultVlan = 1;

struct Vlan {
    std::string name{};
    Duration created{};
    PortList egress{};
    PortList untagged{};
};

// A tunnel takes the lines of a hybrid port, and sends no tags.
enum class PortMode : std::uint32_t { access = 1, hybrid, trunk, tunnel, private_host, private_promiscuous };
constexpr bool is_private(PortMode mode) {
    return mode == PortMode::private_host || mode == PortMode::private_promiscuous;
}

// What a port has to do with VLANs.
struct PortVlans {
    PortMode mode = PortMode::access;
    std::uint32_t pvid = kDefaultVlan;
    bool tags_native = false;       // of a trunk
    std::uint32_t frame_types = 1;  // accepted ones: 1 all, 2 tagged, 3 untagged
    bool ingress_checking = true;
    std::uint32_t precedence = 1;  // of VLANs by: 1 MAC address, 2 subnet
    bool mvrp = false;
    bool mvrp_forbidden = false;  // registers no VLANs
};

class Vlans : public Area {
public:
    explicit Vlans(Switch&);
    void describe(Description&) override;

    const std::map<std::uint32_t, Vlan>& all() const { return vlans_; }           // by VLAN id
    const std::map<std::uint32_t, PortVlans>& ports() const { return by_port_; }  // by ifIndex
    bool has(std::uint32_t vid) const { return vlans_.contains(vid); }
    // Whether the port, by its ifIndex, is in the VLAN.
    bool has(std::uint32_t vid, std::uint32_t ifindex) const;

    // Puts a port into a VLAN that is there, and takes it out of one.
    void join(std::uint32_t ifindex, std::uint32_t vid, bool untagged);
    void leave(std::uint32_t ifindex, std::uint32_t vid);
    // From then on untagged frames of the port belong to this VLAN.
    void set_native(std::uint32_t ifindex, std::uint32_t vid);

    // Lines of a VLAN's own mode.
    Lines<Vlan> lines(Description&);

private:
    Vlan& make(std::uint32_t vid);  // with its default name when it is missing
    bool remove(std::uint32_t vid);
    void fill(std::uint32_t ifindex, std::uint32_t number);
    void set_mode(std::uint32_t ifindex, PortMode mode);
    // The VLANs that the port sends with tags, or those without, as a list of 512 octets.
    Value allowed(std::uint32_t ifindex, bool tagged) const;
    void add_vlan_tables(Description&);
    void add_port_tables(Description&);
    void add_port_lines(Description&);

    Ports& ports_;
    std::map<std::uint32_t, Vlan> vlans_;
    std::map<std::uint32_t, PortVlans> by_port_;
    std::uint32_t removed_ = 0;  // so many VLANs
    bool mvrp_ = false;
};

}  // namespace sw
