// The readers of the kernel's protocol counters.
#include "ip_statistics.h"

#include <sys/sysinfo.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

namespace switchmib::ip {

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

// A reader: its cache, copied to the caller.
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

}  // namespace switchmib::ip
