#include "support/recording_host.h"

namespace tests {
namespace {

const Oid kPolicy{2, 0, 0};

Oid operator+(Oid a, const Oid& b) { return join(std::move(a), b); }

// 10.0.0.0/8 through 10.1.1.1, and 2001:db8::/32 through fe80::1.
const Oid kRoute = Oid{1, 4, 10, 0, 0, 0, 8} + kPolicy + Oid{1, 4, 10, 1, 1, 1};
const Oid kRoute6 = Oid{2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32} + kPolicy +
                    Oid{2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

}  // namespace

class Routes : public RecordingHost {
protected:
    Routes() {
        // What earlier tests left pending goes with a row status of their rows.
        for (const Oid& route : {kRoute, kRoute6}) set("inetCidrRouteStatus", route, Integer, integer(destroy));
        forget();
    }
    std::vector<std::string> commands_of_get(const Oid& index) {
        forget();
        get("inetCidrRouteAge", index);
        return commands();
    }
    Assignment ifindex(const Oid& route, int value) { return {"inetCidrRouteIfIndex", route, Integer, integer(value)}; }
    Assignment metric(const Oid& route, int value) { return {"inetCidrRouteMetric1", route, Integer, integer(value)}; }
    Assignment status(const Oid& route, int value) { return {"inetCidrRouteStatus", route, Integer, integer(value)}; }
};

TEST_F(Routes, CommandsNameTheVrfForIpv4Only) {
    EXPECT_THAT(commands_of_get(Oid(kRoute6.begin(), kRoute6.begin() + 19)),
                ElementsAre("show inetcidr6-table  2001:db8::/32 2 ::"));
    services::services().context.vrf = "red";
    EXPECT_THAT(commands_of_get(kRoute), ElementsAre("show inetcidr-table vrf red 1  10.0.0.0/8 1 10.1.1.1"));
    EXPECT_THAT(commands_of_get(kRoute6), ElementsAre("show inetcidr6-table  2001:db8::/32 2 fe80::1"));
    services::services().context.vrf = std::string(50, 'v');
    EXPECT_THAT(commands_of_get({}), ElementsAre("show inetcidr-table vrf " + std::string(32, 'v') + " 0   0 "));
}

TEST_F(Routes, AddressThatIsNoTextAnswersNothingButIsWritable) {
    const Oid odd = Oid{3, 4, 10, 0, 0, 0, 8} + kPolicy + Oid{1, 4, 10, 1, 1, 1};
    const ReadResult result = get("inetCidrRouteMetric1", odd);
    EXPECT_EQ(result.value, std::nullopt);
    EXPECT_NE(result.writer, kUntouched);
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_EQ(write(action, "inetCidrRouteStatus", odd, Integer, integer(createAndGo)), genErr);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(Routes, NextRowComesInARecordOfItsOwn) {
    // Both types; the destination as IPv4 and IPv6, with its length; the next hop in the same way.
    const auto record_of = [](int type, const Bytes& ipv4, int length, const Bytes& next_ipv4) {
        const Bytes ipv6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
        const Bytes next_ipv6{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
        return join(join(join(integer(type), integer(type)), join(ipv4, ipv6)),
                    join(integer(length), join(next_ipv4, next_ipv6)));
    };
    answer("inetCidrRouteTable", integer(1), record_of(2, Bytes(4), 32, Bytes(4)));
    EXPECT_EQ(next("inetCidrRouteAge", kRoute).name, oid_of("inetCidrRouteAge", kRoute6));
    EXPECT_EQ(shown[0].key, Bytes(52));  // never filled from the request
    // IPv4 fields count for an IPv4 row, whatever the others hold; the policy is the request's.
    answer("inetCidrRouteTable", integer(1), record_of(1, {10, 0, 0, 0}, 8, {10, 1, 1, 1}));
    Oid with_policy = kRoute;
    with_policy[9] = 7;
    EXPECT_EQ(next("inetCidrRouteAge", with_policy).name, oid_of("inetCidrRouteAge", with_policy));
}

TEST_F(Routes, AreCreatedAndDestroyedByTheirStatus) {
    EXPECT_EQ(set({metric(kRoute, 7), status(kRoute, createAndGo)}), noError);
    EXPECT_EQ(set({status(kRoute, createAndGo)}), noError);  // the metric was used up
    EXPECT_EQ(set({metric(kRoute, 7), status(kRoute, destroy)}), noError);
    EXPECT_EQ(set({status(kRoute, createAndGo)}), noError);  // and goes with a destroy
    EXPECT_THAT(lines(), ElementsAre("5 ip route 10.0.0.0/8 10.1.1.1 7", "5 ip route 10.0.0.0/8 10.1.1.1 ",
                                     "5 no ip route 10.0.0.0/8 10.1.1.1", "5 ip route 10.0.0.0/8 10.1.1.1 "));
    forget();
    for (const int value : {active, notInService, notReady, createAndWait})
        EXPECT_EQ(set({status(kRoute, value)}), noError);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(Routes, Ipv6RoutesTakeTheInterfaceThatWaitsForThem) {
    EXPECT_EQ(set({ifindex(kRoute6, 1034), metric(kRoute6, 3), status(kRoute6, createAndGo)}), noError);
    EXPECT_EQ(set({ifindex(kRoute6, 898), status(kRoute6, destroy)}), noError);
    EXPECT_EQ(set({status(kRoute6, destroy)}), noError);
    EXPECT_EQ(set({ifindex(kRoute, 1034), status(kRoute, createAndGo)}), noError);  // IPv4 lines have no interface
    EXPECT_THAT(lines(), ElementsAre("5 ipv6 route 2001:db8::/32  vlan 10 fe80::1 3",
                                     "5 no ipv6 route 2001:db8::/32  tunnel 2 fe80::1",
                                     "5 no ipv6 route 2001:db8::/32 fe80::1", "5 ip route 10.0.0.0/8 10.1.1.1 "));
    const struct {
        int ifindex;
        const char* part;
    } ends[] = {{896, nullptr},     {897, " tunnel 1 "},   {1023, " tunnel 127 "}, {1024, nullptr},
                {1025, " vlan 1 "}, {5118, " vlan 4094 "}, {5119, nullptr},        {-1, nullptr}};
    for (const auto& [value, part] : ends) {
        SCOPED_TRACE(value);
        forget();
        EXPECT_EQ(set({ifindex(kRoute6, value), status(kRoute6, createAndGo)}), part ? noError : genErr);
        EXPECT_EQ(lines(), part ? Lines{std::string("5 ipv6 route 2001:db8::/32 ") + part + "fe80::1 "} : Lines{});
    }
}

TEST_F(Routes, VrfIsEnteredFirst) {
    services::services().context.vrf = "red";
    EXPECT_EQ(set({status(kRoute, createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vrf context red", "-1 ip route 10.0.0.0/8 10.1.1.1 "));
    forget();
    // It goes out before the interface is found to be none.
    EXPECT_EQ(set({ifindex(kRoute6, 1024), status(kRoute6, createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vrf context red"));
    forget();
    refused_lines = {"vrf context red"};
    EXPECT_EQ(set({status(kRoute, createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vrf context red"));
}

TEST_F(Routes, MetricOfARowThatIsThereIsSentAtOnce) {
    answer("inetCidrRouteTable", integer(1));
    EXPECT_EQ(set({metric(kRoute, 9)}), noError);
    EXPECT_EQ(set({ifindex(kRoute6, 1034), metric(kRoute6, 4)}), noError);
    EXPECT_THAT(lines(),
                ElementsAre("5 ip route 10.0.0.0/8 10.1.1.1 9", "5 ipv6 route 2001:db8::/32  vlan 10 fe80::1 4"));
    forget();
    // The metric is used up; the interface still waits.
    EXPECT_EQ(set({status(kRoute, createAndGo)}), noError);
    EXPECT_EQ(lines().back(), "5 ip route 10.0.0.0/8 10.1.1.1 ");
    // What the backend refuses stays pending.
    refused_lines = {"ip route 10.0.0.0/8 10.1.1.1 9"};
    EXPECT_EQ(set({metric(kRoute, 9)}), genErr);
    forget();
    EXPECT_EQ(set({status(kRoute, createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 ip route 10.0.0.0/8 10.1.1.1 9"));
}

TEST_F(Routes, ColumnsAreCheckedInTheirOrder) {
    expect_checks({
        {"inetCidrRouteIfIndex", kRoute, Integer, any_number()},
        {"inetCidrRouteType", kRoute, Integer, between(4, 4)},
        {"inetCidrRouteNextHopAS", kRoute, Unsigned32, any_number()},
        {"inetCidrRouteMetric1", kRoute, Integer, any_number()},
        {"inetCidrRouteMetric2", kRoute, Integer, any_number()},
        {"inetCidrRouteMetric3", kRoute, Integer, any_number()},
        {"inetCidrRouteMetric4", kRoute, Integer, any_number()},
        {"inetCidrRouteMetric5", kRoute, Integer, any_number()},
        Writable("inetCidrRouteStatus", kRoute, Integer, between(active, destroy)).before([this] {
            set({status(kRoute, destroy)});  // which takes what the others left pending
        }),
    });
    EXPECT_EQ(get("ipForwardMask", {1, 2, 3}).writer, kUntouched);
}

}  // namespace tests
