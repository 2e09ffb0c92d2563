// VLAN interfaces: their table, and the lines that make, enter and remove them. One is up as long as its VLAN is there.
#include "switch/vlan_interfaces.h"

#include <fmt/format.h>

namespace sw {

VlanInterfaces::VlanInterfaces(Switch& its_switch)
    : Area(its_switch), interfaces_(its_switch.area<Interfaces>()), vlans_(its_switch.area<Vlans>()) {
    for (const std::uint32_t vid : {1u, 10u, 30u}) make(vid);
}

void VlanInterfaces::make(std::uint32_t vid) {
    if (interfaces_.find(kVlanIfIndexBase + vid) != nullptr) return;
    const std::string name = fmt::format("vlan{}", vid);
    interfaces_.make(kVlanIfIndexBase + vid, {.name = name,
                                              .description = "VLAN interface " + name,
                                              .type = 136,
                                              .mac = kOwnMac,
                                              .mbps = 1000,
                                              .carrier = vlans_.has(vid)});
}

void VlanInterfaces::settle(std::uint32_t vid) { interfaces_.link(kVlanIfIndexBase + vid, vlans_.has(vid), 1000); }

void VlanInterfaces::describe(Description& d) {
    const auto vid = [](const Interface&, const Index& index) { return index[0] - kVlanIfIndexBase; };
    d.table({.name = "nVlanInterfaceTable",
             .show = "show vlan-interface [{int+1024}]",
             .rows = rows_of(interfaces_.all(), {{1, "nVlanInterfaceVid", vid},
                                                 {2, "nVlanInterfaceIfIndex", from_index()},
                                                 {3, "nVlanInterfaceName", &Interface::name},
                                                 {4, "nVlanInterfaceRowStatus", 1}})  // active
                         .within(kVlanIfIndexBase + 1, kVlanIfIndexBase + kLastVlan, kVlanIfIndexBase)});

    const Lines<VlanInterfaces> global = d.lines(*this);
    global.line("interface vlan{1..4094}", [this](const Arguments& arguments) {
        make(arguments[0].number);
        return Entered{kInterface, kVlanIfIndexBase + arguments[0].number};
    });
    global.line("no interface vlan{1..4094}", [this](const Arguments& arguments) {
        require(interfaces_.remove(kVlanIfIndexBase + arguments[0].number), "there is no such interface");
    });
}

void add_vlan_interfaces(Switch& areas) { areas.area<VlanInterfaces>(); }

}  // namespace sw
