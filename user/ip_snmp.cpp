// IP-MIB, the ip and icmp groups: the kernel's protocol counters. No object here asks the backend: the values come from
// the kernel's statistics files, through readers that are exported for the host's own modules as well.
#define MODULE ip
#include "framework/module.h"

#include <sys/sysinfo.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace switchmib::MODULE {

MODULE_OID(kMib2, 4);
SWITCHMIB_MODULE_OID(icmp, kMib2, 5);

// --- the kernel's records --------------------------------------------------------------------------------------------

// The "Ip:" and "Icmp:" lines give their values by position, IPv6's lines by a key. These are the names of the values
// in the order of their records, for ICMP those of the "In" values and again those of the "Out" values.
constexpr std::string_view kIpNames[] = {
    "Forwarding", "DefaultTTL", "InReceives",  "InHdrErrors", "InAddrErrors", "ForwDatagrams",   "InUnknownProtos",
    "InDiscards", "InDelivers", "OutRequests", "OutDiscards", "OutNoRoutes",  "ReasmTimeout",    "ReasmReqds",
    "ReasmOKs",   "ReasmFails", "FragOKs",     "FragFails",   "FragCreates",  "RoutingDiscards",
};
constexpr std::string_view kIp6Names[] = {
    "InReceives",      "InHdrErrors",  "InTooBigErrors", "InNoRoutes",       "InAddrErrors", "InUnknownProtos",
    "InTruncatedPkts", "InDiscards",   "InDelivers",     "OutForwDatagrams", "OutRequests",  "OutDiscards",
    "OutNoRoutes",     "ReasmTimeout", "FragOKs",        "FragFails",        "FragCreates",  "ReasmReqds",
    "ReasmOKs",        "ReasmFails",   "InMcastPkts",    "OutMcastPkts",
};
constexpr std::string_view kIcmpNames[] = {
    "Msgs",  "Errors",   "DestUnreachs", "TimeExcds",     "ParmProbs", "SrcQuenchs",   "Redirects",
    "Echos", "EchoReps", "Timestamps",   "TimestampReps", "AddrMasks", "AddrMaskReps",
};
constexpr std::string_view kIcmp6Names[] = {
    "Msgs",
    "Errors",
    "DestUnreachs",
    "AdminProhibs",
    "TimeExcds",
    "ParmProblems",
    "PktTooBigs",
    "Echos",
    "EchoReplies",
    "RouterSolicits",
    "RouterAdvertisements",
    "NeighborSolicits",
    "NeighborAdvertisements",
    "Redirects",
    "GroupMembQueries",
    "GroupMembResponses",
    "GroupMembReductions",
};

// What the exported readers fill. A counter is the kernel's modulo 2^32.
using Counter = std::uint32_t;
constexpr std::size_t kIp6Sysctls = 2;  // forwarding and hop limit, before IPv6's counters
struct IpStatistics {
    Counter counters[std::size(kIpNames)];
};
struct Ip6Statistics {
    Counter counters[kIp6Sysctls + std::size(kIp6Names)];
};
struct IcmpStatistics {
    Counter counters[2 * std::size(kIcmpNames)];
};
struct Icmp6Statistics {
    Counter counters[2 * std::size(kIcmp6Names)];
};
struct TcpStatistics {
    Counter counters[14];          // RtoAlgorithm, ..., InErrs, OutRsts
    std::uint16_t in_errs_valid;   // 1 when the kernel gives InErrs
    std::uint16_t out_rsts_valid;  // 1 when it gives OutRsts
};
struct UdpStatistics {
    Counter counters[4];  // of IPv4 and IPv6 together: InDatagrams, NoPorts, InErrors, OutDatagrams
};
static_assert(sizeof(IpStatistics) == 80 && sizeof(IcmpStatistics) == 104 && sizeof(Ip6Statistics) == 96);
static_assert(sizeof(Icmp6Statistics) == 136 && sizeof(TcpStatistics) == 60 && sizeof(UdpStatistics) == 16);

// --- the readers -----------------------------------------------------------------------------------------------------

// A host may point them elsewhere.
SWITCHMIB_EXPORT char proc_ipv6_hoplimit[256];
constinit char proc_ipv6_hoplimit[256] = "/proc/sys/net/ipv6/conf/default/hop_limit";
SWITCHMIB_EXPORT char proc_ipv6_forwarding[256];
constinit char proc_ipv6_forwarding[256] = "/proc/sys/net/ipv6/conf/all/forwarding";

// Takes the first `digits` characters of a file as a number; what doesn't begin with one leaves `value` as it is. -1:
// the file can't be opened.
int read_sysctl(const char* path, int digits, unsigned long& value) {
    std::FILE* file = std::fopen(path, "r");
    if (file == nullptr) return -1;
    char text[8] = {};
    char* end = text;
    if (std::fgets(text, digits + 1, file) != nullptr)
        if (const unsigned long number = std::strtoul(text, &end, 10); end != text) value = number;
    static_cast<void>(std::fclose(file));
    return 0;
}

SWITCHMIB_EXPORT int ip6_snmp_hop_limit_get(unsigned long* hops) { return read_sysctl(proc_ipv6_hoplimit, 3, *hops); }
SWITCHMIB_EXPORT int ip6_snmp_forwarding_get(unsigned long* forwards) {
    return read_sysctl(proc_ipv6_forwarding, 1, *forwards);
}

constexpr const char* kSnmpFile = "/proc/net/snmp";
constexpr const char* kSnmp6File = "/proc/net/snmp6";

// False: the file can't be opened. Longer lines than the buffer's come in pieces.
template <class Take>
bool for_each_line(const char* path, Take take) {
    std::FILE* file = std::fopen(path, "r");
    if (file == nullptr) return false;
    char line[1024];
    while (std::fgets(line, sizeof line, file) != nullptr) take(static_cast<const char*>(line));
    static_cast<void>(std::fclose(file));
    return true;
}

bool begins(const char* line, std::string_view with) { return std::strncmp(line, with.data(), with.size()) == 0; }

// Takes the number at `text` and moves after it; without one, both stay. Cut to 32 bits whatever the machine: -1 is
// 4294967295.
bool take_number(const char*& text, Counter& number) {
    char* end;
    const unsigned long long value = std::strtoull(text, &end, 10);
    if (end == text) return false;
    number = static_cast<Counter>(value);
    text = end;
    return true;
}

// Takes the numbers of a tagged line by position; counters that it has no number for stay. (The line of names has the
// same tag and no number.) Returns how many there were, -1 for a line with another tag.
int take_numbers(const char* line, std::string_view tag, std::span<Counter> counters) {
    if (!begins(line, tag)) return -1;
    const char* text = line + tag.size();
    int count = 0;
    for (Counter& counter : counters) {
        if (!take_number(text, counter)) break;
        ++count;
    }
    return count;
}

// Takes the number after a line's first word.
bool take_value(const char* line, Counter& value) {
    const char* text = line + std::strcspn(line, " \t\n");
    return take_number(text, value);
}

// Takes the value of a line whose key is, or begins with, the prefix and one of the names.
void take_keyed(const char* line, std::string_view prefix, std::span<const std::string_view> names, Counter* counters) {
    if (!begins(line, prefix)) return;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (begins(line + prefix.size(), names[i])) take_value(line, counters[i]);
}

bool read_ip(IpStatistics& ip) {
    constexpr Counter kNotForwarding = 2;                          // the MIB's number for the kernel's 0
    const std::span in_file = std::span(ip.counters).first<19>();  // without RoutingDiscards, which stay 0
    if (!for_each_line(kSnmpFile, [&](const char* line) { take_numbers(line, "Ip: ", in_file); })) return false;
    if (ip.counters[0] == 0) ip.counters[0] = kNotForwarding;
    return true;
}

bool read_icmp(IcmpStatistics& icmp) {
    return for_each_line(kSnmpFile, [&](const char* line) { take_numbers(line, "Icmp: ", icmp.counters); });
}

bool read_tcp(TcpStatistics& tcp) {
    constexpr Counter kOtherAlgorithm = 1;
    const auto take = [&](const char* line) {
        const int count = take_numbers(line, "Tcp: ", tcp.counters);
        if (count < 0) return;
        tcp.in_errs_valid = count > 12;
        tcp.out_rsts_valid = count > 13;
    };
    if (!for_each_line(kSnmpFile, take)) return false;
    if (tcp.counters[0] == 0) tcp.counters[0] = kOtherAlgorithm;
    return true;
}

// The counter that an IPv6 line adds to, by the letters that distinguish Udp6InDatagrams, Udp6NoPorts, Udp6InErrors and
// Udp6OutDatagrams from one another and from all others; null for those.
Counter* udp6_total(UdpStatistics& udp, const char* line) {
    if (!begins(line, "Udp6") || std::strlen(line) < 7) return nullptr;
    if (line[4] == 'O') return &udp.counters[3];
    if (line[4] == 'N') return &udp.counters[1];
    return line[6] == 'D' ? &udp.counters[0] : line[6] == 'E' ? &udp.counters[2] : nullptr;
}

bool read_udp(UdpStatistics& udp) {
    if (!for_each_line(kSnmpFile, [&](const char* line) { take_numbers(line, "Udp: ", udp.counters); })) return false;
    for_each_line(kSnmp6File, [&](const char* line) {
        Counter* total = udp6_total(udp, line);
        if (Counter value; total != nullptr && take_value(line, value)) *total += value;
    });
    return true;
}

void take_sysctl(int (*get)(unsigned long*), Counter& value) {
    unsigned long number = value;
    get(&number);
    value = static_cast<Counter>(number);
}

// Without IPv6 a kernel has no file; what was read before stays.
bool read_ip6(Ip6Statistics& ip6) {
    for_each_line(kSnmp6File, [&](const char* line) {
        // For every line, on purpose: an empty file leaves the sysctls' values alone too.
        take_sysctl(ip6_snmp_forwarding_get, ip6.counters[0]);
        take_sysctl(ip6_snmp_hop_limit_get, ip6.counters[1]);
        take_keyed(line, "Ip6", kIp6Names, ip6.counters + kIp6Sysctls);
    });
    return true;
}

bool read_icmp6(Icmp6Statistics& icmp6) {
    for_each_line(kSnmp6File, [&](const char* line) {
        take_keyed(line, "Icmp6In", kIcmp6Names, icmp6.counters);
        take_keyed(line, "Icmp6Out", kIcmp6Names, icmp6.counters + std::size(kIcmp6Names));
    });
    return true;
}

// Whether a record is read again: always when forced, as by a GET, else some seconds after the uptime `last`.
enum class Cache { unusable, kept, due };

Cache check_cache(std::uint32_t& last, int force) {
    constexpr std::uint32_t kSecondsKept = 3;
    struct sysinfo info;
    if (sysinfo(&info) != 0) return Cache::unusable;
    const auto now = static_cast<std::uint32_t>(info.uptime);
    if (force) last = 0;
    const std::uint32_t elapsed = now < last ? ~last + now : now - last;
    if (last != 0 && elapsed < kSecondsKept) return Cache::kept;
    last = now;  // also when the file then can't be opened
    return Cache::due;
}

// A reader: its cache, copied to the caller. -1, and a record of zeros, when there is no uptime or no file.
template <auto read, class Record>
int read_cached(Record* record, int force) {
    static Record cache;
    static std::uint32_t last;
    *record = {};
    const Cache state = check_cache(last, force);
    if (state == Cache::unusable || (state == Cache::due && !read(cache))) return -1;
    *record = cache;
    return 0;
}

SWITCHMIB_EXPORT int ip_snmp_linux_read_ip_stat(IpStatistics* record, int force) {
    return read_cached<read_ip>(record, force);
}
SWITCHMIB_EXPORT int ip_snmp_linux_read_icmp_stat(IcmpStatistics* record, int force) {
    return read_cached<read_icmp>(record, force);
}
SWITCHMIB_EXPORT int ip_snmp_linux_read_ip6_stat(Ip6Statistics* record, int force) {
    return read_cached<read_ip6>(record, force);
}
SWITCHMIB_EXPORT int ip_snmp_linux_read_icmp6_stat(Icmp6Statistics* record, int force) {
    return read_cached<read_icmp6>(record, force);
}
SWITCHMIB_EXPORT int ip_snmp_linux_read_tcp_stat(TcpStatistics* record, int force) {
    return read_cached<read_tcp>(record, force);
}
SWITCHMIB_EXPORT int ip_snmp_linux_read_udp_stat(UdpStatistics* record, int force) {
    return read_cached<read_udp>(record, force);
}

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
constexpr std::uint32_t kStart = 0, kIpv4 = 1, kIpv6 = 2;

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

VARIABLES(128, ipGlobals, ipAddrTable, ipNetToMediaTable, ipSystemStatsTable, ipIfStatsTable);
SWITCHMIB_VARIABLES(icmp, 35, icmpGlobals, icmpStatsTable, icmpMsgStatsTable);

SWITCHMIB_EXPORT void MODULE_INIT() {
    SWITCHMIB_REGISTER(ip);
    SWITCHMIB_REGISTER(icmp);
}

}  // namespace switchmib::MODULE
