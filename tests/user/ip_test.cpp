#include "support/fake_proc.h"
#include "support/recording_host.h"

#include <array>
#include <bit>
#include <cstring>
#include <optional>
#include <sstream>

namespace tests {
namespace {

constexpr const char* kSnmp = "/proc/net/snmp";
constexpr const char* kSnmp6 = "/proc/net/snmp6";
constexpr const char* kForwarding = "/proc/sys/net/ipv6/conf/all/forwarding";
constexpr const char* kHopLimit = "/proc/sys/net/ipv6/conf/default/hop_limit";

using Number = std::optional<std::uint32_t>;

// "first first+1 ...", `count` of them.
std::string numbers(int first, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += (i ? " " : "") + std::to_string(first + i);
    return text;
}

// A tagged pair of lines, as the kernel writes them.
std::string lines_of(const std::string& tag, const std::string& values) {
    return tag + ": InSome OutOther\n" + tag + ": " + values + "\n";
}

}  // namespace

class KernelStatistics : public RecordingHost {
protected:
    FakeProc proc;

    ~KernelStatistics() override {
        EXPECT_THAT(shown, IsEmpty()) << "values come from the kernel alone";
        EXPECT_THAT(sent, IsEmpty());
    }

    static Number number(const ReadResult& result) {
        if (!result.value) return std::nullopt;
        EXPECT_EQ(result.value->size(), 4u);
        std::uint32_t value;
        std::memcpy(&value, result.value->data(), sizeof value);
        return value;
    }
    Number value(const std::string& object, const Oid& index = {0}) { return number(get(object, index)); }
    // What a GETNEXT answers: the index and the value, or nothing.
    using Row = std::optional<std::pair<Oid, std::uint32_t>>;
    Row row_after(const std::string& object, const Oid& index = {}) {
        const ReadResult result = next(object, index);
        if (!result.value) return std::nullopt;
        const Oid column = oid_of(object);
        EXPECT_TRUE(std::equal(column.begin(), column.end(), result.name.begin()));
        return {{Oid(result.name.begin() + static_cast<std::ptrdiff_t>(column.size()), result.name.end()),
                 *number(result)}};
    }

    // An exported reader's result and record.
    template <std::size_t size>
    struct Record {
        int result;
        std::array<std::uint32_t, size> values;
    };
    template <std::size_t size>
    static Record<size> read_record(const std::string& reader, int force = 1) {
        auto* function = reinterpret_cast<int (*)(void*, int)>(loaded().library.symbol(reader));
        Record<size> record;
        record.values.fill(77);
        record.result = function(record.values.data(), force);
        return record;
    }
    template <std::size_t count, std::size_t size>
    static std::vector<std::uint32_t> first(const Record<size>& record) {
        return {record.values.begin(), record.values.begin() + count};
    }
    static Record<20> read_ip(int force = 1) { return read_record<20>("ip_snmp_linux_read_ip_stat", force); }
    static Record<26> read_icmp(int force = 1) { return read_record<26>("ip_snmp_linux_read_icmp_stat", force); }
    static Record<24> read_ip6(int force = 1) { return read_record<24>("ip_snmp_linux_read_ip6_stat", force); }
    static Record<34> read_icmp6(int force = 1) { return read_record<34>("ip_snmp_linux_read_icmp6_stat", force); }
    static Record<15> read_tcp(int force = 1) { return read_record<15>("ip_snmp_linux_read_tcp_stat", force); }
    static Record<4> read_udp(int force = 1) { return read_record<4>("ip_snmp_linux_read_udp_stat", force); }
};

// --- scalars ---------------------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, ScalarsAnswerWhatTheKernelHas) {
    proc.files[kSnmp] = lines_of("Ip", "0 64 " + numbers(3, 17));
    proc.files[kSnmp6] = "Ip6InReceives 1\n";
    proc.files[kForwarding] = "1\n";
    proc.files[kHopLimit] = "255\n";
    EXPECT_EQ(value("ipForwarding"), 2u) << "the kernel's 0 is notForwarding";
    EXPECT_EQ(value("ipDefaultTTL"), 64u);
    EXPECT_EQ(value("ipReasmTimeout"), 13u);
    EXPECT_EQ(value("ipv6IpForwarding"), 1u);
    EXPECT_EQ(value("ipv6IpDefaultHopLimit"), 255u);
    proc.files[kSnmp] = lines_of("Ip", "1 64");
    proc.files[kForwarding] = "0\n";
    EXPECT_EQ(value("ipForwarding"), 1u);
    EXPECT_EQ(value("ipv6IpForwarding"), 0u) << "IPv6's stays as the kernel has it";

    // None has a write method, which each read says.
    for (const services::Object& object : loaded().registry.objects()) {
        const bool is_scalar = object.entry.namelen <= 9;
        if (is_scalar && (object.module == "ip" || object.module == "icmp")) {
            EXPECT_EQ(get(object.name, {0}).writer, nullptr) << object.name;
        }
    }
}

TEST_F(KernelStatistics, TablesWithoutAnswersReadNoFile) {
    for (const char* object : {"ipAdEntAddr", "ipNetToMediaType", "ipIfStatsInReceives", "icmpInMsgs"}) {
        EXPECT_EQ(get(object, {1}).value, std::nullopt);
        EXPECT_EQ(next(object).value, std::nullopt);
    }
    EXPECT_EQ(get("ipNetToMediaPhysAddress", {1, 10, 0, 0, 1}).writer, kUntouched);
    EXPECT_THAT(proc.opened, IsEmpty());
}

// --- ipSystemStatsTable ----------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, SystemStatsServeSomeColumnsForBothVersionsAndSomeForIpv6) {
    // Where the value is in IPv4's line, 0 for IPv6 alone. Columns that aren't here have none.
    const std::map<std::string, std::uint32_t> served = {
        {"InReceives", 3},      {"InHdrErrors", 4},      {"InNoRoutes", 0},   {"InAddrErrors", 0},
        {"InUnknownProtos", 7}, {"InTruncatedPkts", 0},  {"ReasmReqds", 14},  {"ReasmOKs", 15},
        {"ReasmFails", 16},     {"InDiscards", 8},       {"InDelivers", 9},   {"OutRequests", 10},
        {"OutNoRoutes", 0},     {"OutForwDatagrams", 0}, {"OutDiscards", 11}, {"OutFragOKs", 17},
        {"OutFragFails", 18},   {"OutFragCreates", 19},  {"InMcastPkts", 0},  {"OutMcastPkts", 0}};
    proc.files[kSnmp] = lines_of("Ip", numbers(101, 19));
    value("ipForwarding");
    std::uint32_t number = 200;
    for (const auto& [column, place] : served) {
        const std::string key = column.starts_with("OutFrag") ? column.substr(3) : column;
        proc.files[kSnmp6] += "Ip6" + key + "  \t" + std::to_string(++number) + "\n";
    }

    int columns = 0;
    for (const services::Object& object : loaded().registry.objects()) {
        if (!object.name.starts_with("ipSystemStats")) continue;
        SCOPED_TRACE(object.name);
        ++columns;
        const auto found = served.find(object.name.substr(std::strlen("ipSystemStats")));
        Number ipv4, ipv6;
        if (found != served.end()) {
            ipv6 = 201 + static_cast<std::uint32_t>(std::distance(served.begin(), found));
            if (found->second != 0) ipv4 = 100 + found->second;
        }
        EXPECT_EQ(value(object.name, {1}), ipv4);
        EXPECT_EQ(value(object.name, {2}), ipv6);
        EXPECT_EQ(value(object.name, {}), std::nullopt);
        EXPECT_EQ(value(object.name, {3}), std::nullopt);
        const Row ipv4_row = ipv4 ? Row({{1}, *ipv4}) : std::nullopt;
        const Row ipv6_row = ipv6 ? Row({{2}, *ipv6}) : std::nullopt;
        EXPECT_EQ(row_after(object.name), ipv4 ? ipv4_row : ipv6_row);
        // A column without IPv4 ends after its missing row: its IPv6 row is found from the start only.
        EXPECT_EQ(row_after(object.name, {1}), ipv4 ? ipv6_row : std::nullopt);
        EXPECT_EQ(row_after(object.name, {2}), std::nullopt);
        EXPECT_EQ(row_after(object.name, {4294967295}), std::nullopt);
    }
    EXPECT_EQ(columns, 46);
}

TEST_F(KernelStatistics, SystemStatsShowIpv4AsAScalarReadItLast) {
    proc.has_uptime = false;
    value("ipForwarding");
    proc.has_uptime = true;
    proc.files[kSnmp] = lines_of("Ip", "1 64 500");
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 0u);
    EXPECT_EQ(proc.opened[kSnmp], 0);
    EXPECT_EQ(value("ipRoutingDiscards"), std::nullopt);
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 500u) << "a scalar without a value refreshes as well";
    proc.files[kSnmp] = lines_of("Ip", "1 64 600");
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 500u);
    EXPECT_EQ(row_after("ipv6InterfaceTableLastChange"), std::nullopt);
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 500u);
    EXPECT_EQ(row_after("ipAddressSpinLock"), std::nullopt);
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 500u) << "a GETNEXT within three seconds";
    proc.uptime += 3;
    row_after("ipAddressSpinLock");
    EXPECT_EQ(value("ipSystemStatsInReceives", {1}), 600u);
}

// --- icmp ------------------------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, IcmpStatsWalkFromIpv4ToIpv6) {
    proc.files[kSnmp] = lines_of("Icmp", numbers(101, 26));
    proc.files[kSnmp6] = "Icmp6InMsgs 201\nIcmp6InErrors 202\nIcmp6OutMsgs 203\nIcmp6OutErrors 204\n";
    const struct {
        const char* column;
        std::uint32_t ipv4, ipv6;
    } columns[] = {{"icmpStatsInMsgs", 101, 201},
                   {"icmpStatsInErrors", 102, 202},
                   {"icmpStatsOutMsgs", 114, 203},
                   {"icmpStatsOutErrors", 115, 204}};
    for (const auto& [column, ipv4, ipv6] : columns) {
        SCOPED_TRACE(column);
        EXPECT_EQ(value(column, {1}), ipv4);
        EXPECT_EQ(value(column, {2}), ipv6);
        EXPECT_EQ(value(column, {0}), std::nullopt);
        EXPECT_EQ(row_after(column), Row({{1}, ipv4}));
        EXPECT_EQ(row_after(column, {1}), Row({{2}, ipv6}));
        EXPECT_EQ(row_after(column, {2}), std::nullopt);
    }
    EXPECT_EQ(value("icmpStatsIPVersion", {1}), std::nullopt);
    EXPECT_EQ(row_after("icmpStatsIPVersion"), std::nullopt);
}

TEST_F(KernelStatistics, MessagesWalkByTypeWithinAVersion) {
    const std::map<std::uint32_t, std::uint32_t> ipv4_places = {{0, 9},  {3, 3},   {4, 6},   {5, 7},   {8, 8},  {11, 4},
                                                                {12, 5}, {13, 10}, {14, 11}, {17, 12}, {18, 13}};
    std::istringstream ipv6_keys(  // of types 1 to 4 and from 128 on
        "DestUnreachs PktTooBigs TimeExcds ParmProblems Echos EchoReplies GroupMembQueries GroupMembResponses "
        "GroupMembReductions RouterSolicits RouterAdvertisements NeighborSolicits NeighborAdvertisements Redirects");
    // The packets in of each version and type; 13 more go out.
    std::map<std::pair<oid, oid>, std::uint32_t> packets;
    proc.files[kSnmp] = lines_of("Icmp", numbers(1, 26));
    for (const auto& [type, place] : ipv4_places) packets[{1, type}] = place;
    for (std::string key; ipv6_keys >> key;) {
        const oid count = static_cast<oid>(packets.size() - ipv4_places.size()), type = count + (count < 4 ? 1 : 124);
        packets[{2, type}] = 100 * type;
        proc.files[kSnmp6] += "Icmp6In" + key + " " + std::to_string(100 * type) + "\n";
        proc.files[kSnmp6] += "Icmp6Out" + key + " " + std::to_string(100 * type + 13) + "\n";
    }
    const auto check = [&](const Oid& index) {
        SCOPED_TRACE(services::to_string(index));
        const std::pair<oid, oid> at{index.empty() ? 0 : index[0], index.size() < 2 ? 0 : index[1]};
        const auto here = packets.find(at), after = packets.upper_bound(at);
        for (const std::uint32_t more : {0u, 13u}) {
            const char* column = more == 0 ? "icmpMsgStatsInPkts" : "icmpMsgStatsOutPkts";
            Number number;
            Row row;
            if (here != packets.end()) number = here->second + more;
            if (after != packets.end()) row = Row({{after->first.first, after->first.second}, after->second + more});
            EXPECT_EQ(value(column, index), number);
            EXPECT_EQ(row_after(column, index), row);
        }
    };
    for (const oid version : {1u, 2u})
        for (oid type = 0; type < 260; ++type) check({version, type});
    // What an index doesn't have is 0.
    constexpr oid kNegative = 4294967295;
    for (const Oid& index : std::vector<Oid>{{}, {0, 200}, {1}, {1, kNegative}, {2}, {2, kNegative}, {3, 0}})
        check(index);
    EXPECT_EQ(value("icmpMsgStatsType", {1, 3}), std::nullopt);
    EXPECT_EQ(row_after("icmpMsgStatsIPVersion"), std::nullopt);
}

// --- the cache -------------------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, GetsReadAlwaysAndGetNextsEveryThreeSeconds) {
    proc.files[kSnmp6] = "Ip6InReceives 1\n";
    EXPECT_EQ(value("ipSystemStatsInReceives", {2}), 1u);
    proc.files[kSnmp6] = "Ip6InReceives 2\n";
    proc.uptime += 2;
    EXPECT_EQ(row_after("ipSystemStatsInReceives", {1}), Row({{2}, 1}));
    EXPECT_EQ(proc.opened[kSnmp6], 1);
    proc.uptime += 1;
    EXPECT_EQ(row_after("ipSystemStatsInReceives", {1}), Row({{2}, 2}));
    EXPECT_EQ(proc.opened[kSnmp6], 2);
    // A GET reads again, and begins the three seconds again.
    proc.uptime += 2;
    proc.files[kSnmp6] = "Ip6InReceives 3\n";
    EXPECT_EQ(value("ipSystemStatsInReceives", {2}), 3u);
    proc.uptime += 2;
    proc.files[kSnmp6] = "Ip6InReceives 4\n";
    EXPECT_EQ(row_after("ipSystemStatsInReceives", {1}), Row({{2}, 3}));
    EXPECT_EQ(proc.opened[kSnmp6], 3);
    // Each reader counts its own time.
    row_after("icmpStatsInMsgs");
    EXPECT_EQ(proc.opened[kSnmp6], 4);
    EXPECT_EQ(proc.opened[kSnmp], 1);
    row_after("icmpMsgStatsInPkts");
    EXPECT_EQ(proc.opened[kSnmp], 1);
}

TEST_F(KernelStatistics, UptimeWrapsAt32Bits) {
    const auto udp_at = [this](std::uint32_t seconds, int force = 0) {
        proc.uptime = static_cast<long>(seconds);
        return read_udp(force).values[0];
    };
    proc.files[kSnmp] = lines_of("Udp", "1");
    EXPECT_EQ(udp_at(4294967294, 1), 1u);
    proc.files[kSnmp] = lines_of("Udp", "2");
    EXPECT_EQ(udp_at(1), 1u);
    EXPECT_EQ(udp_at(2), 2u);
    // An uptime of 0 is as good as never read.
    udp_at(0, 1);
    proc.files[kSnmp] = lines_of("Udp", "3");
    EXPECT_EQ(udp_at(0), 3u);
}

TEST_F(KernelStatistics, WithoutUptimeOrFileIpv4IsZeroAndIpv6Stays) {
    proc.files[kSnmp] = "Ip: 1 64 7\nIcmp: 7\nTcp: 7\nUdp: 7\n";
    proc.files[kSnmp6] = "Ip6InReceives 8\nIcmp6InMsgs 8\n";
    const auto results = [](int force) {
        return std::array{read_ip(force).result,  read_icmp(force).result, read_tcp(force).result,
                          read_udp(force).result, read_ip6(force).result,  read_icmp6(force).result};
    };
    EXPECT_THAT(results(1), ElementsAre(0, 0, 0, 0, 0, 0));

    const auto files = std::exchange(proc.files, {});
    EXPECT_THAT(results(1), ElementsAre(-1, -1, -1, -1, 0, 0));
    EXPECT_THAT(read_ip().values, ::testing::Each(0u));
    EXPECT_EQ(read_ip6().values[2], 8u);
    EXPECT_EQ(read_icmp6().values[0], 8u);
    EXPECT_EQ(value("icmpStatsInMsgs", {1}), 0u);
    EXPECT_EQ(value("icmpStatsInMsgs", {2}), 8u);
    // The failed opening counts as a reading: for three seconds what was read before it is answered again.
    EXPECT_EQ(read_ip(0).result, 0);
    EXPECT_EQ(read_ip(0).values[2], 7u);
    proc.uptime += 3;
    EXPECT_EQ(read_ip(0).result, -1);

    proc.files = files;
    proc.has_uptime = false;
    EXPECT_THAT(results(1), ElementsAre(-1, -1, -1, -1, -1, -1));
    EXPECT_THAT(read_ip6().values, ::testing::Each(0u));
    EXPECT_EQ(value("ipv6IpDefaultHopLimit"), 0u);
    EXPECT_EQ(value("icmpStatsInMsgs", {2}), 0u);
}

// --- what the files say ----------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, Ipv4LinesAreReadByPosition) {
    // A column more than there were shifts the ones after it.
    proc.files[kSnmp] =
        "Icmp: InMsgs InErrors InCsumErrors InDestUnreachs\nIcmp: 1 2 99 " + numbers(3, 24) + "\nIcmpMsg: 50 51 52\n";
    EXPECT_THAT(first<4>(read_icmp()), ElementsAre(1, 2, 99, 3));
    EXPECT_EQ(read_icmp().values[25], 25u);
    EXPECT_EQ(value("icmpMsgStatsInPkts", {1, 3}), 99u);

    // What a short line doesn't have, and what isn't a number, stays; -1 and greater numbers are cut to 32 bits.
    proc.files[kSnmp] = "Icmp: -1 4294967297 x 7\n Icmp: 5\nicmp: 5\n";
    EXPECT_THAT(first<4>(read_icmp()), ElementsAre(4294967295, 1, 99, 3));

    proc.files[kSnmp] = lines_of("Ip", numbers(1, 25));
    const auto ip = read_ip();
    EXPECT_EQ(ip.values[18], 19u);
    EXPECT_EQ(ip.values[19], 0u) << "routing discards are not what is at their place";

    // Lines come in pieces of 1023 characters, each of which may begin with a tag.
    proc.files[kSnmp] = "Udp: 5 " + std::string(1016, ' ') + "Udp: 6 7\n" + std::string(1020, 'x') + "Udp: 8 9\n";
    EXPECT_THAT(first<2>(read_udp()), ElementsAre(6, 7));
}

TEST_F(KernelStatistics, Ipv6LinesAreReadByKey) {
    proc.files[kSnmp6] =
        "Ip6OutMcastPkts 4\nIp6InReceives\t-1\nxIp6InDelivers 9\nIp6InDeliversMore 5\nIp6InDiscards 4294967298\n";
    auto values = read_ip6().values;
    EXPECT_EQ(values[2], 4294967295u);
    EXPECT_EQ(values[9], 2u);
    EXPECT_EQ(values[10], 5u) << "a key is for all that begin with it";
    EXPECT_EQ(values[23], 4u);
    proc.files[kSnmp6] =
        "Ip6OutMcastPkts\nIp6InReceives none\nIcmp6InAdminProhibs 6\nIcmp6OutGroupMembReductions 7\n"
        "Ip6InTooBigErrors 8\nIp6ReasmTimeout 9\n";
    values = read_ip6().values;
    EXPECT_EQ(values[4], 8u);
    EXPECT_EQ(values[15], 9u);
    EXPECT_EQ(values[2], 4294967295u) << "a line without a number changes nothing";
    EXPECT_EQ(values[23], 4u);
    EXPECT_EQ(read_icmp6().values[3], 6u);
    EXPECT_EQ(read_icmp6().values[33], 7u);
}

TEST_F(KernelStatistics, TcpSaysWhetherTheLastTwoAreThere) {
    const auto flags = [](std::uint16_t errors, std::uint16_t resets) {
        return std::bit_cast<std::uint32_t>(std::array{errors, resets});
    };
    proc.files[kSnmp] = lines_of("Tcp", "0 200 120000 -1 " + numbers(5, 11));
    auto tcp = read_tcp().values;
    EXPECT_EQ(tcp[0], 1u) << "an unknown algorithm is 'other'";
    EXPECT_EQ(tcp[3], 4294967295u);
    EXPECT_EQ(tcp[13], 14u);
    EXPECT_EQ(tcp[14], flags(1, 1));
    proc.files[kSnmp] = lines_of("Tcp", numbers(3, 13));
    tcp = read_tcp().values;
    EXPECT_EQ(tcp[0], 3u);
    EXPECT_EQ(tcp[14], flags(1, 0));
    proc.files[kSnmp] = lines_of("Tcp", numbers(3, 12));
    EXPECT_EQ(read_tcp().values[14], flags(0, 0));
}

TEST_F(KernelStatistics, UdpCountsIpv6In) {
    proc.files[kSnmp] = lines_of("Udp", "10 20 30 40 50") + lines_of("UdpLite", "1000 1000 1000 1000");
    EXPECT_THAT(read_udp().values, ElementsAre(10, 20, 30, 40));
    proc.files[kSnmp6] =
        "Udp6InDatagrams 1\nUdp6NoPorts 2\nUdp6InErrors 3\nUdp6OutDatagrams 4\n"
        "Udp6RcvbufErrors 100\nUdp6SndbufErrors 100\nUdp6InCsumErrors 100\nUdp6\nUdp6In\n"
        "UdpLite6InDatagrams 100\nTcp6OutSegs 100\nTcp6InErrors 100\n";
    EXPECT_THAT(read_udp().values, ElementsAre(11, 22, 33, 44));
    EXPECT_THAT(read_udp().values, ElementsAre(11, 22, 33, 44)) << "added once, to what the other file has";
    proc.files[kSnmp] = lines_of("Udp", "-1 20");
    EXPECT_THAT(read_udp().values, ElementsAre(0, 22, 36, 48)) << "what isn't read again is added to";
}

TEST_F(KernelStatistics, SysctlsAreReadForEveryLineAndFromWhereTheHostSays) {
    auto* hop_limit_path = loaded().symbol<char>("proc_ipv6_hoplimit");
    EXPECT_STREQ(loaded().symbol<char>("proc_ipv6_forwarding"), kForwarding);
    EXPECT_STREQ(hop_limit_path, kHopLimit);
    const auto call = [](const char* name, unsigned long value) {
        auto* get = reinterpret_cast<int (*)(unsigned long*)>(loaded().library.symbol(name));
        const int result = get(&value);
        return std::pair(result, value);
    };
    proc.files[kForwarding] = "10\n";
    proc.files[kHopLimit] = "1234\n";
    proc.files[kSnmp6] = "a\nb\nc";
    EXPECT_THAT(first<2>(read_ip6()), ElementsAre(1, 123)) << "one digit and three digits";
    EXPECT_EQ(proc.opened[kForwarding], 3);
    EXPECT_EQ(proc.opened[kHopLimit], 3);

    proc.files.erase(kForwarding);
    proc.files[kHopLimit] = "none\n";
    EXPECT_EQ(call("ip6_snmp_forwarding_get", 7), std::pair(-1, 7ul));
    EXPECT_EQ(call("ip6_snmp_hop_limit_get", 7), std::pair(0, 7ul));
    EXPECT_THAT(first<2>(read_ip6()), ElementsAre(1, 123));

    proc.files[kHopLimit] = "64\n";
    proc.files[kSnmp6] = "";
    EXPECT_EQ(read_ip6().values[1], 123u) << "without lines nothing is refreshed";

    const std::string elsewhere = "/tmp/" + std::string(250, 'x');  // as long as the path can be
    proc.files[elsewhere] = "8";
    std::strcpy(hop_limit_path, elsewhere.c_str());
    EXPECT_EQ(call("ip6_snmp_hop_limit_get", 7), std::pair(0, 8ul));
    std::strcpy(hop_limit_path, kHopLimit);
    EXPECT_EQ(call("ip6_snmp_hop_limit_get", 7), std::pair(0, 64ul));
}

// --- the module ------------------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, IcmpIsRegisteredEvenWhereIpIsRefused) {
    auto& host = services::services();
    host.may_register = [](const services::Registration& registration) { return registration.descr != "ip"; };
    host.context.debugging = true;
    reinterpret_cast<void (*)()>(loaded().library.symbol("ip_snmp_init"))();
    host.may_register = nullptr;
    const auto registrations = std::exchange(host.registrations, {});
    ASSERT_EQ(registrations.size(), 1u);
    EXPECT_EQ(registrations[0].descr, "icmp");
    ASSERT_EQ(logged.size(), 4u);
    EXPECT_THAT(logged[0].text, ::testing::StartsWith("ip_snmp_init(): user/ip_snmp, "));
    EXPECT_EQ(logged[2].text, "ip registration failed\n");
}

}  // namespace tests
