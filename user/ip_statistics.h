// The kernel's protocol counters: the records that they are read into, and their readers, which are exported for the
// host's own modules as well.
#pragma once

#include "framework/module.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace switchmib::ip {

// The "Ip:" and "Icmp:" lines give their values by position, IPv6's lines by a key. These are the names of the values
// in the order of their records, for ICMP those of the "In" values and again those of the "Out" values.
inline constexpr std::string_view kIpNames[] = {
    "Forwarding", "DefaultTTL", "InReceives",  "InHdrErrors", "InAddrErrors", "ForwDatagrams",   "InUnknownProtos",
    "InDiscards", "InDelivers", "OutRequests", "OutDiscards", "OutNoRoutes",  "ReasmTimeout",    "ReasmReqds",
    "ReasmOKs",   "ReasmFails", "FragOKs",     "FragFails",   "FragCreates",  "RoutingDiscards",
};
inline constexpr std::string_view kIp6Names[] = {
    "InReceives",      "InHdrErrors",  "InTooBigErrors", "InNoRoutes",       "InAddrErrors", "InUnknownProtos",
    "InTruncatedPkts", "InDiscards",   "InDelivers",     "OutForwDatagrams", "OutRequests",  "OutDiscards",
    "OutNoRoutes",     "ReasmTimeout", "FragOKs",        "FragFails",        "FragCreates",  "ReasmReqds",
    "ReasmOKs",        "ReasmFails",   "InMcastPkts",    "OutMcastPkts",
};
inline constexpr std::string_view kIcmpNames[] = {
    "Msgs",  "Errors",   "DestUnreachs", "TimeExcds",     "ParmProbs", "SrcQuenchs",   "Redirects",
    "Echos", "EchoReps", "Timestamps",   "TimestampReps", "AddrMasks", "AddrMaskReps",
};
inline constexpr std::string_view kIcmp6Names[] = {
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
inline constexpr std::size_t kIp6Sysctls = 2;  // forwarding and hop limit, before IPv6's counters
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

// Fill a record from the kernel's files: again when forced, as by a GET, else from what was read in the last seconds. -1,
// and a record of zeros, when there is no uptime or no file.
SWITCHMIB_EXPORT int ip_snmp_linux_read_ip_stat(IpStatistics* record, int force);
SWITCHMIB_EXPORT int ip_snmp_linux_read_icmp_stat(IcmpStatistics* record, int force);
SWITCHMIB_EXPORT int ip_snmp_linux_read_ip6_stat(Ip6Statistics* record, int force);
SWITCHMIB_EXPORT int ip_snmp_linux_read_icmp6_stat(Icmp6Statistics* record, int force);
SWITCHMIB_EXPORT int ip_snmp_linux_read_tcp_stat(TcpStatistics* record, int force);
SWITCHMIB_EXPORT int ip_snmp_linux_read_udp_stat(UdpStatistics* record, int force);

}  // namespace switchmib::ip
