#include "support/fake_proc.h"
#include "support/recording_host.h"

#include <array>
#include <cstring>
#include <optional>

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
    static Record<20> read_ip(int force = 1) { return read_record<20>("ip_snmp_linux_read_ip_stat", force); }
    static Record<26> read_icmp(int force = 1) { return read_record<26>("ip_snmp_linux_read_icmp_stat", force); }
    static Record<24> read_ip6(int force = 1) { return read_record<24>("ip_snmp_linux_read_ip6_stat", force); }
    static Record<34> read_icmp6(int force = 1) { return read_record<34>("ip_snmp_linux_read_icmp6_stat", force); }
    static Record<15> read_tcp(int force = 1) { return read_record<15>("ip_snmp_linux_read_tcp_stat", force); }
    static Record<4> read_udp(int force = 1) { return read_record<4>("ip_snmp_linux_read_udp_stat", force); }
};

// --- scalars ---------------------------------------------------------------------------------------------------------

TEST_F(KernelStatistics, ScalarsAnswerTheFewThatAreServed) {
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

    std::vector<std::string> answering;
    for (const services::Object& object : loaded().registry.objects()) {
        const bool in_table = object.entry.namelen > 9;
        if ((object.module != "ip" && object.module != "icmp") || in_table) continue;
        const ReadResult result = get(object.name, {0});
        if (result.value) answering.push_back(object.name);
        EXPECT_EQ(result.writer, nullptr) << object.name;
    }
    EXPECT_THAT(answering, ElementsAre("ipForwarding", "ipDefaultTTL", "ipReasmTimeout", "ipv6IpForwarding",
                                       "ipv6IpDefaultHopLimit"));
    EXPECT_EQ(agent::Engine(loaded().registry).set({{oid_of("ipForwarding", {0}), agent::Value::integer(1)}}).status,
              notWritable);
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
        std::uint32_t ipv4;
        std::uint32_t ipv6;
    } columns[] = {
        {"icmpStatsInMsgs", 101, 201},
        {"icmpStatsInErrors", 102, 202},
        {"icmpStatsOutMsgs", 114, 203},
        {"icmpStatsOutErrors", 115, 204},
    };
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

namespace {

// The message types by version, with the values that they get here: IPv4's by their places in the line.
struct MessageType {
    std::uint32_t version;
    std::uint32_t type;
    std::uint32_t in;
    const char* key = "";
    std::uint32_t out() const { return in + 13; }
};
constexpr MessageType kMessageTypes[] = {
    {1, 0, 9},
    {1, 3, 3},
    {1, 4, 6},
    {1, 5, 7},
    {1, 8, 8},
    {1, 11, 4},
    {1, 12, 5},
    {1, 13, 10},
    {1, 14, 11},
    {1, 17, 12},
    {1, 18, 13},
    {2, 1, 31, "DestUnreachs"},
    {2, 2, 32, "PktTooBigs"},
    {2, 3, 33, "TimeExcds"},
    {2, 4, 34, "ParmProblems"},
    {2, 128, 35, "Echos"},
    {2, 129, 36, "EchoReplies"},
    {2, 130, 37, "GroupMembQueries"},
    {2, 131, 38, "GroupMembResponses"},
    {2, 132, 39, "GroupMembReductions"},
    {2, 133, 40, "RouterSolicits"},
    {2, 134, 41, "RouterAdvertisements"},
    {2, 135, 42, "NeighborSolicits"},
    {2, 136, 43, "NeighborAdvertisements"},
    {2, 137, 44, "Redirects"},
};

}  // namespace

TEST_F(KernelStatistics, MessagesWalkByTypeWithinAVersion) {
    proc.files[kSnmp] = lines_of("Icmp", numbers(1, 26));
    for (const MessageType& message : kMessageTypes)
        if (message.version == 2)
            proc.files[kSnmp6] += std::string("Icmp6In") + message.key + " " + std::to_string(message.in) +
                                  "\nIcmp6Out" + message.key + " " + std::to_string(message.out()) + "\n";
    // Every type that could be asked, and the one after it.
    const auto check = [&](const Oid& index, bool listed, const MessageType* after) {
        SCOPED_TRACE(services::to_string(index));
        if (!listed) {
            EXPECT_EQ(value("icmpMsgStatsInPkts", index), std::nullopt);
        }
        const auto row = [&](std::uint32_t number) { return Row({{after->version, after->type}, number}); };
        EXPECT_EQ(row_after("icmpMsgStatsInPkts", index), after != nullptr ? row(after->in) : std::nullopt);
        EXPECT_EQ(row_after("icmpMsgStatsOutPkts", index), after != nullptr ? row(after->out()) : std::nullopt);
    };
    const MessageType* at = kMessageTypes;
    for (const std::uint32_t version : {1u, 2u})
        for (std::uint32_t type = 0; type < 260; ++type) {
            const bool listed = at != std::end(kMessageTypes) && at->version == version && at->type == type;
            if (listed) {
                EXPECT_EQ(value("icmpMsgStatsInPkts", {version, type}), at->in);
                EXPECT_EQ(value("icmpMsgStatsOutPkts", {version, type}), at->out());
                ++at;
            }
            check({version, type}, listed, at != std::end(kMessageTypes) ? at : nullptr);
        }
    constexpr std::uint32_t kNegative = 4294967295;
    const MessageType& first_ipv6 = kMessageTypes[11];
    check({}, false, &kMessageTypes[0]);
    check({0, 200}, false, &kMessageTypes[0]);
    check({1}, true, &kMessageTypes[1]);  // cut after the version: as type 0
    EXPECT_EQ(value("icmpMsgStatsInPkts", {1}), 9u);
    check({1, kNegative}, false, &first_ipv6);
    check({2}, false, &first_ipv6);
    check({2, kNegative}, false, nullptr);
    check({3, 0}, false, nullptr);
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
    const auto at = [this](std::uint32_t seconds) { proc.uptime = static_cast<long>(seconds); };
    at(4294967294);
    proc.files[kSnmp] = lines_of("Udp", "1");
    EXPECT_EQ(read_udp().values[0], 1u);
    proc.files[kSnmp] = lines_of("Udp", "2");
    at(1);
    EXPECT_EQ(read_udp(0).values[0], 1u);
    at(2);
    EXPECT_EQ(read_udp(0).values[0], 2u);
    // An uptime of 0 is as good as never read.
    at(0);
    read_udp();
    proc.files[kSnmp] = lines_of("Udp", "3");
    EXPECT_EQ(read_udp(0).values[0], 3u);
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
    auto icmp = read_icmp().values;
    EXPECT_EQ(icmp[2], 99u);
    EXPECT_EQ(icmp[3], 3u);
    EXPECT_EQ(icmp[25], 25u);
    EXPECT_EQ(value("icmpMsgStatsInPkts", {1, 3}), 99u);

    // What a short line doesn't have, and what isn't a number, stays; -1 and greater numbers are cut to 32 bits.
    proc.files[kSnmp] = "Icmp: -1 4294967297 x 7\n Icmp: 5\nicmp: 5\n";
    icmp = read_icmp().values;
    EXPECT_EQ(icmp[0], 4294967295u);
    EXPECT_EQ(icmp[1], 1u);
    EXPECT_EQ(icmp[2], 99u);
    EXPECT_EQ(icmp[3], 3u);

    proc.files[kSnmp] = lines_of("Ip", numbers(1, 25));
    const auto ip = read_ip();
    EXPECT_EQ(ip.values[18], 19u);
    EXPECT_EQ(ip.values[19], 0u) << "routing discards are not what is at their place";

    // Lines come in pieces of 1023 characters, each of which may begin with a tag.
    proc.files[kSnmp] = "Udp: 5 " + std::string(1016, ' ') + "Udp: 6 7\n" + std::string(1020, 'x') + "Udp: 8 9\n";
    EXPECT_THAT(read_udp().values, ElementsAre(6, 7, ::testing::_, ::testing::_));
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
        const std::uint16_t halves[] = {errors, resets};
        std::uint32_t word;
        std::memcpy(&word, halves, sizeof word);
        return word;
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
    auto* forwarding_path = loaded().symbol<char>("proc_ipv6_forwarding");
    auto* hop_limit_path = loaded().symbol<char>("proc_ipv6_hoplimit");
    EXPECT_STREQ(forwarding_path, kForwarding);
    EXPECT_STREQ(hop_limit_path, kHopLimit);
    const auto call = [](const char* name, unsigned long value) {
        auto* get = reinterpret_cast<int (*)(unsigned long*)>(loaded().library.symbol(name));
        const int result = get(&value);
        return std::pair(result, value);
    };
    proc.files[kForwarding] = "10\n";
    proc.files[kHopLimit] = "1234\n";
    proc.files[kSnmp6] = "a\nb\nc";
    auto values = read_ip6().values;
    EXPECT_EQ(values[0], 1u) << "one digit";
    EXPECT_EQ(values[1], 123u) << "three digits";
    EXPECT_EQ(proc.opened[kForwarding], 3);
    EXPECT_EQ(proc.opened[kHopLimit], 3);

    proc.files.erase(kForwarding);
    proc.files[kHopLimit] = "none\n";
    EXPECT_EQ(call("ip6_snmp_forwarding_get", 7), std::pair(-1, 7ul));
    EXPECT_EQ(call("ip6_snmp_hop_limit_get", 7), std::pair(0, 7ul));
    values = read_ip6().values;
    EXPECT_EQ(values[0], 1u);
    EXPECT_EQ(values[1], 123u);

    proc.files[kHopLimit] = "64\n";
    proc.files[kSnmp6] = "";
    EXPECT_EQ(read_ip6().values[1], 123u) << "without lines nothing is refreshed";

    const std::string elsewhere = "/tmp/" + std::string(250, 'x');
    ASSERT_EQ(elsewhere.size(), 255u);
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
