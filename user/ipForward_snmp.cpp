// IP-FORWARD-MIB: the routes of the request's VRF, and static routes made of them. The two older route tables are
// registered and never answer.
#define MODULE ipForward
#include "framework/address.h"
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"

#include <cstring>

namespace switchmib::MODULE {

MODULE_OID(kMib2, 4, 24);

struct RouteKey {
    InetPrefix destination;
    std::uint32_t policy;
    InetAddress next_hop;
    static constexpr Kind index[] = {Kind::prefix, Kind::object_id, Kind::address};

    bool operator==(const RouteKey& other) const { return std::memcmp(this, &other, sizeof *this) == 0; }
};
static_assert(sizeof(RouteKey) == 64);

// What the backend gets in place of the key, and fills with the next row's.
struct RouteRecord {
    std::uint32_t destination_type;
    std::uint32_t next_hop_type;
    unsigned char destination_ipv4[4];
    unsigned char destination_ipv6[16];
    std::uint32_t prefix_length;
    unsigned char next_hop_ipv4[4];
    unsigned char next_hop_ipv6[16];
};
static_assert(sizeof(RouteRecord) == 52);

constexpr Scalars ipForwardGlobals{
    .name = "ipForwardGlobals",
    .scalars =
        {
            {{1}, "ipForwardNumber", Gauge32, ReadOnly, never},
            {{3}, "ipCidrRouteNumber", Gauge32, ReadOnly, never},
            {{6}, "inetCidrRouteNumber", Gauge32, ReadOnly, shows("show inetcidr-table summary")},
            {{8}, "inetCidrRouteDiscards", Counter32, ReadOnly, never},
        },
};

// --- ipForwardTable and ipCidrRouteTable -----------------------------------------------------------------------------

TABLE(ipForwardTable, IPFORWARDTABLE, 2, 1);

struct OldRouteKey {
    Octets<4> destination;
    std::uint32_t protocol;
    std::uint32_t policy;
    Octets<4> next_hop;
    static constexpr Kind index[] = {Kind::fixed_string(4), Kind::integer, Kind::integer, Kind::fixed_string(4)};
};

constexpr Table<OldRouteKey> ipForwardTable{
    .id = IPFORWARDTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipForwardDest", IpAddress, ReadOnly},
            {2, "ipForwardMask", IpAddress, ReadWrite},
            {3, "ipForwardPolicy", Integer, ReadOnly},
            {4, "ipForwardNextHop", IpAddress, ReadOnly},
            {5, "ipForwardIfIndex", Integer, ReadWrite},
            {6, "ipForwardType", Integer, ReadWrite},
            {7, "ipForwardProto", Integer, ReadOnly},
            {8, "ipForwardAge", Integer, ReadOnly},
            {9, "ipForwardInfo", ObjectIdentifier, ReadWrite},
            {10, "ipForwardNextHopAS", Integer, ReadWrite},
            {11, "ipForwardMetric1", Integer, ReadWrite},
            {12, "ipForwardMetric2", Integer, ReadWrite},
            {13, "ipForwardMetric3", Integer, ReadWrite},
            {14, "ipForwardMetric4", Integer, ReadWrite},
            {15, "ipForwardMetric5", Integer, ReadWrite},
        },
};

TABLE(ipCidrRouteTable, IPCIDRROUTETABLE, 4, 1);

struct CidrRouteKey {
    Octets<4> destination;
    Octets<4> mask;
    std::uint32_t service;
    Octets<4> next_hop;
    static constexpr Kind index[] = {Kind::fixed_string(4), Kind::fixed_string(4), Kind::integer,
                                     Kind::fixed_string(4)};
};

constexpr Table<CidrRouteKey> ipCidrRouteTable{
    .id = IPCIDRROUTETABLE,
    .answers = false,
    .columns =
        {
            {1, "ipCidrRouteDest", IpAddress, ReadOnly},
            {2, "ipCidrRouteMask", IpAddress, ReadOnly},
            {3, "ipCidrRouteTos", Integer, ReadOnly},
            {4, "ipCidrRouteNextHop", IpAddress, ReadOnly},
            {5, "ipCidrRouteIfIndex", Integer, ReadWrite},
            {6, "ipCidrRouteType", Integer, ReadWrite},
            {7, "ipCidrRouteProto", Integer, ReadOnly},
            {8, "ipCidrRouteAge", Integer, ReadOnly},
            {9, "ipCidrRouteInfo", ObjectIdentifier, ReadWrite},
            {10, "ipCidrRouteNextHopAS", Integer, ReadWrite},
            {11, "ipCidrRouteMetric1", Integer, ReadWrite},
            {12, "ipCidrRouteMetric2", Integer, ReadWrite},
            {13, "ipCidrRouteMetric3", Integer, ReadWrite},
            {14, "ipCidrRouteMetric4", Integer, ReadWrite},
            {15, "ipCidrRouteMetric5", Integer, ReadWrite},
            {16, "ipCidrRouteStatus", Integer, ReadWrite},
        },
};

// --- inetCidrRouteTable ----------------------------------------------------------------------------------------------

TABLE(inetCidrRouteTable, INETCIDRROUTETABLE, 7, 1);

// The columns of a row that is being created: the last interface and the last metric that were set, each with its row.
std::uint32_t pending_ifindex;
RouteKey pending_ifindex_row;
std::int32_t pending_metric;
RouteKey pending_metric_row;

Command route_command(const RouteKey& row) {
    AddressText destination, next_hop;
    if (!to_text(row.destination.address, destination) || !to_text(row.next_hop, next_hop)) return no_answer;
    const std::uint32_t type = row.destination.address.type;
    const Text<64> prefix = is_ip(type) ? Text<64>(" %s/%d", destination.text, row.destination.length) : Text<64>(" ");
    // IPv6 routes are shown from the default table, whatever the VRF.
    if (type == kIpv6) {
        if (row.next_hop.type == kNoAddress) return {"show inetcidr6-table %s %d %s", prefix.c_str(), kIpv6, "::"};
        return {"show inetcidr6-table %s %d %s", prefix.c_str(), row.next_hop.type, next_hop.text};
    }
    const char* name = vrf_name();
    const Text<37> vrf = *name != '\0' ? Text<37>("vrf %s", name) : Text<37>();
    return {"show inetcidr-table %s %d %s %d %s", vrf.c_str(), type, prefix.c_str(), row.next_hop.type, next_hop.text};
}

void take_record(const RouteRecord& record, RouteKey& row) {
    row.destination.address = take_address(record.destination_type, record.destination_ipv4, record.destination_ipv6);
    row.destination.length = record.prefix_length;
    row.next_hop = take_address(record.next_hop_type, record.next_hop_ipv4, record.next_hop_ipv6);
}

// The interface that waits for an IPv6 route's row, as its lines have it: between blanks, which makes two before
// it. Empty for other rows.
Error interface_part(const RouteKey& row, Text<24>& part) {
    if (row.destination.address.type != kIpv6 || !(pending_ifindex_row == row)) return noError;
    if (is_vlan_interface(pending_ifindex))
        part = {" vlan %d ", pending_ifindex - kVlanIfIndexBase};
    else if (pending_ifindex > kTunnelIfIndexBase && pending_ifindex < kVlanIfIndexBase)
        part = {" tunnel %d ", pending_ifindex - kTunnelIfIndexBase};
    else
        return genErr;
    return noError;
}

// Adds a static route, or with "no " in front removes it, in the request's VRF.
Error send_route(const Set& set, const RouteKey& row, const char* no, const char* metric) {
    const std::uint32_t type = row.destination.address.type;
    if (!is_ip(type) && !is_ip(row.next_hop.type)) return genErr;
    AddressText destination, next_hop;
    if (!to_text(row.destination.address, destination) || !to_text(row.next_hop, next_hop)) return genErr;
    const Text<33> vrf("%s", vrf_name());
    const bool in_vrf = *vrf.c_str() != '\0';
    if (in_vrf) TRY(set.global({"vrf context %s", vrf.c_str()}));
    Text<24> interface;
    TRY(interface_part(row, interface));
    const Command line("%s%s route %s/%d %s%s%s", no, type == kIpv6 ? "ipv6" : "ip", destination.text,
                       row.destination.length, interface.c_str(), next_hop.text, metric);
    return in_vrf ? set.sub(line) : set.global(line);
}

// What every writer here begins with.
Error parse(const Set& set, std::int32_t& value, RouteKey& row) {
    TRY(set.integer(value));
    return set.row(row);
}

Error write_inetCidrRouteIfIndex(Set& set) {
    std::int32_t ifindex;
    RouteKey row;
    TRY(parse(set, ifindex, row));
    if (!set.acting()) return noError;
    pending_ifindex = static_cast<std::uint32_t>(ifindex);
    pending_ifindex_row = row;
    return noError;
}

Error write_inetCidrRouteType(Set& set) {
    constexpr std::int32_t kRemote = 4;
    std::int32_t type;
    RouteKey row;
    TRY(parse(set, type, row));
    return set.range(type, kRemote, kRemote);
}

Error write_inetCidrRouteNextHopAS(Set& set) {
    std::uint32_t as;
    RouteKey row;
    TRY(set.unsigned32(as));
    return set.row(row);
}

Error write_inetCidrRouteMetric1(Set& set) {
    std::int32_t metric;
    RouteKey row;
    TRY(parse(set, metric, row));
    if (!set.acting()) return noError;
    pending_metric = metric;
    pending_metric_row = row;
    if (set.current == nullptr) return noError;  // waits for the row's creation
    TRY(send_route(set, row, "", Text<16>(" %d", metric)));
    pending_metric_row = {};
    return noError;
}

// Metrics 2 to 5 are accepted and ignored.
Error write_ignored_metric(Set& set) {
    std::int32_t metric;
    RouteKey row;
    return parse(set, metric, row);
}

Error write_inetCidrRouteStatus(Set& set) {
    std::int32_t status;
    RouteKey row;
    TRY(parse(set, status, row));
    TRY(set.row_status(status));
    if (!set.acting() || (status != createAndGo && status != destroy)) return noError;
    if (status == createAndGo) {
        Text<16> metric(" ");  // without a metric of its own the line ends in a blank
        if (pending_metric_row == row) metric = {" %d", pending_metric};
        TRY(send_route(set, row, "", metric));
    } else {
        TRY(send_route(set, row, "no ", ""));
    }
    pending_metric_row = {};
    pending_ifindex_row = {};
    return noError;
}

constexpr Table<RouteKey, RouteRecord> inetCidrRouteTable{
    .id = INETCIDRROUTETABLE,
    .command = route_command,
    .take = take_record,
    .columns =
        {
            {1, "inetCidrRouteDestType", Integer, ReadOnly},
            {2, "inetCidrRouteDest", OctetString, ReadOnly},
            {3, "inetCidrRoutePfxLen", Unsigned32, ReadOnly},
            {4, "inetCidrRoutePolicy", ObjectIdentifier, ReadOnly},
            {5, "inetCidrRouteNextHopType", Integer, ReadOnly},
            {6, "inetCidrRouteNextHop", OctetString, ReadOnly},
            {7, "inetCidrRouteIfIndex", Integer, ReadWrite, WRITER(write_inetCidrRouteIfIndex)},
            {8, "inetCidrRouteType", Integer, ReadWrite, WRITER(write_inetCidrRouteType)},
            {9, "inetCidrRouteProto", Integer, ReadOnly},
            {10, "inetCidrRouteAge", Gauge32, ReadOnly},
            {11, "inetCidrRouteNextHopAS", Unsigned32, ReadWrite, WRITER(write_inetCidrRouteNextHopAS)},
            {12, "inetCidrRouteMetric1", Integer, ReadWrite, WRITER(write_inetCidrRouteMetric1)},
            {13, "inetCidrRouteMetric2", Integer, ReadWrite, SHARED(write_ignored_metric)},
            {14, "inetCidrRouteMetric3", Integer, ReadWrite, SHARED(write_ignored_metric)},
            {15, "inetCidrRouteMetric4", Integer, ReadWrite, SHARED(write_ignored_metric)},
            {16, "inetCidrRouteMetric5", Integer, ReadWrite, SHARED(write_ignored_metric)},
            {17, "inetCidrRouteStatus", Integer, ReadWrite, WRITER(write_inetCidrRouteStatus)},
        },
};

MODULE_END(52, ipForwardGlobals, ipForwardTable, ipCidrRouteTable, inetCidrRouteTable);

}  // namespace switchmib::MODULE
