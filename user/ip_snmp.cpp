// IP-MIB, the ip and icmp groups. The protocol counters are the kernel's, from its statistics files; the backend is not asked
// for them. Interfaces, addresses, neighbours and router advertisements are the backend's.
#define MODULE ip
#include "framework/address.h"
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"
#include "ip_statistics.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

namespace switchmib::MODULE {

MODULE_OID(kMib2, 4);
SWITCHMIB_MODULE_OID(icmp, kMib2, 5);

// --- what is served --------------------------------------------------------------------------------------------------

// The read methods' copies; values are answered in place. A read that fails leaves zeros, and they are served.
constinit IpStatistics ip_served{};
constinit IcmpStatistics icmp_served{};
constinit Ip6Statistics ip6_served{};
constinit Icmp6Statistics icmp6_served{};

// The place of a name in its record; the compiler refuses one that isn't there.
consteval std::size_t place(std::span<const std::string_view> names, std::string_view name) {
    std::size_t at = 0;
    while (names[at] != name) ++at;
    return at;
}

// Where a served counter is.
struct Place {
    enum Record { none, ip, ip6, icmp, icmp6 } record = none;
    std::size_t at = 0;
};
constexpr Counter* counter(Place place) {
    switch (place.record) {
        case Place::ip: return &ip_served.counters[place.at];
        case Place::ip6: return &ip6_served.counters[place.at];
        case Place::icmp: return &icmp_served.counters[place.at];
        case Place::icmp6: return &icmp6_served.counters[place.at];
        default: return nullptr;
    }
}

enum Direction : std::size_t { in = 0, out = 1 };
consteval Place ipv4(std::string_view name) { return {Place::ip, place(kIpNames, name)}; }
consteval Place ipv6(std::string_view name) { return {Place::ip6, kIp6Sysctls + place(kIp6Names, name)}; }
consteval Place icmpv4(Direction direction, std::string_view name) {
    return {Place::icmp, direction * std::size(kIcmpNames) + place(kIcmpNames, name)};
}
consteval Place icmpv6(Direction direction, std::string_view name) {
    return {Place::icmp6, direction * std::size(kIcmp6Names) + place(kIcmp6Names, name)};
}

// A null counter has no value.
unsigned char* answer(Counter* counter, const Read& read) {
    if (counter != nullptr) *read.value_length = sizeof *counter;
    return reinterpret_cast<unsigned char*>(counter);
}

struct VersionKey {
    std::uint32_t version;
    static constexpr Kind index[] = {Kind::integer};
};
constexpr std::uint32_t kStart = 0;

// A column's counters: a row for each IP version, or for IPv6 alone.
struct Counters {
    Counter* ipv4;
    Counter* ipv6;
};
template <Place ipv4, Place ipv6>
constexpr Counters counters_of{counter(ipv4), counter(ipv6)};
template <Place ipv4, Place ipv6>
constexpr Source counters{.detail = &counters_of<ipv4, ipv6>};
constexpr Place kNoRow{};

// `detail` is the column's Counters; null: it has no value.
unsigned char* fetch(const void* detail, VersionKey& key, const Read& read) {
    if (detail == nullptr) return nullptr;
    const auto& column = *static_cast<const Counters*>(detail);
    if (!read.exact) {
        // Without an IPv4 row the walk begins at IPv6; it doesn't come there from an IPv4 row that isn't.
        if (key.version == kStart)
            key.version = column.ipv4 != nullptr ? kIpv4 : kIpv6;
        else if (key.version == kIpv4 && column.ipv4 != nullptr)
            key.version = kIpv6;
        else
            return nullptr;
    }
    return answer(key.version == kIpv4 ? column.ipv4 : key.version == kIpv6 ? column.ipv6 : nullptr, read);
}

// --- ip: scalars -----------------------------------------------------------------------------------------------------

constexpr std::size_t kForwarding = 0, kHopLimit = 1;
constexpr std::size_t kDefaultTtl = 1, kReasmTimeout = 12;
constexpr std::size_t kNone = SIZE_MAX;

// A scalar by its place in a record. Every read refreshes the record's copy, one that has no value too; nothing else
// does for IPv4.
template <auto refresh, auto& served, std::size_t at>
constexpr Source scalar_of = computes([](const Read& read) {
    refresh(&served, read.exact);
    return answer(at != kNone ? served.counters + at : nullptr, read);
});
template <std::size_t at>
constexpr Source ipv4_value = scalar_of<ip_snmp_linux_read_ip_stat, ip_served, at>;
template <std::size_t at>
constexpr Source ipv6_value = scalar_of<ip_snmp_linux_read_ip6_stat, ip6_served, at>;

constexpr Scalars ipGlobals{
    .name = "ipGlobals",
    .scalars =
        {
            {{1}, "ipForwarding", Integer, ReadWrite, cleared, ipv4_value<kForwarding>},
            {{2}, "ipDefaultTTL", Integer, ReadWrite, cleared, ipv4_value<kDefaultTtl>},
            {{3}, "ipInReceives", Counter32, ReadOnly, ipv4_value<kNone>},
            {{4}, "ipInHdrErrors", Counter32, ReadOnly, ipv4_value<kNone>},
            {{5}, "ipInAddrErrors", Counter32, ReadOnly, ipv4_value<kNone>},
            {{6}, "ipForwDatagrams", Counter32, ReadOnly, ipv4_value<kNone>},
            {{7}, "ipInUnknownProtos", Counter32, ReadOnly, ipv4_value<kNone>},
            {{8}, "ipInDiscards", Counter32, ReadOnly, ipv4_value<kNone>},
            {{9}, "ipInDelivers", Counter32, ReadOnly, ipv4_value<kNone>},
            {{10}, "ipOutRequests", Counter32, ReadOnly, ipv4_value<kNone>},
            {{11}, "ipOutDiscards", Counter32, ReadOnly, ipv4_value<kNone>},
            {{12}, "ipOutNoRoutes", Counter32, ReadOnly, ipv4_value<kNone>},
            {{13}, "ipReasmTimeout", Integer, ReadOnly, ipv4_value<kReasmTimeout>},
            {{14}, "ipReasmReqds", Counter32, ReadOnly, ipv4_value<kNone>},
            {{15}, "ipReasmOKs", Counter32, ReadOnly, ipv4_value<kNone>},
            {{16}, "ipReasmFails", Counter32, ReadOnly, ipv4_value<kNone>},
            {{17}, "ipFragOKs", Counter32, ReadOnly, ipv4_value<kNone>},
            {{18}, "ipFragFails", Counter32, ReadOnly, ipv4_value<kNone>},
            {{19}, "ipFragCreates", Counter32, ReadOnly, ipv4_value<kNone>},
            {{23}, "ipRoutingDiscards", Counter32, ReadOnly, ipv4_value<kNone>},
            {{25}, "ipv6IpForwarding", Integer, ReadWrite, cleared, ipv6_value<kForwarding>},
            {{26}, "ipv6IpDefaultHopLimit", Integer, ReadWrite, cleared, ipv6_value<kHopLimit>},
            {{27}, "ipv4InterfaceTableLastChange", TimeTicks, ReadOnly, ipv4_value<kNone>},
            {{29}, "ipv6InterfaceTableLastChange", TimeTicks, ReadOnly, ipv6_value<kNone>},
            {{31, 2}, "ipIfStatsTableLastChange", TimeTicks, ReadOnly, ipv4_value<kNone>},
            {{33}, "ipAddressSpinLock", Integer, ReadWrite, ipv4_value<kNone>},
            {{38}, "ipv6RouterAdvertSpinLock", Integer, ReadWrite, ipv6_value<kNone>},
        },
};

// --- ip: ipAddrTable and ipNetToMediaTable, which never answer -------------------------------------------------------

TABLE(ipAddrTable, IPADDRTABLE, 20, 1);

struct AddrKey {
    Octets<4> address;
    static constexpr Kind index[] = {Kind::fixed_string(4)};
};

constexpr Table<AddrKey> ipAddrTable{
    .id = IPADDRTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipAdEntAddr", IpAddress, ReadOnly},
            {2, "ipAdEntIfIndex", Integer, ReadOnly},
            {3, "ipAdEntNetMask", IpAddress, ReadOnly},
            {4, "ipAdEntBcastAddr", Integer, ReadOnly},
            {5, "ipAdEntReasmMaxSize", Integer, ReadOnly},
        },
};

TABLE(ipNetToMediaTable, IPNETTOMEDIATABLE, 22, 1);

struct MediaKey {
    std::uint32_t ifindex;
    Octets<4> address;
    static constexpr Kind index[] = {Kind::integer, Kind::fixed_string(4)};
};

constexpr Table<MediaKey> ipNetToMediaTable{
    .id = IPNETTOMEDIATABLE,
    .answers = false,
    .columns =
        {
            {1, "ipNetToMediaIfIndex", Integer, ReadWrite},
            {2, "ipNetToMediaPhysAddress", OctetString, ReadWrite},
            {3, "ipNetToMediaNetAddress", IpAddress, ReadWrite},
            {4, "ipNetToMediaType", Integer, ReadWrite},
        },
};

// --- ip: ipv4InterfaceTable and ipv6InterfaceTable -------------------------------------------------------------------

// Rows of an interface end with the last port's: those after it have no value and no write method.
template <class Key>
bool is_interface_row(Key& row, const Read&) {
    return row.ifindex <= kLastPortIfIndex;
}

// Enters a VLAN interface; the lines here have no name for another one, which is genErr.
Error enter_vlan_interface(const Set& set, std::uint32_t ifindex) {
    if (!is_vlan_interface(ifindex)) return genErr;
    return set.global({"interface vlan%d", ifindex - kVlanIfIndexBase});
}

Error vlan_interface_line(const Set& set, std::uint32_t ifindex, const char* line) {
    TRY(enter_vlan_interface(set, ifindex));
    return set.sub(line);
}

TABLE(ipv4InterfaceTable, IPV4INTERFACETABLE, 28, 1);

constexpr Table<InterfaceKey> ipv4InterfaceTable{
    .id = IPV4INTERFACETABLE,
    .accepts = is_interface_row<InterfaceKey>,
    .command =
        [](const InterfaceKey& row) {
            const VrfPart vrf;
            return Command("show ipinterface ifindex %d%s%s", row.ifindex, vrf.word, vrf.name);
        },
    .columns =
        {
            {1, "ipv4InterfaceIfIndex", Integer, ReadOnly},
            {2, "ipv4InterfaceReasmMaxSize", Integer, ReadOnly},
            {3, "ipv4InterfaceEnableStatus", Integer, ReadWrite},
            {4, "ipv4InterfaceRetransmitTime", Unsigned32, ReadOnly},
        },
};

TABLE(ipv6InterfaceTable, IPV6INTERFACETABLE, 30, 1);

Error write_ipv6InterfaceEnableStatus(Set& set) {
    std::int32_t status;
    InterfaceKey row;
    const char* line;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.choose({{1, "ipv6 enable"}, {2, "no ipv6 enable"}}, status, line));
    return set.acting() ? vlan_interface_line(set, row.ifindex, line) : noError;
}

constexpr Table<InterfaceKey> ipv6InterfaceTable{
    .id = IPV6INTERFACETABLE,
    .accepts = is_interface_row<InterfaceKey>,
    .command = "show ipv6interface ifindex %d",
    .columns =
        {
            {1, "ipv6InterfaceIfIndex", Integer, ReadOnly},
            {2, "ipv6InterfaceReasmMaxSize", Unsigned32, ReadOnly},
            {3, "ipv6InterfaceIdentifier", OctetString, ReadOnly},
            {5, "ipv6InterfaceEnableStatus", Integer, ReadWrite, WRITER(write_ipv6InterfaceEnableStatus)},
            {6, "ipv6InterfaceReachableTime", Unsigned32, ReadOnly},
            {7, "ipv6InterfaceRetransmitTime", Unsigned32, ReadOnly},
            {8, "ipv6InterfaceForwarding", Integer, ReadWrite, cleared},
        },
};

// --- ip: ipSystemStatsTable ------------------------------------------------------------------------------------------

TABLE(ipSystemStatsTable, IPSYSTEMSTATSTABLE, 31, 1, 1);

constexpr Table<VersionKey> ipSystemStatsTable{
    .id = IPSYSTEMSTATSTABLE,
    // IPv4's copy stays as the scalars left it, on purpose.
    .fetch = [](VersionKey& key, const Read& read, const void* detail) -> unsigned char* {
        ip_snmp_linux_read_ip6_stat(&ip6_served, read.exact);
        return fetch(detail, key, read);
    },
    .columns =
        {
            {1, "ipSystemStatsIPVersion", Integer, ReadOnly},
            {3, "ipSystemStatsInReceives", Counter32, ReadOnly, counters<ipv4("InReceives"), ipv6("InReceives")>},
            {4, "ipSystemStatsHCInReceives", Counter64, ReadOnly},
            {5, "ipSystemStatsInOctets", Counter32, ReadOnly},
            {6, "ipSystemStatsHCInOctets", Counter64, ReadOnly},
            {7, "ipSystemStatsInHdrErrors", Counter32, ReadOnly, counters<ipv4("InHdrErrors"), ipv6("InHdrErrors")>},
            {8, "ipSystemStatsInNoRoutes", Counter32, ReadOnly, counters<kNoRow, ipv6("InNoRoutes")>},
            {9, "ipSystemStatsInAddrErrors", Counter32, ReadOnly, counters<kNoRow, ipv6("InAddrErrors")>},
            {10, "ipSystemStatsInUnknownProtos", Counter32, ReadOnly,
             counters<ipv4("InUnknownProtos"), ipv6("InUnknownProtos")>},
            {11, "ipSystemStatsInTruncatedPkts", Counter32, ReadOnly, counters<kNoRow, ipv6("InTruncatedPkts")>},
            {12, "ipSystemStatsInForwDatagrams", Counter32, ReadOnly},
            {13, "ipSystemStatsHCInForwDatagrams", Counter64, ReadOnly},
            {14, "ipSystemStatsReasmReqds", Counter32, ReadOnly, counters<ipv4("ReasmReqds"), ipv6("ReasmReqds")>},
            {15, "ipSystemStatsReasmOKs", Counter32, ReadOnly, counters<ipv4("ReasmOKs"), ipv6("ReasmOKs")>},
            {16, "ipSystemStatsReasmFails", Counter32, ReadOnly, counters<ipv4("ReasmFails"), ipv6("ReasmFails")>},
            {17, "ipSystemStatsInDiscards", Counter32, ReadOnly, counters<ipv4("InDiscards"), ipv6("InDiscards")>},
            {18, "ipSystemStatsInDelivers", Counter32, ReadOnly, counters<ipv4("InDelivers"), ipv6("InDelivers")>},
            {19, "ipSystemStatsHCInDelivers", Counter64, ReadOnly},
            {20, "ipSystemStatsOutRequests", Counter32, ReadOnly, counters<ipv4("OutRequests"), ipv6("OutRequests")>},
            {21, "ipSystemStatsHCOutRequests", Counter64, ReadOnly},
            {22, "ipSystemStatsOutNoRoutes", Counter32, ReadOnly, counters<kNoRow, ipv6("OutNoRoutes")>},
            {23, "ipSystemStatsOutForwDatagrams", Counter32, ReadOnly, counters<kNoRow, ipv6("OutForwDatagrams")>},
            {24, "ipSystemStatsHCOutForwDatagrams", Counter64, ReadOnly},
            {25, "ipSystemStatsOutDiscards", Counter32, ReadOnly, counters<ipv4("OutDiscards"), ipv6("OutDiscards")>},
            {26, "ipSystemStatsOutFragReqds", Counter32, ReadOnly},
            {27, "ipSystemStatsOutFragOKs", Counter32, ReadOnly, counters<ipv4("FragOKs"), ipv6("FragOKs")>},
            {28, "ipSystemStatsOutFragFails", Counter32, ReadOnly, counters<ipv4("FragFails"), ipv6("FragFails")>},
            {29, "ipSystemStatsOutFragCreates", Counter32, ReadOnly,
             counters<ipv4("FragCreates"), ipv6("FragCreates")>},
            {30, "ipSystemStatsOutTransmits", Counter32, ReadOnly},
            {31, "ipSystemStatsHCOutTransmits", Counter64, ReadOnly},
            {32, "ipSystemStatsOutOctets", Counter32, ReadOnly},
            {33, "ipSystemStatsHCOutOctets", Counter64, ReadOnly},
            {34, "ipSystemStatsInMcastPkts", Counter32, ReadOnly, counters<kNoRow, ipv6("InMcastPkts")>},
            {35, "ipSystemStatsHCInMcastPkts", Counter64, ReadOnly},
            {36, "ipSystemStatsInMcastOctets", Counter32, ReadOnly},
            {37, "ipSystemStatsHCInMcastOctets", Counter64, ReadOnly},
            {38, "ipSystemStatsOutMcastPkts", Counter32, ReadOnly, counters<kNoRow, ipv6("OutMcastPkts")>},
            {39, "ipSystemStatsHCOutMcastPkts", Counter64, ReadOnly},
            {40, "ipSystemStatsOutMcastOctets", Counter32, ReadOnly},
            {41, "ipSystemStatsHCOutMcastOctets", Counter64, ReadOnly},
            {42, "ipSystemStatsInBcastPkts", Counter32, ReadOnly},
            {43, "ipSystemStatsHCInBcastPkts", Counter64, ReadOnly},
            {44, "ipSystemStatsOutBcastPkts", Counter32, ReadOnly},
            {45, "ipSystemStatsHCOutBcastPkts", Counter64, ReadOnly},
            {46, "ipSystemStatsDiscontinuityTime", TimeTicks, ReadOnly},
            {47, "ipSystemStatsRefreshRate", Unsigned32, ReadOnly},
        },
};

// --- ip: ipIfStatsTable, which never answers -------------------------------------------------------------------------

TABLE(ipIfStatsTable, IPIFSTATSTABLE, 31, 3, 1);

struct VersionInterfaceKey {
    std::uint32_t version;
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

constexpr Table<VersionInterfaceKey> ipIfStatsTable{
    .id = IPIFSTATSTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipIfStatsIPVersion", Integer, ReadOnly},
            {2, "ipIfStatsIfIndex", Integer, ReadOnly},
            {3, "ipIfStatsInReceives", Counter32, ReadOnly},
            {4, "ipIfStatsHCInReceives", Counter64, ReadOnly},
            {5, "ipIfStatsInOctets", Counter32, ReadOnly},
            {6, "ipIfStatsHCInOctets", Counter64, ReadOnly},
            {7, "ipIfStatsInHdrErrors", Counter32, ReadOnly},
            {8, "ipIfStatsInNoRoutes", Counter32, ReadOnly},
            {9, "ipIfStatsInAddrErrors", Counter32, ReadOnly},
            {10, "ipIfStatsInUnknownProtos", Counter32, ReadOnly},
            {11, "ipIfStatsInTruncatedPkts", Counter32, ReadOnly},
            {12, "ipIfStatsInForwDatagrams", Counter32, ReadOnly},
            {13, "ipIfStatsHCInForwDatagrams", Counter64, ReadOnly},
            {14, "ipIfStatsReasmReqds", Counter32, ReadOnly},
            {15, "ipIfStatsReasmOKs", Counter32, ReadOnly},
            {16, "ipIfStatsReasmFails", Counter32, ReadOnly},
            {17, "ipIfStatsInDiscards", Counter32, ReadOnly},
            {18, "ipIfStatsInDelivers", Counter32, ReadOnly},
            {19, "ipIfStatsHCInDelivers", Counter64, ReadOnly},
            {20, "ipIfStatsOutRequests", Counter32, ReadOnly},
            {21, "ipIfStatsHCOutRequests", Counter64, ReadOnly},
            {23, "ipIfStatsOutForwDatagrams", Counter32, ReadOnly},
            {24, "ipIfStatsHCOutForwDatagrams", Counter64, ReadOnly},
            {25, "ipIfStatsOutDiscards", Counter32, ReadOnly},
            {26, "ipIfStatsOutFragReqds", Counter32, ReadOnly},
            {27, "ipIfStatsOutFragOKs", Counter32, ReadOnly},
            {28, "ipIfStatsOutFragFails", Counter32, ReadOnly},
            {29, "ipIfStatsOutFragCreates", Counter32, ReadOnly},
            {30, "ipIfStatsOutTransmits", Counter32, ReadOnly},
            {31, "ipIfStatsHCOutTransmits", Counter64, ReadOnly},
            {32, "ipIfStatsOutOctets", Counter32, ReadOnly},
            {33, "ipIfStatsHCOutOctets", Counter64, ReadOnly},
            {34, "ipIfStatsInMcastPkts", Counter32, ReadOnly},
            {35, "ipIfStatsHCInMcastPkts", Counter64, ReadOnly},
            {36, "ipIfStatsInMcastOctets", Counter32, ReadOnly},
            {37, "ipIfStatsHCInMcastOctets", Counter64, ReadOnly},
            {38, "ipIfStatsOutMcastPkts", Counter32, ReadOnly},
            {39, "ipIfStatsHCOutMcastPkts", Counter64, ReadOnly},
            {40, "ipIfStatsOutMcastOctets", Counter32, ReadOnly},
            {41, "ipIfStatsHCOutMcastOctets", Counter64, ReadOnly},
            {42, "ipIfStatsInBcastPkts", Counter32, ReadOnly},
            {43, "ipIfStatsHCInBcastPkts", Counter64, ReadOnly},
            {44, "ipIfStatsOutBcastPkts", Counter32, ReadOnly},
            {45, "ipIfStatsHCOutBcastPkts", Counter64, ReadOnly},
            {46, "ipIfStatsDiscontinuityTime", TimeTicks, ReadOnly},
            {47, "ipIfStatsRefreshRate", Unsigned32, ReadOnly},
        },
};

// --- ip: ipAddressPrefixTable ----------------------------------------------------------------------------------------

TABLE(ipAddressPrefixTable, IPADDRESSPREFIXTABLE, 32, 1);

struct PrefixKey {
    std::uint32_t ifindex;
    InetPrefix prefix;
    static constexpr Kind index[] = {Kind::integer, Kind::prefix};
};

constexpr Table<PrefixKey> ipAddressPrefixTable{
    .id = IPADDRESSPREFIXTABLE,
    .accepts = is_interface_row<PrefixKey>,
    .command = [](const PrefixKey& row) -> Command {
        const InetAddress& address = row.prefix.address;
        AddressText text;
        Text<64> prefix;
        if (is_ip(address.type)) {
            if (!to_text(address, text)) return no_answer;
            prefix = {" %s/%d", text.text, row.prefix.length};
        }
        const VrfPart vrf;
        return {"show ipaddress prefix %d %d %s%s%s", row.ifindex, address.type, prefix.c_str(), vrf.word, vrf.name};
    },
    .columns =
        {
            {1, "ipAddressPrefixIfIndex", Integer, ReadOnly},
            {2, "ipAddressPrefixType", Integer, ReadOnly},
            {3, "ipAddressPrefixPrefix", OctetString, ReadOnly},
            {4, "ipAddressPrefixLength", Unsigned32, ReadOnly},
            {5, "ipAddressPrefixOrigin", Integer, ReadOnly},
            {6, "ipAddressPrefixOnLinkFlag", Integer, ReadOnly},
            {7, "ipAddressPrefixAutonomousFlag", Integer, ReadOnly},
            {8, "ipAddressPrefixAdvPreferredLifetime", Unsigned32, ReadOnly},
            {9, "ipAddressPrefixAdvValidLifetime", Unsigned32, ReadOnly},
        },
};

// --- ip: ipAddressTable ----------------------------------------------------------------------------------------------

TABLE(ipAddressTable, IPADDRESSTABLE, 34, 1);

struct AddressKey {
    InetAddress address;
    static constexpr Kind index[] = {Kind::address};
};

// An address as the backend gets it in place of its part of the key, and fills it with the next row's.
struct AddressRecord {
    std::uint32_t type;
    unsigned char ipv4[4];
    unsigned char ipv6[16];
};
static_assert(sizeof(AddressRecord) == 24);

void fill_record(const InetAddress& address, AddressRecord& record) {
    record.type = address.type;
    if (address.type == kIpv4) std::memcpy(record.ipv4, address.octets, sizeof record.ipv4);
    if (address.type == kIpv6) std::memcpy(record.ipv6, address.octets, sizeof record.ipv6);
}

InetAddress take_record(const AddressRecord& record) { return take_address(record.type, record.ipv4, record.ipv6); }

template <class Row>
bool is_same(const Row& a, const Row& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The interface, type and status that were written last, each with the row that it was written for. A row status takes
// them; none is cleared after it.
SWITCHMIB_EXPORT std::uint32_t ipAddressTable_ifindex, ipAddressTable_type, ipAddressTable_status;
SWITCHMIB_EXPORT InetAddress key_ifindex, key_type, key_status;
constinit std::uint32_t ipAddressTable_ifindex = 0, ipAddressTable_type = 0, ipAddressTable_status = 0;
constinit InetAddress key_ifindex{}, key_type{}, key_status{};

Error write_ipAddressIfIndex(Set& set) {
    std::int32_t ifindex;
    AddressKey row;
    TRY(set.integer(ifindex));
    TRY(set.row(row));
    if (!set.acting()) return noError;
    ipAddressTable_ifindex = static_cast<std::uint32_t>(ifindex);
    key_ifindex = row.address;
    return noError;
}

// The only type and status of an IPv4 address, and of a row that is created.
constexpr std::uint32_t kUnicast = 1, kPreferred = 1;

// Keeps a type or status, from 1 to `last`.
Error keep(const Set& set, std::int32_t last, std::uint32_t only, std::uint32_t& kept, InetAddress& key) {
    std::int32_t number;
    AddressKey row;
    TRY(set.integer(number));
    TRY(set.row(row));
    TRY(set.range(number, 1, last));
    if (!set.acting()) return noError;
    const auto given = static_cast<std::uint32_t>(number);
    if (row.address.type == kIpv4 && given != only) return genErr;
    kept = given;
    key = row.address;
    return noError;
}

Error write_ipAddressType(Set& set) { return keep(set, 3, kUnicast, ipAddressTable_type, key_type); }

Error write_ipAddressStatus(Set& set) { return keep(set, 8, kPreferred, ipAddressTable_status, key_status); }

// The row statuses of the tables here, which know no other states.
Error creates_or_destroys(std::int32_t status) {
    return status == createAndGo || status == destroy ? noError : wrongValue;
}

Error write_ipAddressRowStatus(Set& set) {
    std::int32_t status;
    AddressKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(creates_or_destroys(status));
    if (!set.acting()) return noError;
    const InetAddress& address = row.address;
    const std::uint32_t ifindex = ipAddressTable_ifindex;
    if (!is_same(key_ifindex, address) || ifindex == 0) return genErr;
    if (is_ip(address.type)) {
        if (is_same(key_type, address) && ipAddressTable_type != kUnicast) return genErr;
        if (is_same(key_status, address) && ipAddressTable_status != kPreferred) return genErr;
    }
    const char* no = status == destroy ? "no " : "";
    AddressText text;
    const char* word = address_word(address, text);
    if (address.type != kIpv6) return set.global({"%sipaddresstable ip %d %s", no, ifindex, word});
    const Command line("%sipv6 address %s", no, word);
    const bool on_vlan = is_vlan_interface(ifindex);
    if (!on_vlan && status == createAndGo) return genErr;
    // Where the interface is refused, the address goes out nevertheless, on purpose: in global mode.
    if (on_vlan && enter_vlan_interface(set, ifindex) == noError) return set.sub(line);
    return set.global(line);
}

constexpr Table<AddressKey, AddressRecord> ipAddressTable{
    .id = IPADDRESSTABLE,
    .command =
        [](const AddressKey& row) {
            AddressText text;
            const VrfPart vrf;
            return Command("show ipaddress %d %s%s%s", row.address.type, address_word(row.address, text), vrf.word,
                           vrf.name);
        },
    .fill = [](const AddressKey& row, AddressRecord& record) { fill_record(row.address, record); },
    .take = [](const AddressRecord& record, AddressKey& row) { row.address = take_record(record); },
    .columns =
        {
            {1, "ipAddressAddrType", Integer, ReadOnly},
            {2, "ipAddressAddr", OctetString, ReadOnly},
            {3, "ipAddressIfIndex", Integer, ReadWrite, WRITER(write_ipAddressIfIndex)},
            {4, "ipAddressType", Integer, ReadWrite, WRITER(write_ipAddressType)},
            {5, "ipAddressPrefix", ObjectIdentifier, ReadOnly},
            {6, "ipAddressOrigin", Integer, ReadOnly},
            {7, "ipAddressStatus", Integer, ReadWrite, WRITER(write_ipAddressStatus)},
            {8, "ipAddressCreated", TimeTicks, ReadOnly, never},
            {9, "ipAddressLastChanged", TimeTicks, ReadOnly, never},
            {10, "ipAddressRowStatus", Integer, ReadWrite, WRITER(write_ipAddressRowStatus)},
            {11, "ipAddressStorageType", Integer, ReadWrite, never},
        },
};

// --- ip: ipNetToPhysicalTable ----------------------------------------------------------------------------------------

TABLE(ipNetToPhysicalTable, IPNETTOPHYSICALTABLE, 35, 1);

struct NeighbourKey {
    std::uint32_t ifindex;
    InetAddress address;
    static constexpr Kind index[] = {Kind::integer, Kind::address};
};

struct NeighbourRecord {
    std::uint32_t ifindex;
    AddressRecord address;
};
static_assert(sizeof(NeighbourRecord) == 28);

constexpr std::uint32_t kDynamic = 3, kStatic = 4;

// The MAC address and the type that were written last, each with the row that it was written for. Nothing clears them.
constinit Mac pending_mac{};
constinit NeighbourKey pending_mac_row{};
constinit std::uint32_t pending_type = kStatic;
constinit NeighbourKey pending_type_row{};

// The MAC address has a blank of its own before it, on purpose: there are two.
Command arp_line(const AddressText& address) { return {"ip arp %s  %s", address.text, lower(pending_mac).c_str()}; }

Error write_ipNetToPhysicalPhysAddress(Set& set) {
    NeighbourKey row;
    TRY(set.type(OctetString));
    TRY(set.length(sizeof pending_mac));
    TRY(set.row(row));
    if (!set.acting()) return noError;
    pending_mac_row = row;
    set.copy(&pending_mac, sizeof pending_mac);
    if (is_same(pending_type_row, row) && pending_type != kStatic) return genErr;
    AddressText address;
    if (!to_text(row.address, address)) return genErr;
    return vlan_interface_line(set, row.ifindex, arp_line(address));  // for IPv6 as well, on purpose
}

Error write_ipNetToPhysicalType(Set& set) {
    std::int32_t type;
    NeighbourKey row;
    TRY(set.integer(type));
    TRY(set.row(row));
    TRY(set.range(type, kDynamic, kStatic));
    if (!set.acting()) return noError;
    pending_type = static_cast<std::uint32_t>(type);
    pending_type_row = row;
    return noError;
}

// A neighbour's line in its VLAN interface. An interface that is refused keeps the line back and is not an error, on purpose.
Error static_neighbour_line(const Set& set, const NeighbourKey& row, const Command& line) {
    if (!is_vlan_interface(row.ifindex)) return genErr;
    return enter_vlan_interface(set, row.ifindex) == noError ? set.sub(line) : noError;
}

Error create_neighbour(const Set& set, const NeighbourKey& row, const AddressText& address) {
    if (row.address.type == kIpv4) return static_neighbour_line(set, row, arp_line(address));
    // A static IPv6 neighbour is not made here, on purpose.
    return row.address.type == kIpv6 ? noError : genErr;
}

// The type that was written last counts, whichever row it was for.
Error destroy_neighbour(const Set& set, const NeighbourKey& row, const AddressText& address) {
    const bool is_static = pending_type == kStatic;
    if (row.address.type == kIpv4) {
        if (!is_static) return set.executive({"clear ip arp %s", address.text});
        return static_neighbour_line(set, row, {"no ip arp %s", address.text});
    }
    if (row.address.type != kIpv6 || !is_static || !is_vlan_interface(row.ifindex)) return genErr;
    return set.global({"no ipv6 neighbor %s vlan%d", address.text, row.ifindex - kVlanIfIndexBase});
}

Error write_ipNetToPhysicalRowStatus(Set& set) {
    std::int32_t status;
    NeighbourKey row;
    AddressText address;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(creates_or_destroys(status));
    if (!set.acting()) return noError;
    if (status == createAndGo) {
        if (!is_same(pending_mac_row, row)) return genErr;
        // The interface of an IPv6 neighbour is the one that was written last for an address, on purpose.
        if (row.address.type == kIpv6 && !is_vlan_interface(ipAddressTable_ifindex)) return genErr;
    }
    if (!to_text(row.address, address)) return genErr;
    return status == createAndGo ? create_neighbour(set, row, address) : destroy_neighbour(set, row, address);
}

constexpr Table<NeighbourKey, NeighbourRecord> ipNetToPhysicalTable{
    .id = IPNETTOPHYSICALTABLE,
    .accepts = is_interface_row<NeighbourKey>,
    .command =
        [](const NeighbourKey& row) {
            AddressText text;
            const VrfPart vrf;
            return Command("show ipnettophysical ifindex %d %d %s%s%s", row.ifindex, row.address.type,
                           address_word(row.address, text), vrf.word, vrf.name);
        },
    .fill =
        [](const NeighbourKey& row, NeighbourRecord& record) {
            record.ifindex = row.ifindex;
            fill_record(row.address, record.address);
        },
    .take =
        [](const NeighbourRecord& record, NeighbourKey& row) {
            row = {record.ifindex, take_record(record.address)};
        },
    .columns =
        {
            {1, "ipNetToPhysicalIfIndex", Integer, ReadOnly},
            {2, "ipNetToPhysicalNetAddressType", Integer, ReadOnly},
            {3, "ipNetToPhysicalNetAddress", OctetString, ReadOnly},
            {4, "ipNetToPhysicalPhysAddress", OctetString, ReadWrite, WRITER(write_ipNetToPhysicalPhysAddress)},
            {5, "ipNetToPhysicalLastUpdated", TimeTicks, ReadOnly, never},
            {6, "ipNetToPhysicalType", Integer, ReadWrite, WRITER(write_ipNetToPhysicalType)},
            {7, "ipNetToPhysicalState", Integer, ReadOnly},
            {8, "ipNetToPhysicalRowStatus", Integer, ReadWrite, WRITER(write_ipNetToPhysicalRowStatus)},
        },
};

// --- ip: ipv6ScopeZoneIndexTable and ipDefaultRouterTable, which never answer ----------------------------------------

TABLE(ipv6ScopeZoneIndexTable, IPV6SCOPEZONEINDEXTABLE, 36, 1);

constexpr Table<InterfaceKey> ipv6ScopeZoneIndexTable{
    .id = IPV6SCOPEZONEINDEXTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipv6ScopeZoneIndexIfIndex", Integer, ReadOnly},
            {2, "ipv6ScopeZoneIndexLinkLocal", Unsigned32, ReadOnly},
            {3, "ipv6ScopeZoneIndex3", Unsigned32, ReadOnly},
            {4, "ipv6ScopeZoneIndexAdminLocal", Unsigned32, ReadOnly},
            {5, "ipv6ScopeZoneIndexSiteLocal", Unsigned32, ReadOnly},
            {6, "ipv6ScopeZoneIndex6", Unsigned32, ReadOnly},
            {7, "ipv6ScopeZoneIndex7", Unsigned32, ReadOnly},
            {8, "ipv6ScopeZoneIndexOrganizationLocal", Unsigned32, ReadOnly},
            {9, "ipv6ScopeZoneIndex9", Unsigned32, ReadOnly},
            {10, "ipv6ScopeZoneIndexA", Unsigned32, ReadOnly},
            {11, "ipv6ScopeZoneIndexB", Unsigned32, ReadOnly},
            {12, "ipv6ScopeZoneIndexC", Unsigned32, ReadOnly},
            {13, "ipv6ScopeZoneIndexD", Unsigned32, ReadOnly},
        },
};

TABLE(ipDefaultRouterTable, IPDEFAULTROUTERTABLE, 37, 1);

struct DefaultRouterKey {
    InetAddress address;
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::address, Kind::integer};
};

constexpr Table<DefaultRouterKey> ipDefaultRouterTable{
    .id = IPDEFAULTROUTERTABLE,
    .answers = false,
    .columns =
        {
            {1, "ipDefaultRouterAddressType", Integer, ReadOnly},
            {2, "ipDefaultRouterAddress", OctetString, ReadOnly},
            {3, "ipDefaultRouterIfIndex", Integer, ReadOnly},
            {4, "ipDefaultRouterLifetime", Unsigned32, ReadOnly},
            {5, "ipDefaultRouterPreference", Integer, ReadOnly},
        },
};

// --- ip: ipv6RouterAdvertTable ---------------------------------------------------------------------------------------

TABLE(ipv6RouterAdvertTable, IPV6ROUTERADVERTTABLE, 39, 1);

enum Parameter {
    sendAdverts,
    maxInterval,
    minInterval,
    managedFlag,
    otherConfigFlag,
    reachableTime,
    retransmitTime,
    curHopLimit,
    defaultLifetime,
    kParameters
};

// The line that sets a parameter: a flag's for 1 and for 2, or a number's.
struct ParameterLine {
    const char* yes = nullptr;
    const char* no = nullptr;
    NumberFormat number{};

    constexpr bool is_flag() const { return yes != nullptr; }
};
constexpr ParameterLine kParameterLines[] = {
    {"no ipv6 nd suppress-ra", "ipv6 nd suppress-ra"},
    {.number = NumberFormat("ipv6 nd ra-interval %d")},
    {.number = NumberFormat("ipv6 nd ra-min-interval %d")},
    {"ipv6 nd managed-config-flag", "no ipv6 nd managed-config-flag"},
    {"ipv6 nd other-config-flag", "no ipv6 nd other-config-flag"},
    {.number = NumberFormat("ipv6 nd reachable-time %d")},
    {.number = NumberFormat("ipv6 nd retrans-timer %d")},
    {.number = NumberFormat("ipv6 hop-limit %d")},
    {.number = NumberFormat("ipv6 nd ra-lifetime %d")},
};
static_assert(std::size(kParameterLines) == kParameters);

Command parameter_line(Parameter parameter, std::uint32_t value) {
    const ParameterLine& line = kParameterLines[parameter];
    if (line.is_flag()) return {"%s", value == 1 ? line.yes : line.no};
    return {line.number, value};
}

// The values that were written for rows that do not exist, by parameter: each with its interface alone. A row status
// takes them. A destroy, of whatever interface, forgets them all.
struct Pending {
    std::uint32_t value;
    std::uint32_t ifindex;
};
constinit Pending pending[kParameters]{};

Error write_parameter(const Set& set, Parameter parameter) {
    const bool is_flag = kParameterLines[parameter].is_flag();
    std::uint32_t value;
    InterfaceKey row;
    TRY(set.type(is_flag ? Integer : Unsigned32));
    TRY(set.length(sizeof value));
    TRY(set.row(row));
    set.copy(&value, sizeof value);
    if (is_flag && value != 1 && value != 2) return wrongValue;
    if (!set.acting()) return noError;
    if (set.current == nullptr) {
        pending[parameter] = {value, row.ifindex};
        return noError;
    }
    return vlan_interface_line(set, row.ifindex, parameter_line(parameter, value));
}
template <Parameter parameter>
Error write_parameter(Set& set) {
    return write_parameter(set, parameter);
}

// Sends the first value that waits for the interface, and no other, on purpose: managers repeat the row status for each.
// A minimum interval waits for its maximum.
Error send_pending(const Set& set, std::uint32_t ifindex) {
    const auto waits = [ifindex](Parameter parameter) { return pending[parameter].ifindex == ifindex; };
    for (const Parameter parameter : {sendAdverts, maxInterval, managedFlag, otherConfigFlag, reachableTime,
                                      retransmitTime, curHopLimit, defaultLifetime}) {
        if (!waits(parameter)) continue;
        Pending& value = pending[parameter];
        if (parameter == maxInterval && waits(minInterval)) {
            Pending& minimum = pending[minInterval];
            TRY(set.sub({"ipv6 nd ra-interval %d %d", value.value, minimum.value}));
            minimum = {};
        } else {
            TRY(set.sub(parameter_line(parameter, value.value)));
        }
        value = {};
        break;
    }
    return noError;
}

Error write_ipv6RouterAdvertRowStatus(Set& set) {
    std::int32_t status;
    InterfaceKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(creates_or_destroys(status));
    if (!set.acting()) return noError;
    TRY(enter_vlan_interface(set, row.ifindex));
    if (status == createAndGo) return send_pending(set, row.ifindex);
    for (Pending& value : pending) value = {};
    return set.sub("ipv6 nd suppress-ra");
}

constexpr Table<InterfaceKey> ipv6RouterAdvertTable{
    .id = IPV6ROUTERADVERTTABLE,
    .accepts = is_interface_row<InterfaceKey>,
    .command = "show ipv6rtadv ifindex %d",
    .columns =
        {
            {1, "ipv6RouterAdvertIfIndex", Integer, ReadOnly},
            {2, "ipv6RouterAdvertSendAdverts", Integer, ReadWrite, SHARED(write_parameter<sendAdverts>)},
            {3, "ipv6RouterAdvertMaxInterval", Unsigned32, ReadWrite, SHARED(write_parameter<maxInterval>)},
            {4, "ipv6RouterAdvertMinInterval", Unsigned32, ReadWrite, SHARED(write_parameter<minInterval>)},
            {5, "ipv6RouterAdvertManagedFlag", Integer, ReadWrite, SHARED(write_parameter<managedFlag>)},
            {6, "ipv6RouterAdvertOtherConfigFlag", Integer, ReadWrite, SHARED(write_parameter<otherConfigFlag>)},
            {7, "ipv6RouterAdvertLinkMTU", Unsigned32, ReadWrite, cleared},
            {8, "ipv6RouterAdvertReachableTime", Unsigned32, ReadWrite, SHARED(write_parameter<reachableTime>)},
            {9, "ipv6RouterAdvertRetransmitTime", Unsigned32, ReadWrite, SHARED(write_parameter<retransmitTime>)},
            {10, "ipv6RouterAdvertCurHopLimit", Unsigned32, ReadWrite, SHARED(write_parameter<curHopLimit>)},
            {11, "ipv6RouterAdvertDefaultLifetime", Unsigned32, ReadWrite, SHARED(write_parameter<defaultLifetime>)},
            {12, "ipv6RouterAdvertRowStatus", Integer, ReadWrite, WRITER(write_ipv6RouterAdvertRowStatus)},
        },
};

// --- icmp: scalars, which never answer -------------------------------------------------------------------------------

constexpr Scalars icmpGlobals{
    .name = "icmpGlobals",
    .scalars =
        {
            {{1}, "icmpInMsgs", Counter32, ReadOnly, never},
            {{2}, "icmpInErrors", Counter32, ReadOnly, never},
            {{3}, "icmpInDestUnreachs", Counter32, ReadOnly, never},
            {{4}, "icmpInTimeExcds", Counter32, ReadOnly, never},
            {{5}, "icmpInParmProbs", Counter32, ReadOnly, never},
            {{6}, "icmpInSrcQuenchs", Counter32, ReadOnly, never},
            {{7}, "icmpInRedirects", Counter32, ReadOnly, never},
            {{8}, "icmpInEchos", Counter32, ReadOnly, never},
            {{9}, "icmpInEchoReps", Counter32, ReadOnly, never},
            {{10}, "icmpInTimestamps", Counter32, ReadOnly, never},
            {{11}, "icmpInTimestampReps", Counter32, ReadOnly, never},
            {{12}, "icmpInAddrMasks", Counter32, ReadOnly, never},
            {{13}, "icmpInAddrMaskReps", Counter32, ReadOnly, never},
            {{14}, "icmpOutMsgs", Counter32, ReadOnly, never},
            {{15}, "icmpOutErrors", Counter32, ReadOnly, never},
            {{16}, "icmpOutDestUnreachs", Counter32, ReadOnly, never},
            {{17}, "icmpOutTimeExcds", Counter32, ReadOnly, never},
            {{18}, "icmpOutParmProbs", Counter32, ReadOnly, never},
            {{19}, "icmpOutSrcQuenchs", Counter32, ReadOnly, never},
            {{20}, "icmpOutRedirects", Counter32, ReadOnly, never},
            {{21}, "icmpOutEchos", Counter32, ReadOnly, never},
            {{22}, "icmpOutEchoReps", Counter32, ReadOnly, never},
            {{23}, "icmpOutTimestamps", Counter32, ReadOnly, never},
            {{24}, "icmpOutTimestampReps", Counter32, ReadOnly, never},
            {{25}, "icmpOutAddrMasks", Counter32, ReadOnly, never},
            {{26}, "icmpOutAddrMaskReps", Counter32, ReadOnly, never},
        },
};

// --- icmp: icmpStatsTable --------------------------------------------------------------------------------------------

SWITCHMIB_TABLE(icmp, icmpStatsTable, ICMPSTATSTABLE, 29, 1);

void refresh_icmp(const Read& read) {
    ip_snmp_linux_read_icmp_stat(&icmp_served, read.exact);
    ip_snmp_linux_read_icmp6_stat(&icmp6_served, read.exact);
}

constexpr Table<VersionKey> icmpStatsTable{
    .id = ICMPSTATSTABLE,
    .fetch = [](VersionKey& key, const Read& read, const void* detail) -> unsigned char* {
        refresh_icmp(read);
        return fetch(detail, key, read);
    },
    .columns =
        {
            {1, "icmpStatsIPVersion", Integer, ReadOnly},
            {2, "icmpStatsInMsgs", Counter32, ReadOnly, counters<icmpv4(in, "Msgs"), icmpv6(in, "Msgs")>},
            {3, "icmpStatsInErrors", Counter32, ReadOnly, counters<icmpv4(in, "Errors"), icmpv6(in, "Errors")>},
            {4, "icmpStatsOutMsgs", Counter32, ReadOnly, counters<icmpv4(out, "Msgs"), icmpv6(out, "Msgs")>},
            {5, "icmpStatsOutErrors", Counter32, ReadOnly, counters<icmpv4(out, "Errors"), icmpv6(out, "Errors")>},
        },
};

// --- icmp: icmpMsgStatsTable -----------------------------------------------------------------------------------------

SWITCHMIB_TABLE(icmp, icmpMsgStatsTable, ICMPMSGSTATSTABLE, 30, 1);

struct MessageKey {
    std::uint32_t version;
    std::uint32_t type;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
    constexpr auto operator<=>(const MessageKey&) const = default;
};

// A message type of one IP version.
struct Message {
    MessageKey key;
    Counter* in;
    Counter* out;
};
consteval Message icmpv4_message(std::uint32_t type, std::string_view name) {
    return {{kIpv4, type}, counter(icmpv4(in, name)), counter(icmpv4(out, name))};
}
consteval Message icmpv6_message(std::uint32_t type, std::string_view name) {
    return {{kIpv6, type}, counter(icmpv6(in, name)), counter(icmpv6(out, name))};
}

// In the order of their keys, which is that of a walk.
constexpr Message kMessages[] = {
    icmpv4_message(0, "EchoReps"),
    icmpv4_message(3, "DestUnreachs"),
    icmpv4_message(4, "SrcQuenchs"),
    icmpv4_message(5, "Redirects"),
    icmpv4_message(8, "Echos"),
    icmpv4_message(11, "TimeExcds"),
    icmpv4_message(12, "ParmProbs"),
    icmpv4_message(13, "Timestamps"),
    icmpv4_message(14, "TimestampReps"),
    icmpv4_message(17, "AddrMasks"),
    icmpv4_message(18, "AddrMaskReps"),
    icmpv6_message(1, "DestUnreachs"),
    icmpv6_message(2, "PktTooBigs"),
    icmpv6_message(3, "TimeExcds"),
    icmpv6_message(4, "ParmProblems"),
    icmpv6_message(128, "Echos"),
    icmpv6_message(129, "EchoReplies"),
    icmpv6_message(130, "GroupMembQueries"),
    icmpv6_message(131, "GroupMembResponses"),
    icmpv6_message(132, "GroupMembReductions"),
    icmpv6_message(133, "RouterSolicits"),
    icmpv6_message(134, "RouterAdvertisements"),
    icmpv6_message(135, "NeighborSolicits"),
    icmpv6_message(136, "NeighborAdvertisements"),
    icmpv6_message(137, "Redirects"),
};
static_assert(std::ranges::is_sorted(kMessages, {}, &Message::key));

// Which of a message's counters a column has.
constexpr Direction kInPackets = in, kOutPackets = out;

constexpr Table<MessageKey> icmpMsgStatsTable{
    .id = ICMPMSGSTATSTABLE,
    .fetch = [](MessageKey& key, const Read& read, const void* detail) -> unsigned char* {
        refresh_icmp(read);
        const auto message = std::ranges::find_if(
            kMessages, [&](const MessageKey& row) { return read.exact ? row == key : row > key; }, &Message::key);
        if (message == std::end(kMessages)) return nullptr;
        key = message->key;
        if (detail == nullptr) return nullptr;
        return answer(detail == &kInPackets ? message->in : message->out, read);
    },
    .columns =
        {
            {1, "icmpMsgStatsIPVersion", Integer, ReadOnly},
            {2, "icmpMsgStatsType", Integer, ReadOnly},
            {3, "icmpMsgStatsInPkts", Counter32, ReadOnly, Source{.detail = &kInPackets}},
            {4, "icmpMsgStatsOutPkts", Counter32, ReadOnly, Source{.detail = &kOutPackets}},
        },
};

VARIABLES(197, ipGlobals, ipAddrTable, ipNetToMediaTable, ipv4InterfaceTable, ipv6InterfaceTable, ipSystemStatsTable,
          ipIfStatsTable, ipAddressPrefixTable, ipAddressTable, ipNetToPhysicalTable, ipv6ScopeZoneIndexTable,
          ipDefaultRouterTable, ipv6RouterAdvertTable);
SWITCHMIB_VARIABLES(icmp, 35, icmpGlobals, icmpStatsTable, icmpMsgStatsTable);

SWITCHMIB_EXPORT void MODULE_INIT() {
    SWITCHMIB_REGISTER(ip);
    SWITCHMIB_REGISTER(icmp);
}

}  // namespace switchmib::MODULE
