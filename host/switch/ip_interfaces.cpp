// VLAN interfaces as IPv4 and IPv6 see them: what they are set to, IPv6 on and off, and their router advertisements.
#include "switch/vlan_interfaces.h"
#include "switch/vrfs.h"

#include <algorithm>
#include <iterator>

namespace sw {
namespace {

struct Ipv4 {
    std::uint32_t ifindex;
};
struct Ipv6 {
    bool enabled = false;
};

// What an interface advertises. The row is there from its first setting until the advertisements are suppressed.
struct Adverts {
    bool sends = false;
    std::uint32_t longest = 600, shortest = 200;  // seconds between two of them
    bool managed = false, other = false;
    std::uint32_t reachable = 0, retransmit = 0;  // ms; 0: they do not say
    std::uint32_t hops = 64, lifetime = 1800;     // seconds
};

// Made of the switch's MAC address, as all its interfaces have it.
Value identifier() {
    const Mac& m = kOwnMac;
    const unsigned char id[] = {static_cast<unsigned char>(m[0] ^ 2), m[1], m[2], 0xff, 0xfe, m[3], m[4], m[5]};
    return Value(std::begin(id), std::end(id));
}

class IpInterfaces : public Area {
public:
    explicit IpInterfaces(Switch&);
    void describe(Description&) override;
    void interface_made(std::uint32_t ifindex) override;
    void interface_removed(std::uint32_t ifindex) override;

private:
    void add_adverts(Description&);
    void set_intervals(std::uint32_t ifindex, const Argument& longest, const Argument& shortest);

    Interfaces& interfaces_;
    VlanInterfaces& vlan_interfaces_;
    Vrfs& vrfs_;
    std::map<Index, Ipv4> ipv4_;  // by VRF, ifIndex
    std::map<std::uint32_t, Ipv6> ipv6_;
    std::map<std::uint32_t, Adverts> adverts_;
};

IpInterfaces::IpInterfaces(Switch& its_switch)
    : Area(its_switch),
      interfaces_(its_switch.area<Interfaces>()),
      vlan_interfaces_(its_switch.area<VlanInterfaces>()),
      vrfs_(its_switch.area<Vrfs>()) {
    for (const auto& [ifindex, interface] : interfaces_.all()) IpInterfaces::interface_made(ifindex);
    for (auto& [ifindex, ipv6] : ipv6_) ipv6.enabled = true;
    adverts_[kVlanIfIndexBase + 1].sends = true;
}

void IpInterfaces::interface_made(std::uint32_t ifindex) {
    if (!VlanInterfaces::is_one(ifindex)) return;
    ipv4_[{vrfs_.of(ifindex), ifindex}] = {ifindex};
    ipv6_[ifindex] = {};
}

void IpInterfaces::interface_removed(std::uint32_t ifindex) {
    std::erase_if(ipv4_, [ifindex](const auto& row) { return row.second.ifindex == ifindex; });
    ipv6_.erase(ifindex);
    adverts_.erase(ifindex);
}

void IpInterfaces::describe(Description& d) {
    d.table({.name = "ipv4InterfaceTable",
             .show = "show ipinterface ifindex {int} [vrf {word}]",
             .rows = rows_of(ipv4_, {{1, "ipv4InterfaceIfIndex", &Ipv4::ifindex},
                                     {2, "ipv4InterfaceReasmMaxSize", 65535},
                                     {3, "ipv4InterfaceEnableStatus",
                                      [this](const Ipv4& ipv4) { return interfaces_.find(ipv4.ifindex)->enabled; }},
                                     {4, "ipv4InterfaceRetransmitTime", 1000}}),
             .scope = vrfs_.scope()});
    d.table({.name = "ipv6InterfaceTable",
             .show = "show ipv6interface ifindex {int}",
             .rows = rows_of(ipv6_, {{1, "ipv6InterfaceIfIndex", from_index()},
                                     {2, "ipv6InterfaceReasmMaxSize", 65535},
                                     {3, "ipv6InterfaceIdentifier", identifier()},
                                     {4, "ipv6InterfaceEnableStatus", &Ipv6::enabled},
                                     {5, "ipv6InterfaceReachableTime", 30'000},
                                     {6, "ipv6InterfaceRetransmitTime", 1000},
                                     {7, "ipv6InterfaceForwarding", &Ipv6::enabled}})});
    vlan_interfaces_.lines(d).of(ipv6_).flag("ipv6 enable", &Ipv6::enabled);
    add_adverts(d);
}

// A maximum without a minimum keeps the minimum that there is, where it fits.
void IpInterfaces::set_intervals(std::uint32_t ifindex, const Argument& longest, const Argument& shortest) {
    const auto known = adverts_.find(ifindex);
    Adverts adverts = known != adverts_.end() ? known->second : Adverts();
    const auto fits = [&] { return 4 * adverts.shortest <= 3 * adverts.longest; };
    if (longest.present) adverts.longest = longest.number;
    if (shortest.present)
        adverts.shortest = shortest.number;
    else if (!fits())
        adverts.shortest = std::max(adverts.longest / 3, 3u);
    require(fits(), "the shortest interval is at most three quarters of the longest");
    adverts_[ifindex] = adverts;
}

void IpInterfaces::add_adverts(Description& d) {
    d.table({.name = "ipv6RouterAdvertTable",
             .show = "show ipv6rtadv ifindex {int}",
             .rows = rows_of(adverts_, {{1, "ipv6RouterAdvertIfIndex", from_index()},
                                        {2, "ipv6RouterAdvertSendAdverts", &Adverts::sends},
                                        {3, "ipv6RouterAdvertMaxInterval", &Adverts::longest},
                                        {4, "ipv6RouterAdvertMinInterval", &Adverts::shortest},
                                        {5, "ipv6RouterAdvertManagedFlag", &Adverts::managed},
                                        {6, "ipv6RouterAdvertOtherConfigFlag", &Adverts::other},
                                        {7, "ipv6RouterAdvertLinkMTU", 0},  // they do not say one
                                        {8, "ipv6RouterAdvertReachableTime", &Adverts::reachable},
                                        {9, "ipv6RouterAdvertRetransmitTime", &Adverts::retransmit},
                                        {10, "ipv6RouterAdvertCurHopLimit", &Adverts::hops},
                                        {11, "ipv6RouterAdvertDefaultLifetime", &Adverts::lifetime},
                                        {12, "ipv6RouterAdvertRowStatus", 1}})});

    const Lines<Interface> interface = vlan_interfaces_.lines(d);
    interface.line("ipv6 nd ra-interval {4..1800} [{3..1350}]",
                   [this](Interface&, const Arguments& said, const Entered& entered) {
                       return set_intervals(entered.object, said[0], said[1]);
                   });
    interface.line("ipv6 nd ra-min-interval {3..1350}",
                   [this](Interface&, const Arguments& said, const Entered& entered) {
                       return set_intervals(entered.object, {}, said[0]);
                   });
    interface.line("ipv6 nd suppress-ra",
                   [this](Interface&, const Arguments&, const Entered& entered) { adverts_.erase(entered.object); });
    const Lines<Adverts> adverts = interface.of(adverts_);
    adverts.set("no ipv6 nd suppress-ra", &Adverts::sends, true);
    adverts.flag("ipv6 nd managed-config-flag", &Adverts::managed);
    adverts.flag("ipv6 nd other-config-flag", &Adverts::other);
    adverts.number("ipv6 nd reachable-time {0..3600000}", &Adverts::reachable);
    adverts.number("ipv6 nd retrans-timer {0..2147483647}", &Adverts::retransmit);
    adverts.number("ipv6 hop-limit {0..255}", &Adverts::hops);
    adverts.number("ipv6 nd ra-lifetime {0..9000}", &Adverts::lifetime);
}

}  // namespace

void add_ip_interfaces(Switch& areas) { areas.area<IpInterfaces>(); }

}  // namespace sw
