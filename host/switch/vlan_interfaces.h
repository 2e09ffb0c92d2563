// VLAN interfaces: the interfaces of VLANs, and the lines of their mode.
#pragma once

#include "switch/vlans.h"

namespace sw {

class VlanInterfaces : public Area {
public:
    explicit VlanInterfaces(Switch&);
    void describe(Description&) override;
    void vlan_made(std::uint32_t vid) override { settle(vid); }
    void vlan_removed(std::uint32_t vid) override { settle(vid); }

    static bool is_one(std::uint32_t ifindex) {
        return ifindex > kVlanIfIndexBase && ifindex <= kVlanIfIndexBase + kLastVlan;
    }
    // Lines of interface mode that VLAN interfaces alone take.
    Lines<Interface> lines(Description& d) {
        return interfaces_.lines(d, kVlanIfIndexBase + 1, kVlanIfIndexBase + kLastVlan, "VLAN interface");
    }

    const Interfaces& interfaces() const { return interfaces_; }

private:
    void make(std::uint32_t vid);  // unless it is there
    void settle(std::uint32_t vid);

    Interfaces& interfaces_;
    Vlans& vlans_;
};

}  // namespace sw
