// IPv4 multicast routing by VRF: the interfaces that take part, routes that data keeps alive, and their next hops.
#include "switch/vlan_interfaces.h"
#include "switch/vrfs.h"

#include <algorithm>
#include <chrono>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr Duration kKeepAlive = seconds(210);          // of a route without data
constexpr Duration kDataInterval = seconds(60);        // after which its traffic is counted again
constexpr std::uint32_t kPimSparseMode = 8;            // ipMcastRouteProtocol
constexpr std::uint32_t kPruned = 1, kForwarding = 2;  // ipMcastRouteNextHopState

struct MulticastRoute {
    std::uint32_t ifindex = 0;  // where its traffic comes in
    Duration since{};
};
struct NextHop {
    std::uint32_t ifindex = 0;
};
struct RoutedInterface {};

// An address of a route as its index has it, with its length.
Index host(const Index& octets) { return join({{1, 4}, octets, {32}}); }

class MulticastRoutes : public Area {
public:
    explicit MulticastRoutes(Switch&);
    void describe(Description&) override;
    void interface_made(std::uint32_t ifindex) override;
    void interface_removed(std::uint32_t ifindex) override;

private:
    void learn();
    void learn(std::uint32_t vrf, std::uint32_t in, const Index& source, const Index& group, std::uint32_t out);
    std::size_t count(const Arguments& said) const;

    Interfaces& interfaces_;
    Vrfs& vrfs_;
    bool enabled_ = true;
    // By the index of their tables after the VRF's number
    std::map<Index, RoutedInterface> routed_;
    std::map<Index, MulticastRoute> routes_;
    std::map<Index, NextHop> next_hops_;
};

MulticastRoutes::MulticastRoutes(Switch& its_switch)
    : Area(its_switch), interfaces_(its_switch.area<Interfaces>()), vrfs_(its_switch.area<Vrfs>()) {
    its_switch.area<VlanInterfaces>();
    for (const auto& [ifindex, interface] : interfaces_.all()) MulticastRoutes::interface_made(ifindex);
    routed_[{vrfs_.of(kTunnelIfIndexBase + 2), 1, kTunnelIfIndexBase + 2}];
    learn();
}

// VLAN interfaces route from the start.
void MulticastRoutes::interface_made(std::uint32_t ifindex) {
    if (VlanInterfaces::is_one(ifindex)) routed_[{vrfs_.of(ifindex), 1, ifindex}];
}

void MulticastRoutes::interface_removed(std::uint32_t ifindex) {
    std::erase_if(routed_, [ifindex](const auto& row) { return row.first.back() == ifindex; });
    std::erase_if(next_hops_, [ifindex](const auto& row) { return row.second.ifindex == ifindex; });
    for (const auto& [index, route] : routes_)
        if (route.ifindex == ifindex)
            std::erase_if(next_hops_, [&index = index](const auto& row) {
                return std::equal(index.begin(), index.end(), row.first.begin());
            });
    std::erase_if(routes_, [ifindex](const auto& row) { return row.second.ifindex == ifindex; });
}

// What sources send and hosts have joined.
void MulticastRoutes::learn() {
    const std::uint32_t vlan1 = kVlanIfIndexBase + 1, vlan10 = kVlanIfIndexBase + 10, vlan30 = kVlanIfIndexBase + 30;
    learn(kDefaultVrf, vlan10, {10, 0, 10, 10}, {239, 1, 0, 1}, vlan1);
    learn(kDefaultVrf, vlan1, {192, 0, 2, 10}, {239, 1, 0, 2}, vlan10);
    learn(kDefaultVrf, vlan1, {192, 0, 2, 11}, {239, 1, 0, 3}, vlan10);
    learn(vrfs_.of(vlan30), vlan30, {10, 0, 110, 7}, {239, 1, 0, 9}, kTunnelIfIndexBase + 2);
}

void MulticastRoutes::learn(std::uint32_t vrf, std::uint32_t in, const Index& source, const Index& group,
                            std::uint32_t out) {
    const auto routes = [&](std::uint32_t ifindex) { return routed_.contains({vrf, 1, ifindex}); };
    if (!routes(in)) return;
    const Index route = join({{vrf}, host(group), host(source)});
    routes_[route] = {in, uptime()};
    if (routes(out)) next_hops_[join({route, {out}, {1, 4}, group})] = {out};
}

std::size_t MulticastRoutes::count(const Arguments& said) const {
    const std::optional<std::uint32_t> vrf = vrfs_.find(said[0].text);
    return static_cast<std::size_t>(
        std::count_if(routes_.begin(), routes_.end(), [&vrf](const auto& row) { return row.first[0] == vrf; }));
}

// Columns of group and source, which are the same in both tables. The VRF's number is the index's first.
template <class Row>
Columns<Row> address_columns(const std::string& table) {
    constexpr std::size_t kGroupAt = 1, kSourceAt = 8;  // type, length, octets, prefix length
    const auto octets = [](std::size_t at) {
        return [at](const Row&, const Index& index) { return octets_of(&index[at + 2], 4); };
    };
    return {{1, table + "GroupAddressType", from_index(kGroupAt)},
            {2, table + "Group", octets(kGroupAt)},
            {3, table + "GroupPrefixLength", from_index(kGroupAt + 6)},
            {4, table + "SourceAddressType", from_index(kSourceAt)},
            {5, table + "Source", octets(kSourceAt)},
            {6, table + "SourcePrefixLength", from_index(kSourceAt + 6)}};
}

void MulticastRoutes::describe(Description& d) {
    d.scalars("ipMcastMIBGlobals", "show debugging ip mroute global [vrf {word}]",
              {{1, "ipMcastEnabled", &enabled_},
               {2, "ipMcastRouteEntryCount", [this](const Arguments& said) { return count(said); }}});
    d.table({.name = "ipMcastInterfaceTable",
             .show = "show debugging ip mroute interface {int:2} [vrf {word}]",
             .key = {kInteger, kInteger},
             .rows = rows_of(routed_, {{1, "ipMcastInterfaceIPVersion", from_index(1)},
                                       {2, "ipMcastInterfaceIfIndex", from_index(2)},
                                       {3, "ipMcastInterfaceTtl", 1},
                                       {4, "ipMcastInterfaceRateLimit", 0},      // none
                                       {5, "ipMcastInterfaceStorageType", 5}}),  // readOnly
             .scope = vrfs_.scope()});

    Columns<MulticastRoute> route = address_columns<MulticastRoute>("ipMcastRoute");
    route.emplace_back(9, "ipMcastRouteInIfIndex", &MulticastRoute::ifindex);
    route.emplace_back(10, "ipMcastRouteTimeStamp", &MulticastRoute::since);
    route.emplace_back(11, "ipMcastRouteExpiryTime",
                       [this](const MulticastRoute& r) { return kKeepAlive - (uptime() - r.since) % kDataInterval; });
    route.emplace_back(12, "ipMcastRouteProtocol", kPimSparseMode);
    d.table({.name = "ipMcastRouteTable",
             .show = "show debugging ip mroute uib [{address/bits} {address/bits}] [vrf {word}]",
             .key = {kPrefix, kPrefix},
             .rows = rows_of(routes_, std::move(route)),
             .scope = vrfs_.scope()});

    Columns<NextHop> next_hop = address_columns<NextHop>("ipMcastRouteNextHop");
    next_hop.emplace_back(7, "ipMcastRouteNextHopIfIndex", &NextHop::ifindex);
    next_hop.emplace_back(8, "ipMcastRouteNextHopAddressType", 1);
    next_hop.emplace_back(9, "ipMcastRouteNextHopAddress",
                          [](const NextHop&, const Index& index) { return octets_of(&index[index.size() - 4], 4); });
    next_hop.emplace_back(10, "ipMcastRouteNextHopState", [this](const NextHop& hop) {
        return interfaces_.is_up(hop.ifindex) ? kForwarding : kPruned;
    });
    d.table({.name = "ipMcastRouteNextHopTable",
             .show = "show debugging ip mroute uib nexthop [{address/bits} {address/bits} {int}] [vrf {word}]",
             .key = {kPrefix, kPrefix, kInteger, kAddress},
             .rows = rows_of(next_hops_, std::move(next_hop)),
             .scope = vrfs_.scope()});

    const Lines<MulticastRoutes> global = d.lines(*this);
    global.line("ip multicast-routing", [this] {
        if (!enabled_) learn();
        enabled_ = true;
    });
    global.line("no ip multicast-routing", [this] {
        enabled_ = false;
        routes_.clear();
        next_hops_.clear();
    });
}

}  // namespace

void add_multicast_routes(Switch& areas) { areas.area<MulticastRoutes>(); }

}  // namespace sw
