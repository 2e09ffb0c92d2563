// Routes by VRF: their table, whose rows the commands alone name, and the lines that add and remove static routes.
#include "switch/addresses.h"
#include "switch/vlans.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace sw {
namespace {

constexpr std::uint32_t kNoVrf = std::numeric_limits<std::uint32_t>::max();

constexpr std::uint32_t kLocalRoute = 2, kStaticRoute = 3, kOspfRoute = 13;  // inetCidrRouteProto

struct Route {
    Index destination{};  // type, length, octets, prefix length
    Index next_hop{};     // type, length, octets
    std::uint32_t ifindex = 0;
    std::uint32_t protocol = 0;
    std::uint32_t metric = 0;
    Duration since{};
};

// The next hop of a connected route.
Index unspecified(std::uint32_t type) {
    const oid length = type == kIpv4 ? 4 : 16;
    return join({{type, length}, Index(length)});
}

// Destination type, next-hop type, then of both: IPv4 address, IPv6 address and, between them, the prefix length.
struct RouteRecord {
    std::uint32_t destination_type, next_hop_type;
    unsigned char destination4[4], destination6[16];
    std::uint32_t prefix_length;
    unsigned char next_hop4[4], next_hop6[16];
};
static_assert(sizeof(RouteRecord) == 52);

void fill(const Route& route, void* record) {
    const Value destination = octets(route.destination), next_hop = octets(route.next_hop);
    RouteRecord row{};
    row.destination_type = route.destination[0];
    row.next_hop_type = route.next_hop[0];
    row.prefix_length = route.destination.back();
    destination.copy(reinterpret_cast<char*>(destination.size() == 4 ? row.destination4 : row.destination6), 16);
    next_hop.copy(reinterpret_cast<char*>(next_hop.size() == 4 ? row.next_hop4 : row.next_hop6), 16);
    std::memcpy(record, &row, sizeof row);
}

class Routes : public Area {
public:
    explicit Routes(Switch&);
    void describe(Description&) override;
    void network_made(std::uint32_t vrf, std::uint32_t ifindex, const Index& prefix) override;
    void network_removed(std::uint32_t vrf, std::uint32_t ifindex, const Index& prefix) override;

private:
    Route& make(std::uint32_t vrf, const Index& destination, const Index& next_hop);
    void add(std::uint32_t vrf, const Index& destination, const Index& next_hop, std::uint32_t protocol,
             std::uint32_t vlan, std::uint32_t metric);
    std::size_t in_default_vrf() const;
    std::uint32_t interface_to(std::uint32_t vrf, const Index& next_hop) const;
    Rows shown_rows() const;
    std::optional<Index> shown_row(const Arguments& said) const;
    void set(const Vrf&, const Argument& destination, const Argument& next_hop, const Argument& metric,
             const Argument& type = {}, const Argument& id = {});
    void remove(const Vrf&, const Argument& destination, const Argument& next_hop);

    Interfaces& interfaces_;
    Vlans& vlans_;
    Vrfs& vrfs_;
    std::map<Index, Route> routes_;  // by VRF number, destination, next hop
};

Routes::Routes(Switch& its_switch)
    : Area(its_switch),
      interfaces_(its_switch.area<Interfaces>()),
      vlans_(its_switch.area<Vlans>()),
      vrfs_(its_switch.area<Vrfs>()) {
    for (const auto& [row, count] : its_switch.area<Addresses>().networks())
        Routes::network_made(row[0], row[1], Index(row.begin() + 2, row.end()));
    const auto anywhere = [](std::uint32_t type) { return join({unspecified(type), {0}}); };
    const Index router6{kIpv6, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 254};
    add(kDefaultVrf, anywhere(kIpv4), {kIpv4, 4, 192, 0, 2, 254}, kStaticRoute, 1, 1);
    add(kDefaultVrf, {kIpv4, 4, 198, 51, 100, 0, 24}, {kIpv4, 4, 10, 0, 10, 2}, kOspfRoute, 10, 20);
    add(kDefaultVrf, {kIpv4, 4, 198, 51, 100, 0, 24}, {kIpv4, 4, 192, 0, 2, 253}, kOspfRoute, 1, 20);
    add(kDefaultVrf, anywhere(kIpv6), router6, kStaticRoute, 1, 1);
    add(*vrfs_.find("red"), {kIpv4, 4, 203, 0, 113, 0, 24}, {kIpv4, 4, 10, 0, 110, 3}, kStaticRoute, 30, 1);

    const std::size_t count = its_switch.size().routes;
    const std::size_t missing = count - std::min(count, in_default_vrf());
    for (oid i = 0; i < missing; ++i)
        add(kDefaultVrf, {1, 4, 11 + i / 0x10000 % 200, i / 0x100 % 0x100, i % 0x100, 0, 24}, {1, 4, 10, 0, 10, 2},
            kOspfRoute, 10, 20);
}

void Routes::network_made(std::uint32_t vrf, std::uint32_t ifindex, const Index& prefix) {
    Route& route = make(vrf, prefix, unspecified(prefix[0]));
    route.ifindex = ifindex;
    route.protocol = kLocalRoute;
    route.since = uptime();
}

void Routes::network_removed(std::uint32_t vrf, std::uint32_t, const Index& prefix) {
    routes_.erase(join({{vrf}, prefix, unspecified(prefix[0])}));
}

Route& Routes::make(std::uint32_t vrf, const Index& destination, const Index& next_hop) {
    Route& route = routes_[join({{vrf}, destination, next_hop})];
    route.destination = destination;
    route.next_hop = next_hop;
    return route;
}

void Routes::add(std::uint32_t vrf, const Index& destination, const Index& next_hop, std::uint32_t protocol,
                 std::uint32_t vlan, std::uint32_t metric) {
    Route& route = make(vrf, destination, next_hop);
    route.protocol = protocol;
    route.ifindex = vlan + kVlanIfIndexBase;
    route.metric = metric;
}

std::size_t Routes::in_default_vrf() const {
    return static_cast<std::size_t>(std::distance(routes_.begin(), routes_.lower_bound({kDefaultVrf + 1})));
}

// The interface through which a next hop is reached; 0: there is none.
std::uint32_t Routes::interface_to(std::uint32_t vrf, const Index& next_hop) const {
    for (auto entry = routes_.lower_bound({vrf}); entry != routes_.end() && entry->first[0] == vrf; ++entry)
        if (entry->second.protocol == kLocalRoute && covers(entry->second.destination, next_hop))
            return entry->second.ifindex;
    return 0;
}

// After the IPv4 routes of any VRF come the IPv6 routes of the default one: those of others are never shown.
Rows Routes::shown_rows() const {
    const Rows rows = rows_of(
        routes_,
        {{1, "inetCidrRouteDestType", [](const Route& r) { return r.destination[0]; }},
         {2, "inetCidrRouteDest", [](const Route& r) { return octets(r.destination); }},
         {3, "inetCidrRoutePfxLen", [](const Route& r) { return r.destination.back(); }},
         {4, "inetCidrRoutePolicy", object_id({0, 0})},
         {5, "inetCidrRouteNextHopType", [](const Route& r) { return r.next_hop[0]; }},
         {6, "inetCidrRouteNextHop", [](const Route& r) { return octets(r.next_hop); }},
         {7, "inetCidrRouteIfIndex", &Route::ifindex},
         {8, "inetCidrRouteType", [](const Route& r) { return r.protocol == kLocalRoute ? 3 : 4; }},  // local, remote
         {9, "inetCidrRouteProto", &Route::protocol},
         {10, "inetCidrRouteAge", [this](const Route& r) { return (uptime() - r.since).count() / 1000; }},
         {11, "inetCidrRouteNextHopAS", 0},  // no autonomous system
         {12, "inetCidrRouteMetric1", &Route::metric},
         {13, "inetCidrRouteMetric2", -1},
         {14, "inetCidrRouteMetric3", -1},
         {15, "inetCidrRouteMetric4", -1},
         {16, "inetCidrRouteMetric5", -1},
         {17, "inetCidrRouteStatus", 1}});  // active
    return {rows.objects(), [rows](std::size_t column, const Index& index, bool exact) -> std::optional<Answer> {
                if (exact) return rows.at(column, index);
                std::optional<Answer> answer = rows.from(column, index);
                const bool in_vrf = answer && answer->index[0] == index[0];
                if (index[1] < kIpv6 && (!in_vrf || answer->index[1] == kIpv6))
                    return rows.from(column, {kDefaultVrf, kIpv6});
                return in_vrf ? answer : std::nullopt;
            }};
}

// IPv4:  [VRF] destination type, destination, next-hop type, next hop; without the addresses where the types are 0
// IPv6:  destination, next-hop type, next hop
constexpr const char* kShow =
    "show inetcidr-table|inetcidr6-table [vrf {word}] [{0..1}] [{address/bits}] {0..2} [{address}]";

std::optional<Index> Routes::shown_row(const Arguments& said) const {
    const bool ipv6 = said[0].text == "inetcidr6-table";
    const Argument &vrf = said[1], &type = said[2], &destination = said[3], &hop_type = said[4], &next_hop = said[5];
    const bool consistent = ipv6 ? !vrf.present && !type.present && destination.address_type == kIpv6
                                 : type.present && type.number == destination.address_type;
    if (!consistent || hop_type.number != next_hop.address_type) return {};
    const Index number{vrfs_.find(vrf.text).value_or(kNoVrf)};
    if (!destination.present) return join({number, {0}});
    return join({number, destination.index(), next_hop.present ? next_hop.index() : Index{0, 0}});
}

// A static route, perhaps with the interface that the line names; a route that is there gets the new interface and
// metric.
void Routes::set(const Vrf& vrf, const Argument& destination, const Argument& next_hop, const Argument& metric,
                 const Argument& type, const Argument& id) {
    const Index to = destination.index(), hop = next_hop.index();
    require(!has_host_bits(to), "the destination has bits after its prefix");
    require(hop != unspecified(hop[0]), "the next hop is not a host");
    require(type.text != "vlan" || vlans_.has(id.number), "there is no such VLAN");
    const bool through_tunnel = type.text == "tunnel";
    const std::uint32_t tunnel = kTunnelIfIndexBase + id.number;
    require(!through_tunnel || (tunnel < kVlanIfIndexBase && interfaces_.find(tunnel) != nullptr),
            "there is no such tunnel");
    const auto known = routes_.find(join({{vrf.number}, to, hop}));
    require(known == routes_.end() || known->second.protocol == kStaticRoute, "the route is not static");
    Route& route = make(vrf.number, to, hop);
    if (known == routes_.end()) route.since = uptime();
    route.protocol = kStaticRoute;
    route.ifindex = through_tunnel ? tunnel
                    : type.present ? kVlanIfIndexBase + id.number
                                   : interface_to(vrf.number, hop);
    route.metric = metric.present ? metric.number : 1;
}

void Routes::remove(const Vrf& vrf, const Argument& destination, const Argument& next_hop) {
    const auto known = routes_.find(join({{vrf.number}, destination.index(), next_hop.index()}));
    require(known != routes_.end() && known->second.protocol == kStaticRoute, "there is no such static route");
    routes_.erase(known);
}

void Routes::describe(Description& d) {
    d.scalars("ipForwardGlobals", "show inetcidr-table summary",
              {{3, "inetCidrRouteNumber", [this] { return in_default_vrf(); }}});
    d.table({.name = "inetCidrRouteTable",
             .show = kShow,
             .key = KeyLayout({}, sizeof(RouteRecord)),
             .rows = shown_rows(),
             .record = Record{[this](const Arguments& said) { return shown_row(said); },
                              [this](const Index& index, void* record) { fill(routes_.at(index), record); }}});

    const Lines<Vrf> in_vrf = vrfs_.lines(d);
    in_vrf.line("ip route {ipv4/bits} {ipv4} [{0..255}]",
                [this](Vrf& vrf, const Arguments& arguments) { set(vrf, arguments[0], arguments[1], arguments[2]); });
    in_vrf.line("no ip route {ipv4/bits} {ipv4}",
                [this](Vrf& vrf, const Arguments& arguments) { return remove(vrf, arguments[0], arguments[1]); });
    in_vrf.line("ipv6 route {ipv6/bits} [tunnel|vlan {1..4094}] {ipv6} [{0..255}]",
                [this](Vrf& vrf, const Arguments& arguments) {
                    set(vrf, arguments[0], arguments[3], arguments[4], arguments[1], arguments[2]);
                });
    in_vrf.line("no ipv6 route {ipv6/bits} [tunnel|vlan {1..4094}] {ipv6}",
                [this](Vrf& vrf, const Arguments& arguments) { return remove(vrf, arguments[0], arguments[3]); });
}

}  // namespace

void add_routes(Switch& areas) { areas.area<Routes>(); }

}  // namespace sw
