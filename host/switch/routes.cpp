// Routes by VRF: their table, which the commands alone say the rows of, and the lines that add and remove static
// routes.
#include "switch/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace sw {
namespace {

constexpr std::uint32_t kIpv4 = 1;
constexpr std::uint32_t kIpv6 = 2;
constexpr std::uint32_t kDefaultVrf = 0;
constexpr std::uint32_t kNoVrf = std::numeric_limits<std::uint32_t>::max();

// How a route is known.
constexpr std::uint32_t kConnected = 2;
constexpr std::uint32_t kStatic = 3;
constexpr std::uint32_t kOspf = 13;

// The octets of an address behind its type and length.
Value octets(const Index& address) {
    Value value;
    for (std::size_t i = 2; i < 2 + address[1]; ++i) value += static_cast<char>(address[i]);
    return value;
}

bool is_unspecified(const Index& address) {
    return std::all_of(address.begin() + 2, address.end(), [](oid octet) { return octet == 0; });
}

bool bit(const Index& address, std::uint32_t n) { return address[2 + n / 8] & 0x80u >> n % 8; }

// Whether the address begins as the prefix does.
bool covers(const Index& prefix, const Index& address) {
    if (prefix[0] != address[0]) return false;
    for (std::uint32_t n = 0; n < prefix.back(); ++n)
        if (bit(prefix, n) != bit(address, n)) return false;
    return true;
}

bool has_host_bits(const Index& prefix) {
    for (std::uint32_t n = prefix.back(); n < 8 * prefix[1]; ++n)
        if (bit(prefix, n)) return true;
    return false;
}

Route& add_route(Model& model, std::uint32_t vrf, Index destination, Index next_hop) {
    Route& route = model.routes[join({{vrf}, destination, next_hop})];
    route.destination = std::move(destination);
    route.next_hop = std::move(next_hop);
    return route;
}

std::size_t routes_in_default_vrf(const Model& model) {
    return static_cast<std::size_t>(std::distance(model.routes.begin(), model.routes.lower_bound({kDefaultVrf + 1})));
}

// The interface behind which a next hop is; 0: none is known.
std::uint32_t interface_to(const Model& model, std::uint32_t vrf, const Index& next_hop) {
    for (auto entry = model.routes.lower_bound({vrf}); entry != model.routes.end() && entry->first[0] == vrf; ++entry)
        if (entry->second.protocol == kConnected && covers(entry->second.destination, next_hop))
            return entry->second.ifindex;
    return 0;
}

// --- The table -------------------------------------------------------------------------------------------------------

Columns<Route> columns(const Model& model) {
    const auto unused = [](const Route&) { return number(static_cast<std::uint32_t>(-1)); };
    return {
        {1, [](const Route& r) { return number(r.destination[0]); }},
        {2, [](const Route& r) { return octets(r.destination); }},
        {3, [](const Route& r) { return number(r.destination.back()); }},
        {4,
         [](const Route&) {
             return object_id({0, 0});
         }},
        {5, [](const Route& r) { return number(r.next_hop[0]); }},
        {6, [](const Route& r) { return octets(r.next_hop); }},
        {7, [](const Route& r) { return number(r.ifindex); }},
        {8, [](const Route& r) { return number(r.protocol == kConnected ? 3 : 4); }},  // local, remote
        {9, [](const Route& r) { return number(r.protocol); }},
        {10,
         [&model](const Route& r) {
             return number(static_cast<std::uint32_t>((model.uptime() - r.since).count() / 1000));
         }},
        {11, [](const Route&) { return number(0); }},  // no autonomous system
        {12, [](const Route& r) { return number(r.metric); }},
        {13, unused},
        {14, unused},
        {15, unused},
        {16, unused},
        {17, [](const Route&) { return number(1); }},  // active
    };
}

// Behind the IPv4 routes of any VRF come the IPv6 routes of the default one: those of others are never shown.
Rows shown_rows(const Model& model) {
    Rows rows = rows_of(model.routes, columns(model));
    rows.behind = [behind = std::move(rows.behind)](int magic, const Index& index) {
        std::optional<Answer> answer = behind(magic, index);
        const bool to_ipv6 = index[1] < kIpv6 && (!answer || answer->index[0] != index[0] || answer->index[1] == kIpv6);
        return to_ipv6                                  ? behind(magic, {kDefaultVrf, kIpv6})
               : answer && answer->index[0] == index[0] ? answer
                                                        : std::nullopt;
    };
    return rows;
}

// IPv4:  [VRF] destination type, destination, next-hop type, next hop; without the addresses where the types are 0
// IPv6:  destination, next-hop type, next hop
constexpr const char* kShow =
    "show inetcidr-table|inetcidr6-table [vrf {word}] [{0..1}] [{address/bits}] {0..2} [{address}]";

std::optional<Index> shown_row(const Model& model, const Arguments& said) {
    const bool ipv6 = said[0].text == "inetcidr6-table";
    const auto type_of = [](const Argument& address) { return address.address.empty() ? 0 : address.address[0]; };
    const Argument &vrf = said[1], &type = said[2], &destination = said[3], &hop_type = said[4], &next_hop = said[5];
    const bool consistent = ipv6 ? vrf.text.empty() && !type.is_number && type_of(destination) == kIpv6
                                 : type.is_number && type.number == type_of(destination);
    if (!consistent || hop_type.number != type_of(next_hop)) return {};
    const auto known = model.vrfs.find(vrf.text);
    const Index number{known == model.vrfs.end() ? kNoVrf : known->second};
    if (destination.address.empty()) return join({number, {0}});
    return join({number, destination.address, next_hop.address.empty() ? Index{0, 0} : next_hop.address});
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

// --- Lines -----------------------------------------------------------------------------------------------------------

// A static route, perhaps with the interface that the line names; a route that is there gets the new interface and
// metric.
Outcome set_route(Model& model, std::uint32_t vrf, const Argument& destination, const Argument& next_hop,
                  const Argument& metric, const Argument& type = {}, const Argument& id = {}) {
    if (has_host_bits(destination.address)) return refused("the destination has bits behind its prefix");
    if (is_unspecified(next_hop.address)) return refused("the next hop is no host");
    if (type.text == "vlan" && !model.vlans.contains(id.number)) return refused("there is no such VLAN");
    if (type.text == "tunnel" && id.number >= kVlanIfIndexBase - kTunnelIfIndexBase)
        return refused("there is no such tunnel");
    const auto known = model.routes.find(join({{vrf}, destination.address, next_hop.address}));
    if (known != model.routes.end() && known->second.protocol != kStatic) return refused("the route is no static one");
    Route& route = add_route(model, vrf, destination.address, next_hop.address);
    if (known == model.routes.end()) route.since = model.uptime();
    route.protocol = kStatic;
    route.ifindex = type.text.empty() ? interface_to(model, vrf, next_hop.address)
                                      : id.number + (type.text == "vlan" ? kVlanIfIndexBase : kTunnelIfIndexBase);
    route.metric = metric.is_number ? metric.number : 1;
    return accepted;
}

Outcome remove_route(Model& model, std::uint32_t vrf, const Argument& destination, const Argument& next_hop) {
    const auto known = model.routes.find(join({{vrf}, destination.address, next_hop.address}));
    if (known == model.routes.end() || known->second.protocol != kStatic)
        return refused("there is no such static route");
    model.routes.erase(known);
    return accepted;
}

}  // namespace

void make_routes(Model& model, std::size_t count) {
    const auto add = [&model](std::uint32_t vrf, const Index& destination, const Index& next_hop,
                              std::uint32_t protocol, std::uint32_t vlan, std::uint32_t metric) {
        Route& route = add_route(model, vrf, destination, next_hop);
        route.protocol = protocol;
        route.ifindex = vlan + kVlanIfIndexBase;
        route.metric = metric;
    };
    const Index here4{1, 4, 0, 0, 0, 0}, here6{2, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const auto ipv6 = [](oid subnet, oid host) {
        return Index{2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, subnet, 0, 0, 0, 0, 0, 0, 0, host};
    };
    const auto network = [](const Index& address, oid bits) { return join({address, {bits}}); };
    add(kDefaultVrf, network(here4, 0), {1, 4, 192, 0, 2, 254}, kStatic, 1, 1);
    add(kDefaultVrf, {1, 4, 10, 0, 10, 0, 24}, here4, kConnected, 10, 0);
    add(kDefaultVrf, {1, 4, 192, 0, 2, 0, 24}, here4, kConnected, 1, 0);
    add(kDefaultVrf, {1, 4, 198, 51, 100, 0, 24}, {1, 4, 10, 0, 10, 2}, kOspf, 10, 20);
    add(kDefaultVrf, {1, 4, 198, 51, 100, 0, 24}, {1, 4, 192, 0, 2, 253}, kOspf, 1, 20);
    add(kDefaultVrf, network(here6, 0), ipv6(1, 254), kStatic, 1, 1);
    for (const oid vlan : {1u, 10u}) add(kDefaultVrf, network(ipv6(vlan, 0), 64), here6, kConnected, vlan, 0);
    const std::uint32_t red = model.vrfs.at("red");
    add(red, {1, 4, 10, 0, 110, 0, 24}, here4, kConnected, 10, 0);
    add(red, {1, 4, 203, 0, 113, 0, 24}, {1, 4, 10, 0, 110, 3}, kStatic, 10, 1);

    const std::size_t missing = count - std::min(count, routes_in_default_vrf(model));
    for (oid i = 0; i < missing; ++i)
        add(kDefaultVrf, {1, 4, 11 + i / 0x10000 % 200, i / 0x100 % 0x100, i % 0x100, 0, 24}, {1, 4, 10, 0, 10, 2},
            kOspf, 10, 20);
}

void add_routes(Model& model, TableStore& store, CommandLine& lines) {
    store.add("ipForwardGlobals", {{3, "show inetcidr-table summary", [&model] {
                                        return number(static_cast<std::uint32_t>(routes_in_default_vrf(model)));
                                    }}});
    store.add({.name = "inetCidrRouteTable",
               .keyed = kShow,
               .key = KeyLayout({}, sizeof(RouteRecord)),
               .rows = shown_rows(model),
               .record = Record{[&model](const Arguments& said) { return shown_row(model, said); },
                                [&model](const Index& index, void* record) { fill(model.routes.at(index), record); }}});

    lines.add(Mode::global, "vrf context {word}", [&model](const Arguments& arguments) {
        const auto vrf = model.vrfs.find(arguments[0].text);
        if (vrf == model.vrfs.end()) return refused("there is no such VRF");
        model.entered_vrf = vrf->second;
        return Outcome{{}, Mode::vrf};
    });
    for (const Mode mode : {Mode::global, Mode::vrf}) {
        const auto vrf = [&model, mode] { return mode == Mode::vrf ? model.entered_vrf : kDefaultVrf; };
        lines.add(mode, "ip route {ipv4/bits} {ipv4} [{0..255}]", [&model, vrf](const Arguments& arguments) {
            return set_route(model, vrf(), arguments[0], arguments[1], arguments[2]);
        });
        lines.add(mode, "no ip route {ipv4/bits} {ipv4}", [&model, vrf](const Arguments& arguments) {
            return remove_route(model, vrf(), arguments[0], arguments[1]);
        });
        const char* add = "ipv6 route {ipv6/bits} [tunnel|vlan {1..4094}] {ipv6} [{0..255}]";
        lines.add(mode, add, [&model, vrf](const Arguments& arguments) {
            return set_route(model, vrf(), arguments[0], arguments[3], arguments[4], arguments[1], arguments[2]);
        });
        lines.add(mode, "no ipv6 route {ipv6/bits} [tunnel|vlan {1..4094}] {ipv6}",
                  [&model, vrf](const Arguments& arguments) {
                      return remove_route(model, vrf(), arguments[0], arguments[3]);
                  });
    }
}

}  // namespace sw
