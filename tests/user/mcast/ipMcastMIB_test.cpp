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

TEST_F(IpMcast, VrfIsNotCutAndMayBeEmpty) {
    const Oid next_hop{1, 4, 239, 1, 1, 1, 32, 1, 4, 10, 0, 10, 5, 32, 1044, 0, 0};
    const std::string command = "show debugging ip mroute uib nexthop 239.1.1.1/32 10.0.10.5/32 1044";
    services::services().context.vrf = std::string(40, 'v');
    EXPECT_EQ(command_of("ipMcastRouteNextHopState", next_hop, 1), command + " vrf " + std::string(40, 'v'));
    services::services().context.vrf = "";
    EXPECT_EQ(command_of("ipMcastRouteNextHopState", next_hop, 1), command);
}

TEST_F(IpMcast, ServesIpv4ByEachTablesOwnRule) {
    const auto typed = [](oid group, oid source) {
        return Oid{group, 4, 239, 1, 1, 1, 32, source, 4, 10, 0, 10, 5, 32};
    };
    const auto on_interface = [](const Oid& route) { return join(route, {1044, 0, 0}); };
    const struct {
        Oid index;
        bool get, next;
    } interfaces[] = {{{}, false, true}, {{0, 7}, false, true}, {{1, 7}, true, true}, {{2, 7}, false, false}},
      routes[] = {{{}, false, true},          {typed(1, 1), true, true},   {typed(1, 0), false, true},
                  {typed(1, 2), false, true}, {typed(2, 2), false, false}, {typed(2, 1), false, false},
                  {typed(0, 1), false, true}, {typed(1, 3), false, false}};  // 3: that has no text
    const auto expect_served = [this](const char* object, const Oid& index, bool by_get, bool by_next) {
        EXPECT_EQ(!command_of(object, index, 1).empty(), by_get) << object << ::testing::PrintToString(index);
        EXPECT_EQ(!command_of(object, index, 0).empty(), by_next) << object << ::testing::PrintToString(index);
    };
    for (const auto& [index, get, next] : interfaces) expect_served("ipMcastInterfaceTtl", index, get, next);
    for (const auto& [index, get, next] : routes) {
        expect_served("ipMcastRouteProtocol", index, get, next);
        expect_served("ipMcastRouteNextHopState", index.empty() ? index : on_interface(index), get, next);
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
}

TEST_F(IpMcast, SettingsAreCheckedInTheirOrder) {
    expect_checks({
        Writable("ipMcastEnabled", {0}, Integer, between(1, 2)),
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
        Writable("ipMcastBoundaryStatus", {9, 9}, Integer, between(active, destroy)).order(unparsed()).refused(),
        Writable("ipMcastScopeNameString", {9, 9}, OctetString, any_octets()).order(unparsed()).refused(),
    });
}

}  // namespace tests
