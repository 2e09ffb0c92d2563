// IPMCAST-MIB: IPv4 multicast routing of the request's VRF, its interfaces, routes and their next hops. Nothing but the
// global switch can be set; ranges, boundaries, scope names, listeners and zones are registered and never answer.
#define MODULE ipMcastMIB
#include "framework/address.h"
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 168);

// The command with the VRF of the request, where it has one.
Command in_vrf(const Command& command) {
    const VrfPart vrf;
    return {"%s%s%s", command.c_str(), vrf.word, vrf.name};
}

Error write_ipMcastEnabled(Set& set) {
    return set.scalar_line({{1, "ip multicast-routing"}, {2, "no ip multicast-routing"}});
}

constexpr Scalars ipMcastMIBGlobals{
    .name = "ipMcastMIBGlobals",
    .command = [](const Read&) { return in_vrf("show debugging ip mroute global"); },
    .scalars =
        {
            {{1, 1}, "ipMcastEnabled", Integer, ReadWrite, WRITER(write_ipMcastEnabled)},
            {{1, 2}, "ipMcastRouteEntryCount", Gauge32, ReadOnly},
            {{1, 11}, "ipMcastDeviceConfigStorageType", Integer, ReadWrite, refuses(1, 5), never},
        },
};

// --- ipMcastInterfaceTable -------------------------------------------------------------------------------------------

TABLE(ipMcastInterfaceTable, IPMCASTINTERFACETABLE, 1, 3, 1);

struct McastInterfaceKey {
    std::uint32_t version;  // of IP, as an address type
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
static_assert(sizeof(McastInterfaceKey) == 8);

// The one time to live: any other is refused at once.
Error write_ipMcastInterfaceTtl(Set& set) {
    std::uint32_t ttl;
    McastInterfaceKey row;
    TRY(set.unsigned32(ttl));
    TRY(set.row(row));
    return ttl == 1 ? noError : genErr;
}

// No limit is the one that there is.
Error write_ipMcastInterfaceRateLimit(Set& set) {
    std::uint32_t limit;
    McastInterfaceKey row;
    TRY(set.unsigned32(limit));
    TRY(set.row(row));
    return set.acting() && limit != 0 ? genErr : noError;
}

Error write_ipMcastInterfaceStorageType(Set& set) {
    constexpr std::int32_t kOther = 1, kReadOnly = 5;
    std::int32_t type;
    McastInterfaceKey row;
    TRY(set.integer(type));
    TRY(set.row(row));
    TRY(set.range(type, kOther, kReadOnly));
    return set.acting() && type != kReadOnly ? genErr : noError;
}

constexpr Table<McastInterfaceKey> ipMcastInterfaceTable{
    .id = IPMCASTINTERFACETABLE,
    .command = [](McastInterfaceKey& row, const Read& read) -> Command {
        const bool starts = row.version == kNoAddress && !read.exact;
        if (row.version != kIpv4 && !starts) return no_answer;
        return in_vrf({"show debugging ip mroute interface %d", row.ifindex});
    },
    .columns =
        {
            {1, "ipMcastInterfaceIPVersion", Integer, ReadOnly},
            {2, "ipMcastInterfaceIfIndex", Integer, ReadOnly},
            {3, "ipMcastInterfaceTtl", Unsigned32, ReadWrite, WRITER(write_ipMcastInterfaceTtl)},
            {4, "ipMcastInterfaceRateLimit", Unsigned32, ReadWrite, WRITER(write_ipMcastInterfaceRateLimit)},
            {5, "ipMcastInterfaceStorageType", Integer, ReadWrite, WRITER(write_ipMcastInterfaceStorageType)},
        },
};

// --- ipMcastSsmRangeTable --------------------------------------------------------------------------------------------

TABLE(ipMcastSsmRangeTable, IPMCASTSSMRANGETABLE, 1, 4, 1);

struct RangeKey {
    InetPrefix range;
    static constexpr Kind index[] = {Kind::prefix};
};

constexpr Table<RangeKey> ipMcastSsmRangeTable{
    .id = IPMCASTSSMRANGETABLE,
    .answers = false,
    .columns =
        {
            {1, "ipMcastSsmRangeAddressType", Integer, ReadOnly},
            {2, "ipMcastSsmRangeAddress", OctetString, ReadOnly},
            {3, "ipMcastSsmRangePrefixLength", Unsigned32, ReadOnly},
            {4, "ipMcastSsmRangeRowStatus", Integer, ReadWrite},
            {5, "ipMcastSsmRangeStorageType", Integer, ReadWrite},
        },
};

// --- what routes and their next hops share ---------------------------------------------------------------------------

// IPv4 alone: of a GET both addresses, of a GETNEXT the group's, which may also be none yet.
template <class Key>
bool is_served(const Key& row, const Read& read) {
    const std::uint32_t type = row.group.address.type;
    return read.exact ? type == kIpv4 && row.source.address.type == kIpv4 : type == kNoAddress || type == kIpv4;
}

// Group and source as commands have them.
template <class Key>
Text<160> prefixes(const Key& row) {
    char group[64] = {}, source[64] = {};
    if (!to_text(row.group.address, group) || !to_text(row.source.address, source)) return no_answer;
    return {"%s/%d %s/%d", group, row.group.length, source, row.source.length};
}

// --- ipMcastRouteTable -----------------------------------------------------------------------------------------------

TABLE(ipMcastRouteTable, IPMCASTROUTETABLE, 1, 5, 1);

struct McastRouteKey {
    InetPrefix group;
    InetPrefix source;
    static constexpr Kind index[] = {Kind::prefix, Kind::prefix};
};
static_assert(sizeof(McastRouteKey) == 64);

constexpr Table<McastRouteKey> ipMcastRouteTable{
    .id = IPMCASTROUTETABLE,
    .command = [](McastRouteKey& row, const Read& read) -> Command {
        if (!is_served(row, read)) return no_answer;
        if (row.group.length == 0) return in_vrf("show debugging ip mroute uib");
        const auto route = prefixes(row);
        if (route.refused()) return no_answer;
        return in_vrf({"show debugging ip mroute uib %s", route.c_str()});
    },
    .columns =
        {
            {1, "ipMcastRouteGroupAddressType", Integer, ReadOnly},
            {2, "ipMcastRouteGroup", OctetString, ReadOnly},
            {3, "ipMcastRouteGroupPrefixLength", Unsigned32, ReadOnly},
            {4, "ipMcastRouteSourceAddressType", Integer, ReadOnly},
            {5, "ipMcastRouteSource", OctetString, ReadOnly},
            {6, "ipMcastRouteSourcePrefixLength", Unsigned32, ReadOnly},
            {7, "ipMcastRouteUpstreamNeighborType", Integer, ReadOnly, never},
            {8, "ipMcastRouteUpstreamNeighbor", OctetString, ReadOnly, never},
            {9, "ipMcastRouteInIfIndex", Integer, ReadOnly},
            {10, "ipMcastRouteTimeStamp", TimeTicks, ReadOnly},
            {11, "ipMcastRouteExpiryTime", TimeTicks, ReadOnly},
            {12, "ipMcastRouteProtocol", Integer, ReadOnly},
            {13, "ipMcastRouteRtProtocol", Integer, ReadOnly, never},
            {14, "ipMcastRouteRtAddressType", Integer, ReadOnly, never},
            {15, "ipMcastRouteRtAddress", OctetString, ReadOnly, never},
            {16, "ipMcastRouteRtPrefixLength", Unsigned32, ReadOnly, never},
            {17, "ipMcastRouteRtType", Integer, ReadOnly, never},
            {18, "ipMcastRouteOctets", Counter64, ReadOnly, never},
            {19, "ipMcastRoutePkts", Counter64, ReadOnly, never},
            {20, "ipMcastRouteTtlDropOctets", Counter64, ReadOnly, never},
            {21, "ipMcastRouteTtlDropPackets", Counter64, ReadOnly, never},
            {22, "ipMcastRouteDifferentInIfOctets", Counter64, ReadOnly, never},
            {23, "ipMcastRouteDifferentInIfPackets", Counter64, ReadOnly, never},
            {24, "ipMcastRouteBps", Counter64, ReadOnly, never},
        },
};

// --- ipMcastRouteNextHopTable ----------------------------------------------------------------------------------------

TABLE(ipMcastRouteNextHopTable, IPMCASTROUTENEXTHOPTABLE, 1, 6, 1);

struct NextHopKey {
    InetPrefix group;
    InetPrefix source;
    std::uint32_t ifindex;
    InetAddress address;
    static constexpr Kind index[] = {Kind::prefix, Kind::prefix, Kind::integer, Kind::address};

    // The routes' key is set by the prefix length alone.
    bool is_set() const {
        std::uint32_t first_word;
        std::memcpy(&first_word, group.address.octets, sizeof first_word);
        return group.length != 0 && group.address.type != kNoAddress && first_word != 0;
    }
};
static_assert(sizeof(NextHopKey) == 96);

constexpr Table<NextHopKey> ipMcastRouteNextHopTable{
    .id = IPMCASTROUTENEXTHOPTABLE,
    .command = [](NextHopKey& row, const Read& read) -> Command {
        if (!is_served(row, read)) return no_answer;
        if (!row.is_set()) return in_vrf("show debugging ip mroute uib nexthop");
        const auto route = prefixes(row);
        if (route.refused()) return no_answer;
        return in_vrf({"show debugging ip mroute uib nexthop %s %d", route.c_str(), row.ifindex});
    },
    .columns =
        {
            {1, "ipMcastRouteNextHopGroupAddressType", Integer, ReadOnly},
            {2, "ipMcastRouteNextHopGroup", OctetString, ReadOnly},
            {3, "ipMcastRouteNextHopGroupPrefixLength", Unsigned32, ReadOnly},
            {4, "ipMcastRouteNextHopSourceAddressType", Integer, ReadOnly},
            {5, "ipMcastRouteNextHopSource", OctetString, ReadOnly},
            {6, "ipMcastRouteNextHopSourcePrefixLength", Unsigned32, ReadOnly},
            {7, "ipMcastRouteNextHopIfIndex", Integer, ReadOnly},
            {8, "ipMcastRouteNextHopAddressType", Integer, ReadOnly},
            {9, "ipMcastRouteNextHopAddress", OctetString, ReadOnly},
            {10, "ipMcastRouteNextHopState", Integer, ReadOnly},
            {11, "ipMcastRouteNextHopTimeStamp", TimeTicks, ReadOnly, never},
            {12, "ipMcastRouteNextHopExpiryTime", TimeTicks, ReadOnly, never},
            {13, "ipMcastRouteNextHopClosestMemberHops", Unsigned32, ReadOnly, never},
            {14, "ipMcastRouteNextHopProtocol", Integer, ReadOnly, never},
            {15, "ipMcastRouteNextHopOctets", Counter64, ReadOnly, never},
            {16, "ipMcastRouteNextHopPkts", Counter64, ReadOnly, never},
        },
};

// --- ipMcastBoundaryTable --------------------------------------------------------------------------------------------

TABLE(ipMcastBoundaryTable, IPMCASTBOUNDARYTABLE, 1, 7, 1);

struct BoundaryKey {
    std::uint32_t ifindex;
    InetPrefix range;
    static constexpr Kind index[] = {Kind::integer, Kind::prefix};
};

constexpr Table<BoundaryKey> ipMcastBoundaryTable{
    .id = IPMCASTBOUNDARYTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipMcastBoundaryIfIndex", Integer, ReadOnly},
            {2, "ipMcastBoundaryAddressType", Integer, ReadOnly},
            {3, "ipMcastBoundaryAddress", OctetString, ReadOnly},
            {4, "ipMcastBoundaryAddressPrefixLength", Unsigned32, ReadOnly},
            {5, "ipMcastBoundaryTimeStamp", TimeTicks, ReadOnly},
            {6, "ipMcastBoundaryDroppedMcastOctets", Counter64, ReadOnly},
            {7, "ipMcastBoundaryDroppedMcastPkts", Counter64, ReadOnly},
            {8, "ipMcastBoundaryStatus", Integer, ReadWrite, refuses(active, destroy)},
            {9, "ipMcastBoundaryStorageType", Integer, ReadWrite, refuses(1, 5)},
        },
};

// --- ipMcastScopeNameTable -------------------------------------------------------------------------------------------

TABLE(ipMcastScopeNameTable, IPMCASTSCOPENAMETABLE, 1, 8, 1);

struct ScopeNameKey {
    InetPrefix range;
    Octets<2> language;  // "en"
    static constexpr Kind index[] = {Kind::prefix, Kind::counted_string(2)};
};

constexpr Table<ScopeNameKey> ipMcastScopeNameTable{
    .id = IPMCASTSCOPENAMETABLE,
    .answers = false,
    .columns =
        {
            {1, "ipMcastScopeNameAddressType", Integer, ReadOnly},
            {2, "ipMcastScopeNameAddress", OctetString, ReadOnly},
            {3, "ipMcastScopeNameAddressPrefixLength", Unsigned32, ReadOnly},
            {4, "ipMcastScopeNameLanguage", OctetString, ReadOnly},
            {5, "ipMcastScopeNameString", OctetString, ReadWrite, refuses()},
            {6, "ipMcastScopeNameDefault", Integer, ReadWrite, refuses(1, 2)},
            {7, "ipMcastScopeNameStatus", Integer, ReadWrite, refuses(active, destroy)},
            {8, "ipMcastScopeNameStorageType", Integer, ReadWrite, refuses(1, 5)},
        },
};

// --- ipMcastLocalListenerTable ---------------------------------------------------------------------------------------

TABLE(ipMcastLocalListenerTable, IPMCASTLOCALLISTENERTABLE, 1, 9, 1);

struct ListenerKey {
    InetAddress group;
    InetPrefix source;
    std::uint32_t ifindex;
    std::uint32_t run_index;
    static constexpr Kind index[] = {Kind::address, Kind::prefix, Kind::integer, Kind::integer};
};

constexpr Table<ListenerKey> ipMcastLocalListenerTable{
    .id = IPMCASTLOCALLISTENERTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipMcastLocalListenerGroupAddressType", Integer, ReadOnly},
            {2, "ipMcastLocalListenerGroupAddress", OctetString, ReadOnly},
            {3, "ipMcastLocalListenerSourceAddressType", Integer, ReadOnly},
            {4, "ipMcastLocalListenerSourceAddress", OctetString, ReadOnly},
            {5, "ipMcastLocalListenerSourcePrefixLength", Unsigned32, ReadOnly},
            {6, "ipMcastLocalListenerIfIndex", Integer, ReadOnly},
            {7, "ipMcastLocalListenerRunIndex", Unsigned32, ReadOnly},
        },
};

// --- ipMcastZoneTable ------------------------------------------------------------------------------------------------

TABLE(ipMcastZoneTable, IPMCASTZONETABLE, 1, 10, 1);

struct ZoneKey {
    std::uint32_t zone;
    static constexpr Kind index[] = {Kind::integer};
};

constexpr Table<ZoneKey> ipMcastZoneTable{
    .id = IPMCASTZONETABLE,
    .answers = false,
    .columns =
        {
            {1, "ipMcastZoneIndex", Unsigned32, ReadOnly},
            {2, "ipMcastZoneScopeDefaultZoneIndex", Unsigned32, ReadOnly},
            {3, "ipMcastZoneScopeAddressType", Integer, ReadOnly},
            {4, "ipMcastZoneScopeAddress", OctetString, ReadOnly},
            {5, "ipMcastZoneScopeAddressPrefixLength", Unsigned32, ReadOnly},
        },
};

MODULE_END(82, ipMcastMIBGlobals, ipMcastInterfaceTable, ipMcastSsmRangeTable, ipMcastRouteTable,
           ipMcastRouteNextHopTable, ipMcastBoundaryTable, ipMcastScopeNameTable, ipMcastLocalListenerTable,
           ipMcastZoneTable);

}  // namespace switchmib::MODULE
