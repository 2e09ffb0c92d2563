// Neighbours of VLAN interfaces, by VRF: their table, whose rows are learned or static, and the lines for them.
#include "switch/addresses.h"
#include "switch/vlan_interfaces.h"

#include <algorithm>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr std::uint32_t kDynamic = 3, kStatic = 4;   // ipNetToPhysicalType
constexpr std::uint32_t kReachable = 1, kStale = 2;  // ipNetToPhysicalState
constexpr Duration kLearnedAgainAfter = seconds(30);

struct Neighbour {
    Mac mac;
    bool fixed = false;
    Duration from{};  // a learned one is known from then on
};

// A station's, as the forwarding database has it.
Mac station(std::uint32_t vid, std::uint32_t port, std::uint32_t n = 0) {
    const auto octet = [](std::uint32_t value) { return static_cast<unsigned char>(value); };
    return {0x02, 0x48, 0x00, octet(n), octet(vid), octet(port)};
}

class Neighbours : public Area {
public:
    explicit Neighbours(Switch&);
    void describe(Description&) override;
    void network_removed(std::uint32_t vrf, std::uint32_t ifindex, const Index& prefix) override;

private:
    void add(std::uint32_t vid, const Index& address, const Mac& mac, bool fixed = false);
    bool knows(const Neighbour&, std::uint32_t ifindex) const;
    void set(std::uint32_t ifindex, const Index& address, const Argument& mac);
    void unset(std::uint32_t ifindex, const Index& address);
    void clear(const Index& address);

    Vlans& vlans_;
    VlanInterfaces& vlan_interfaces_;
    Addresses& addresses_;
    Vrfs& vrfs_;
    std::map<Index, Neighbour> neighbours_;  // by VRF, ifIndex, address
};

Neighbours::Neighbours(Switch& its_switch)
    : Area(its_switch),
      vlans_(its_switch.area<Vlans>()),
      vlan_interfaces_(its_switch.area<VlanInterfaces>()),
      addresses_(its_switch.area<Addresses>()),
      vrfs_(its_switch.area<Vrfs>()) {
    const auto ipv6 = [](oid subnet, oid host) {
        return Index{kIpv6, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, subnet, 0, 0, 0, 0, 0, 0, 0, host};
    };
    add(1, {kIpv4, 4, 192, 0, 2, 253}, station(1, kUplinkPort, 2));
    add(1, {kIpv4, 4, 192, 0, 2, 254}, station(1, kUplinkPort, 1));
    add(1, ipv6(1, 254), station(1, kUplinkPort, 1));
    add(10, {kIpv4, 4, 10, 0, 10, 2}, station(10, kUplinkPort, 1));
    add(30, {kIpv4, 4, 10, 0, 110, 3}, station(30, kUplinkPort, 1));
    const Mac clock{0x02, 0x43, 0x00, 0x00, 0x00, 0x01};
    add(1, {kIpv4, 4, 192, 0, 2, 123}, clock, true);
    add(1, ipv6(1, 123), clock, true);
    for (const auto& [ifindex, port] : vlans_.ports()) {
        const oid number = ifindex - kPortIfIndexBase, host = 100 + number;
        if (vlans_.has(10, ifindex)) {
            add(10, {kIpv4, 4, 10, 0, 10, host}, station(10, number));
            add(10, ipv6(10, host), station(10, number));
        }
        if (vlans_.has(30, ifindex)) add(30, {kIpv4, 4, 10, 0, 110, host}, station(30, number));
    }
    const auto learned =
        static_cast<std::size_t>(std::distance(neighbours_.begin(), neighbours_.lower_bound({kDefaultVrf + 1})));
    for (std::size_t n = learned; n < its_switch.size().neighbours; ++n) {
        const auto part = [n](int shift) { return static_cast<unsigned char>(n >> shift); };
        add(1, {kIpv4, 4, 100, oid{64} + part(16), part(8), part(0)}, {0x02, 0x4e, 0x00, part(16), part(8), part(0)});
    }
}

void Neighbours::add(std::uint32_t vid, const Index& address, const Mac& mac, bool fixed) {
    const std::uint32_t ifindex = kVlanIfIndexBase + vid;
    neighbours_[join({{vrfs_.of(ifindex), ifindex}, address})] = {mac, fixed};
}

void Neighbours::network_removed(std::uint32_t vrf, std::uint32_t ifindex, const Index& prefix) {
    auto row = neighbours_.lower_bound({vrf, ifindex});
    while (row != neighbours_.end() && row->first[0] == vrf && row->first[1] == ifindex)
        row = covers(prefix, Index(row->first.begin() + 2, row->first.end())) ? neighbours_.erase(row) : std::next(row);
}

bool Neighbours::knows(const Neighbour& neighbour, std::uint32_t ifindex) const {
    return neighbour.fixed || (uptime() >= neighbour.from && vlan_interfaces_.interfaces().is_up(ifindex));
}

void Neighbours::set(std::uint32_t ifindex, const Index& address, const Argument& mac) {
    const std::uint32_t vrf = vrfs_.of(ifindex);
    require(addresses_.is_connected(vrf, ifindex, address), "the interface is not in that network");
    require(!addresses_.is_own(vrf, address), "the address is one of the switch's own");
    require((mac.octets[0] & 1) == 0, "the MAC address is not one of a station");
    Neighbour& neighbour = neighbours_[join({{vrf, ifindex}, address})];
    std::copy_n(mac.octets.begin(), neighbour.mac.size(), neighbour.mac.begin());
    neighbour.fixed = true;
}

void Neighbours::unset(std::uint32_t ifindex, const Index& address) {
    const auto row = neighbours_.find(join({{vrfs_.of(ifindex), ifindex}, address}));
    require(row != neighbours_.end() && row->second.fixed, "there is no such static neighbour");
    neighbours_.erase(row);
}

// Where it is known, in whatever VRF.
void Neighbours::clear(const Index& address) {
    bool found = false;
    for (auto& [row, neighbour] : neighbours_) {
        if (!std::equal(row.begin() + 2, row.end(), address.begin(), address.end())) continue;
        if (neighbour.fixed || !knows(neighbour, row[1])) continue;
        neighbour.from = uptime() + kLearnedAgainAfter;
        found = true;
    }
    require(found, "there is no such learned neighbour");
}

void Neighbours::describe(Description& d) {
    const auto known = [this](auto fact) {
        return [this, fact](const Neighbour& neighbour, const Index& row) {
            return knows(neighbour, row[1]) ? std::optional(fact(neighbour, row)) : std::nullopt;
        };
    };
    // A learned one is checked again every other minute.
    const auto state = [this](const Neighbour& neighbour, const Index& row) {
        const auto minutes = (uptime() - neighbour.from + seconds(7 * row.back())) / std::chrono::minutes(1);
        return neighbour.fixed || minutes % 2 == 0 ? kReachable : kStale;
    };
    d.table({.name = "ipNetToPhysicalTable",
             .show = "show ipnettophysical ifindex {int} {int} [{address}] [vrf {word}]",
             .key = {kInteger, kSplitAddress},
             .rows = rows_of(
                 neighbours_,
                 {{1, "ipNetToPhysicalIfIndex", known([](const auto&, const Index& row) { return row[1]; })},
                  {2, "ipNetToPhysicalNetAddressType", known([](const auto&, const Index& row) { return row[2]; })},
                  {3, "ipNetToPhysicalNetAddress",
                   known([](const auto&, const Index& row) { return octets_of(&row[4], row[3]); })},
                  {4, "ipNetToPhysicalPhysAddress", known([](const Neighbour& n, const Index&) { return n.mac; })},
                  {6, "ipNetToPhysicalType",
                   known([](const Neighbour& n, const Index&) { return n.fixed ? kStatic : kDynamic; })},
                  {7, "ipNetToPhysicalState", known(state)},
                  {8, "ipNetToPhysicalRowStatus", known([](const auto&, const Index&) { return 1; })}}),
             .scope = vrfs_.scope()});

    const Lines<Interface> interface = vlan_interfaces_.lines(d);
    interface.line("ip arp {ipv4} {mac}", [this](Interface&, const Arguments& said, const Entered& entered) {
        set(entered.object, said[0].index(), said[1]);
    });
    interface.line("no ip arp {ipv4}", [this](Interface&, const Arguments& said, const Entered& entered) {
        return unset(entered.object, said[0].index());
    });
    d.lines(*this).line("no ipv6 neighbor {ipv6} vlan{1..4094}", [this](const Arguments& said) {
        return unset(kVlanIfIndexBase + said[1].number, said[0].index());
    });
    d.lines(*this, kExecutive).line("clear ip arp {ipv4}", [this](const Arguments& said) {
        return clear(said[0].index());
    });
}

}  // namespace

void add_neighbours(Switch& areas) { areas.area<Neighbours>(); }

}  // namespace sw
