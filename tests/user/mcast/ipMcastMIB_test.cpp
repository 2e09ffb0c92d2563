#include "support/recording_host.h"

namespace tests {

class IpMcast : public RecordingHost {
protected:
    // The command of one read; empty: nothing was asked for.
    std::string command_of(const std::string& object, const Oid& index, int exact) {
        forget();
        read(object, index, exact);
        return shown.empty() ? "" : commands().front();
    }
};

// 239.1.1.1/32 from 10.0.10.5/32, and through vlan20 to no address.
const Oid kMulticastRoute{1, 4, 239, 1, 1, 1, 32, 1, 4, 10, 0, 10, 5, 32};
const Oid kNextHop{1, 4, 239, 1, 1, 1, 32, 1, 4, 10, 0, 10, 5, 32, 1044, 0, 0};

TEST_F(IpMcast, CommandsCarryTheVrf) {
    struct {
        const char* object;
        Oid index;
        int exact;
        std::string command;
    } const reads[] = {
        {"ipMcastEnabled", {0}, 1, "show debugging ip mroute global"},
        {"ipMcastRouteEntryCount", {0}, 1, "show debugging ip mroute global"},
        {"ipMcastInterfaceTtl", {1, 1034}, 1, "show debugging ip mroute interface 1034"},
        {"ipMcastInterfaceIfIndex", {}, 0, "show debugging ip mroute interface 0"},
        {"ipMcastRouteInIfIndex", {}, 0, "show debugging ip mroute uib"},
        {"ipMcastRouteProtocol", kMulticastRoute, 1, "show debugging ip mroute uib 239.1.1.1/32 10.0.10.5/32"},
        {"ipMcastRouteNextHopState", {}, 0, "show debugging ip mroute uib nexthop"},
        {"ipMcastRouteNextHopIfIndex", kNextHop, 1,
         "show debugging ip mroute uib nexthop 239.1.1.1/32 10.0.10.5/32 1044"},
    };
    for (const auto& [object, index, exact, command] : reads) {
        const std::string vrf(40, 'v');  // is not cut here
        services::services().context.vrf = vrf;
        EXPECT_EQ(command_of(object, index, exact), command + " vrf " + vrf);
        services::services().context.vrf = "";
        EXPECT_EQ(command_of(object, index, exact), command);
        services::services().context.vrf.reset();
        EXPECT_EQ(command_of(object, index, exact), command);
    }
}

TEST_F(IpMcast, ServesIpv4ByEachTablesOwnRule) {
    const auto typed = [](oid group, oid source) {
        return Oid{group, 4, 239, 1, 1, 1, 32, source, 4, 10, 0, 10, 5, 32};
    };
    const auto on_interface = [](Oid route) {
        route.insert(route.end(), {1044, 0, 0});
        return route;
    };
    struct {
        Oid index;
        bool get, next;
    } const interfaces[] = {{{}, false, true}, {{0, 7}, false, true}, {{1, 7}, true, true}, {{2, 7}, false, false}},
            routes[] = {{{}, false, true},          {typed(1, 1), true, true},   {typed(1, 0), false, true},
                        {typed(1, 2), false, true}, {typed(2, 2), false, false}, {typed(2, 1), false, false},
                        {typed(0, 1), false, true}, {typed(1, 3), false, false}};  // 3: that has no text
    for (const auto& [index, get, next] : interfaces) {
        EXPECT_EQ(!command_of("ipMcastInterfaceTtl", index, 1).empty(), get) << ::testing::PrintToString(index);
        EXPECT_EQ(!command_of("ipMcastInterfaceTtl", index, 0).empty(), next) << ::testing::PrintToString(index);
    }
    for (const auto& [index, get, next] : routes) {
        const Oid hop = index.empty() ? index : on_interface(index);
        EXPECT_EQ(!command_of("ipMcastRouteProtocol", index, 1).empty(), get) << ::testing::PrintToString(index);
        EXPECT_EQ(!command_of("ipMcastRouteProtocol", index, 0).empty(), next) << ::testing::PrintToString(index);
        EXPECT_EQ(!command_of("ipMcastRouteNextHopState", hop, 1).empty(), get) << ::testing::PrintToString(index);
        EXPECT_EQ(!command_of("ipMcastRouteNextHopState", hop, 0).empty(), next) << ::testing::PrintToString(index);
    }
    // Which keys are set: a route by its group's length, a next hop by the group's type and first word as well.
    const Oid no_length{1, 4, 239, 1, 1, 1, 0, 1, 4, 10, 0, 10, 5, 32}, no_type{0, 4, 239, 1, 1, 1, 8},
        no_word{1, 4, 0, 0, 0, 0, 8, 1, 4, 10, 0, 10, 5, 32};
    const std::string routes_first = "show debugging ip mroute uib", hops_first = routes_first + " nexthop";
    EXPECT_EQ(command_of("ipMcastRouteProtocol", no_length, 1), routes_first);
    EXPECT_EQ(command_of("ipMcastRouteProtocol", no_word, 1), routes_first + " 0.0.0.0/8 10.0.10.5/32");
    EXPECT_EQ(command_of("ipMcastRouteProtocol", no_type, 0), routes_first + " /8 /0");
    for (const Oid& index : {no_length, no_word})
        EXPECT_EQ(command_of("ipMcastRouteNextHopState", on_interface(index), 1), hops_first);
    EXPECT_EQ(command_of("ipMcastRouteNextHopState", no_type, 0), hops_first);
    for (const char* object : {"ipMcastRouteUpstreamNeighbor", "ipMcastRouteOctets"})
        EXPECT_EQ(command_of(object, kMulticastRoute, 1), "");
    EXPECT_EQ(command_of("ipMcastRouteNextHopPkts", kNextHop, 1), "");
}

TEST_F(IpMcast, KeysAreWholeRecords) {
    const auto route = [](std::uint8_t last) {
        return join(join(address_record({239, 1, 1, last}), integer(32)),
                    join(address_record({10, 0, 10, 5}), integer(32)));
    };
    const Oid next_route{1, 4, 239, 1, 1, 2, 32, 1, 4, 10, 0, 10, 5, 32};
    answer("ipMcastRouteTable", integer(1034), route(2));
    EXPECT_EQ(next("ipMcastRouteInIfIndex", kMulticastRoute).name, oid_of("ipMcastRouteInIfIndex", next_route));
    EXPECT_EQ(shown[0].key, route(1));
    answer("ipMcastRouteNextHopTable", integer(2), join(route(2), join(integer(7), address_record({10, 0, 0, 9}))));
    EXPECT_EQ(next("ipMcastRouteNextHopState", kNextHop).name,
              oid_of("ipMcastRouteNextHopState", join(next_route, {7, 1, 4, 10, 0, 0, 9})));
    EXPECT_EQ(shown[1].key, join(route(1), join(integer(1044), address_record({}))));
    answer("ipMcastInterfaceTable", integer(1), join(integer(1), integer(7)));
    EXPECT_EQ(next("ipMcastInterfaceIfIndex", {1, 6}).name, oid_of("ipMcastInterfaceIfIndex", {1, 7}));
    EXPECT_EQ(shown[2].key, join(integer(1), integer(6)));
}

TEST_F(IpMcast, IsSwitchedAsAWholeAndSetNowhereElse) {
    const Oid anything{9, 9};
    expect_checks({
        Writable("ipMcastEnabled", {0}, Integer, between(1, 2))
            .sends({{1, {"5 ip multicast-routing"}}, {2, {"5 no ip multicast-routing"}}}),
        Writable("ipMcastDeviceConfigStorageType", {0}, Integer, between(1, 5)).refused(),
        Writable("ipMcastInterfaceTtl", {1, 1034}, Unsigned32, between(1, 1))
            .order({step::type, step::length, step::column, step::index, step::value.answers(genErr)})
            .sends_nothing(),
        Writable("ipMcastInterfaceRateLimit", {1, 1034}, Unsigned32, between(0, 0).bad(-1))
            .order({step::type, step::length, step::column, step::index, step::value.answers(genErr).in({action})})
            .sends_nothing(),
        // There are five storage types; ACTION takes the one that it has.
        Writable("ipMcastInterfaceStorageType", {1, 1034}, Integer, between(1, 5))
            .sends({{5, {}}, {4, {}, genErr}, {3, {}, genErr}, {2, {}, genErr}, {1, {}, genErr}}),
        Writable("ipMcastBoundaryStatus", anything, Integer, between(active, destroy)).order(unparsed()).refused(),
        Writable("ipMcastBoundaryStorageType", anything, Integer, between(1, 5)).order(unparsed()).refused(),
        Writable("ipMcastScopeNameString", anything, OctetString, any_octets()).order(unparsed()).refused(),
        Writable("ipMcastScopeNameDefault", anything, Integer, between(1, 2)).order(unparsed()).refused(),
        Writable("ipMcastScopeNameStatus", anything, Integer, between(active, destroy)).order(unparsed()).refused(),
        Writable("ipMcastScopeNameStorageType", anything, Integer, between(1, 5)).order(unparsed()).refused(),
    });
    // A row of another IP version has a write method, an index of another length none.
    EXPECT_NE(get("ipMcastInterfaceTtl", {2, 1034}).writer, kUntouched);
    EXPECT_EQ(get("ipMcastInterfaceTtl", {1, 1034, 1}).writer, kUntouched);
}

}  // namespace tests
