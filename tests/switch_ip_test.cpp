// IP addresses, neighbours and router advertisements of the simulated switch, through the library.
#include "support/simulated_switch.h"

#include <set>
#include <tuple>
#include <utility>

namespace sw {
namespace {

constexpr oid kVlan1 = 1025, kVlan10 = 1034, kVlan30 = 1054;  // the last one is in the VRF red
constexpr int kDynamic = 3, kStatic = 4;

Index ipv4(oid a, oid b, oid c, oid d) { return {1, 4, a, b, c, d}; }
Index ipv6(oid subnet, oid host) { return {2, 16, 0x20, 1, 0xd, 0xb8, 0, 0, 0, subnet, 0, 0, 0, 0, 0, 0, 0, host}; }
Index prefix(const Index& network, oid bits) { return join({network, {bits}}); }
Index connected(const Index& network, oid bits) {
    const Index here = network[0] == 1 ? ipv4(0, 0, 0, 0) : join({{2, 16}, Index(16)});
    return join({prefix(network, bits), {2, 0, 0}, here});
}
Index neighbour(oid ifindex, const Index& address) { return join({{ifindex}, address}); }

const std::string kStationMac{'\x00', '\x1f', '\x2e', '\x03', '\x04', '\x05'};

class Ip : public OnSwitch {
protected:
    explicit Ip(const Size& size = {}) : OnSwitch(size) {}
    int address(const Index& row, oid ifindex, int status) {
        return set_row(row, {{"ipAddressIfIndex", ifindex}, {"ipAddressRowStatus", status}});
    }
};

TEST_F(Ip, AddressBringsAndTakesItsPrefixAndRoute) {
    const std::pair<Index, Index> networks[] = {{ipv4(10, 0, 40, 0), ipv4(10, 0, 40, 1)}, {ipv6(40, 0), ipv6(40, 1)}};
    for (const auto& [network, first] : networks) {
        const oid bits = network[0] == 1 ? 24 : 64;
        const Index row = join({{kVlan10}, prefix(network, bits)}), route = connected(network, bits);
        now_ += seconds(10);
        EXPECT_EQ(address(first, kVlan10, createAndGo), 0);
        expect_row(first, {{"ipAddressIfIndex", kVlan10}, {"ipAddressStatus", 1}});
        EXPECT_EQ(get("ipAddressPrefixOnLinkFlag", row), 1);
        expect_row(route, {{"inetCidrRouteIfIndex", kVlan10}, {"inetCidrRouteProto", 2}, {"inetCidrRouteAge", 0}});
        // The last address of a network takes it.
        Index second = first;
        second.back() = 9;
        EXPECT_EQ(address(second, kVlan10, createAndGo), 0);
        EXPECT_EQ(address(first, kVlan10, destroy), 0);
        EXPECT_EQ(get("inetCidrRouteProto", route), 2);
        EXPECT_EQ(address(second, kVlan10, destroy), 0);
        for (const Index& gone : {first, second}) EXPECT_EQ(get("ipAddressIfIndex", gone), kNone);
        EXPECT_EQ(get("ipAddressPrefixOnLinkFlag", row), kNone);
        EXPECT_EQ(get("inetCidrRouteProto", route), kNone);
    }
    // From a port's row the line has no interface; the switch knows where the address is.
    EXPECT_EQ(address(ipv6(40, 1), kVlan10, createAndGo), 0);
    EXPECT_EQ(address(ipv6(40, 1), 5121, destroy), 0);
    EXPECT_EQ(get("ipAddressIfIndex", ipv6(40, 1)), kNone);
}

TEST_F(Ip, AddressThatFitsNoInterfaceIsRefused) {
    expect_refused(address(ipv4(10, 0, 10, 1), kVlan10, createAndGo), "there is such an address");
    expect_refused(address(ipv4(10, 0, 10, 9), kVlan1, createAndGo), "another interface is in that network");
    expect_refused(address(ipv6(10, 9), kVlan1, createAndGo), "another interface is in that network");
    expect_refused(address(ipv4(224, 0, 0, 1), kVlan10, createAndGo), "not one of a host");
    expect_refused(address(ipv4(10, 0, 40, 1), 5121, createAndGo), "no such IP interface");
    expect_refused(address(ipv4(10, 0, 40, 1), 1035, createAndGo), "no such IP interface");
    expect_refused(address(ipv4(10, 0, 10, 1), kVlan1, destroy), "does not have that address");
    expect_refused(address(ipv6(40, 1), kVlan10, destroy), "does not have that address");
    expect_refused(address(ipv6(40, 1), 5121, destroy), "no such address");
}

TEST_F(Ip, InterfaceTakesAllThatItHas) {
    EXPECT_EQ(set({{"ifAdminStatus", {kVlan10}, 2}}), 0);
    EXPECT_EQ(get("ipAddressStatus", ipv4(10, 0, 10, 1)), 4);
    EXPECT_EQ(get("ipv4InterfaceEnableStatus", {kVlan10}), 2);
    EXPECT_EQ(get("ipNetToPhysicalType", neighbour(kVlan10, ipv4(10, 0, 10, 2))), kNone);
    EXPECT_EQ(set({{"ifAdminStatus", {kVlan10}, 1}}), 0);
    EXPECT_EQ(get("ipNetToPhysicalType", neighbour(kVlan10, ipv4(10, 0, 10, 2))), kDynamic);
    remove_row("nVlanInterfaceRowStatus", {10});
    expect_rows(1, {"ipv4InterfaceIfIndex", "ipv6RouterAdvertIfIndex"});
    expect_rows(2, {"ipAddressIfIndex", "ipAddressPrefixOrigin", "ipv6InterfaceForwarding"});
    expect_rows(5, {"ipNetToPhysicalType"});
    EXPECT_EQ(get("inetCidrRouteProto", connected(ipv4(10, 0, 10, 0), 24)), kNone);
    // A new one has IPv6 switched off.
    make_row("nVlanInterfaceRowStatus", {10});
    EXPECT_EQ(get("ipv6InterfaceEnableStatus", {kVlan10}), 2);
    expect({{"ipv6InterfaceEnableStatus", {kVlan10}, 1}});
}

TEST_F(Ip, VrfsHaveRowsOfTheirOwn) {
    const auto rows_of = [this](const char* vrf) {
        services::services().context.vrf = vrf;
        return std::tuple(rows("ipAddressRowStatus"), rows("ipAddressPrefixOrigin").size(),
                          rows("ipNetToPhysicalState").size(), rows("ipv4InterfaceIfIndex"));
    };
    EXPECT_EQ(rows_of("red"), std::tuple(std::vector<Index>({ipv4(10, 0, 110, 1), ipv6(30, 1)}), 2u, 5u,
                                         std::vector<Index>({{kVlan30}})));
    EXPECT_EQ(std::get<0>(rows_of("")).size(), 4u);
    EXPECT_EQ(std::get<0>(rows_of("blue")).size(), 0u);
    // What is written goes by the interface, whatever the request's VRF: the network is another one in each.
    EXPECT_EQ(address(ipv4(10, 0, 10, 9), kVlan30, createAndGo), 0);
    EXPECT_EQ(get("ipAddressIfIndex", ipv4(10, 0, 10, 9)), kNone);
    services::services().context.vrf = "red";
    EXPECT_EQ(get("ipAddressIfIndex", ipv4(10, 0, 10, 9)), kVlan30);
    EXPECT_EQ(get("inetCidrRouteIfIndex", connected(ipv4(10, 0, 10, 0), 24)), kVlan30);
    EXPECT_EQ(get("ipNetToPhysicalType", neighbour(kVlan30, ipv4(10, 0, 110, 3))), kDynamic);
}

// --- neighbours ------------------------------------------------------------------------------------------------------

class Neighbours : public Ip {
protected:
    using Ip::Ip;
    int physical_address(const Index& row, const std::string& mac = kStationMac) {
        return set({{"ipNetToPhysicalPhysAddress", row, mac}});
    }
    int status(const Index& row, int type, int value) {
        return set_row(row, {{"ipNetToPhysicalType", type}, {"ipNetToPhysicalRowStatus", value}});
    }
    Fact type(const Index& row) { return get("ipNetToPhysicalType", row); }
};

TEST_F(Neighbours, StaticOnesComeByTheirPhysicalAddressAlone) {
    const Index row = neighbour(kVlan10, ipv4(10, 0, 10, 77)), learned = neighbour(kVlan10, ipv4(10, 0, 10, 2));
    // The type that was written last is the library's, from whatever test.
    EXPECT_EQ(set_row(row, {{"ipNetToPhysicalType", kStatic},
                            {"ipNetToPhysicalPhysAddress", kStationMac},
                            {"ipNetToPhysicalRowStatus", createAndGo}}),
              0);
    expect_row(row, {{"ipNetToPhysicalPhysAddress", kStationMac}, {"ipNetToPhysicalState", 1}});
    EXPECT_EQ(type(row), kStatic);
    expect({{"ipNetToPhysicalPhysAddress", row, "\x02\x10\x20\x30\x40\x50"},
            {"ipNetToPhysicalPhysAddress", learned, kStationMac}});
    EXPECT_EQ(type(learned), kStatic);
    for (const Index& gone : {row, learned}) {
        EXPECT_EQ(status(gone, kStatic, destroy), 0);
        EXPECT_EQ(type(gone), kNone);
    }
    expect_refused(status(row, kStatic, destroy), "no such static neighbour");
    expect_refused(physical_address(neighbour(kVlan10, ipv4(10, 0, 11, 77))), "not in that network");
    expect_refused(physical_address(neighbour(kVlan10, ipv4(10, 0, 10, 1))), "the switch's own");
    expect_refused(physical_address(row, std::string(6, '\xff')), "not one of a station");
}

TEST_F(Neighbours, LearnedOnesAreClearedAndLearnedAgain) {
    const Index row = neighbour(kVlan10, ipv4(10, 0, 10, 2)), fixed = neighbour(kVlan1, ipv4(192, 0, 2, 123));
    EXPECT_EQ(type(row), kDynamic);
    std::set<std::int64_t> states;
    for (; now_ < seconds(300); now_ += seconds(30)) states.insert(get("ipNetToPhysicalState", row).number());
    EXPECT_EQ(states, (std::set<std::int64_t>{1, 2}));
    EXPECT_EQ(status(row, kDynamic, destroy), 0);
    EXPECT_EQ(type(row), kNone);
    expect_refused(status(row, kDynamic, destroy), "no such learned neighbour");
    expect_refused(status(fixed, kDynamic, destroy), "no such learned neighbour");
    now_ += seconds(31);
    EXPECT_EQ(type(row), kDynamic);
    // They have the MAC addresses that the forwarding database has.
    const std::string mac =
        std::get<std::string>(get("ipNetToPhysicalPhysAddress", neighbour(kVlan10, ipv4(10, 0, 10, 105))).is);
    EXPECT_EQ(get("dot1qTpFdbPort", join({{10}, Index(mac.begin(), mac.end())})), 5);
}

TEST_F(Neighbours, Ipv6OnesAreOnlyRemoved) {
    const Index row = neighbour(kVlan10, ipv6(10, 77)), fixed = neighbour(kVlan1, ipv6(1, 123));
    EXPECT_EQ(set({{"ipNetToPhysicalType", row, kStatic}, {"ipAddressIfIndex", ipv6(10, 1), kVlan10}}), 0);
    expect_refused(physical_address(row), "'2001:db8:0:a::4d' does not fit");
    EXPECT_EQ(set({{"ipNetToPhysicalRowStatus", row, createAndGo}}), 0);
    EXPECT_EQ(type(row), kNone);
    EXPECT_EQ(type(fixed), kStatic);
    EXPECT_EQ(status(fixed, kStatic, destroy), 0);
    EXPECT_EQ(type(fixed), kNone);
}

struct ManyNeighbours : Neighbours {
    ManyNeighbours() : Neighbours({.neighbours = 3000}) {}
};

TEST_F(ManyNeighbours, AreInANetworkThatHasRoomForThem) {
    expect_rows(3000, {"ipNetToPhysicalRowStatus"});
    EXPECT_EQ(get("inetCidrRouteIfIndex", connected(ipv4(100, 64, 0, 0), 10)), kVlan1);
}

// --- router advertisements -------------------------------------------------------------------------------------------

class Adverts : public Ip {
protected:
    Adverts() { set({{"ipv6RouterAdvertRowStatus", {kVlan30}, destroy}}); }  // what other tests left waiting
};

TEST_F(Adverts, OfAnInterfaceAreSet) {
    expect({
        {"ipv6RouterAdvertSendAdverts", {kVlan1}, 1},
        {"ipv6RouterAdvertMaxInterval", {kVlan1}, 900},
        {"ipv6RouterAdvertMinInterval", {kVlan1}, 675},
        {"ipv6RouterAdvertMinInterval", {kVlan1}, 676, "three quarters"},
        {"ipv6RouterAdvertManagedFlag", {kVlan1}, {1, 2}},
        {"ipv6RouterAdvertOtherConfigFlag", {kVlan1}, 1},
        {"ipv6RouterAdvertReachableTime", {kVlan1}, 3600000},
        {"ipv6RouterAdvertRetransmitTime", {kVlan1}, 1000},
        {"ipv6RouterAdvertRetransmitTime", {kVlan1}, 2147483648, "does not fit"},
        {"ipv6RouterAdvertCurHopLimit", {kVlan1}, 255},
        {"ipv6RouterAdvertDefaultLifetime", {kVlan1}, 9000},
        {"ipv6RouterAdvertDefaultLifetime", {kVlan1}, 9001, "does not fit"},
        {"ipv6InterfaceEnableStatus", {kVlan1}, {2, 1}},
        {"ipv6RouterAdvertMaxInterval", {kVlan1}, 30},  // moves a minimum that it leaves no room for
    });
    EXPECT_EQ(get("ipv6RouterAdvertMinInterval", {kVlan1}), 10);
    // The line that stops them is also the one that removes them.
    EXPECT_EQ(set({{"ipv6RouterAdvertSendAdverts", {kVlan1}, 2}}), 0);
    expect_rows(0, {"ipv6RouterAdvertRowStatus"});
}

TEST_F(Adverts, BeginWithOneValueAndTakeTheOthersThen) {
    EXPECT_EQ(set_row({kVlan10}, {{"ipv6RouterAdvertMaxInterval", 100},
                                  {"ipv6RouterAdvertMinInterval", 50},
                                  {"ipv6RouterAdvertCurHopLimit", 12},
                                  {"ipv6RouterAdvertRowStatus", createAndGo}}),
              0);
    expect_row({kVlan10}, {{"ipv6RouterAdvertMaxInterval", 100}, {"ipv6RouterAdvertMinInterval", 50}});
    EXPECT_EQ(get("ipv6RouterAdvertCurHopLimit", {kVlan10}), 64);
    make_row("ipv6RouterAdvertRowStatus", {kVlan10});
    EXPECT_EQ(get("ipv6RouterAdvertCurHopLimit", {kVlan10}), 12);
    expect({{"ipv6RouterAdvertSendAdverts", {kVlan10}, 1}});
    remove_row("ipv6RouterAdvertRowStatus", {kVlan10});
}

}  // namespace
}  // namespace sw
