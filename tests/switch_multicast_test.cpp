// The simulated switch's multicast routers, their limits and access groups, and multicast VLAN registration.
#include "support/simulated_switch.h"

#include <set>

namespace sw {
namespace {

const Index kRow1{1025}, kRow10{1034};
const Index kGroup{1, 4, 239, 9, 9, 9};

// A list of ports as it is written: what counts are the last 12 octets of 652.
std::string written(const std::string& list) { return std::string(640, '\0') + list; }

class MulticastSwitch : public OnSwitch {
protected:
    explicit MulticastSwitch(const Size& size = {}) : OnSwitch(size) {}

    // What the router knows is what snooping does, port by port taken together. Returns how many groups there are.
    std::size_t expect_agreement() {
        std::set<Index> groups, inverse, sources;
        std::map<oid, std::int64_t> counts;
        for (const Index& row : rows("mgmdIgmpSnpGroupStatus")) {
            const Index group(row.begin() + 2, row.end()), vlan{row[1]};
            counts[row[1]] += groups.insert(join({group, vlan})).second;
            inverse.insert(join({vlan, group}));
        }
        for (const Index& row : rows("mgmdIgmpSnpGroupSrcStatus"))
            sources.insert(join({{row.begin() + 2, row.begin() + 8}, {row[1]}, {row.begin() + 9, row.end()}}));
        const auto as_set = [this](const char* column) {
            const std::vector<Index> found = rows(column);
            return std::set<Index>(found.begin(), found.end());
        };
        EXPECT_EQ(as_set("mgmdRouterCacheUpTime"), groups);
        EXPECT_EQ(as_set("mgmdInverseRouterCacheAddress"), inverse);
        EXPECT_EQ(as_set("mgmdRouterSrcListExpire"), sources);
        for (const Index& row : rows("mgmdRouterInterfaceGroups"))
            EXPECT_EQ(get("mgmdRouterInterfaceGroups", row), counts[row[0]]);
        return groups.size();
    }
};

}  // namespace

TEST_F(MulticastSwitch, HasTheGroupsOfSnooping) {
    EXPECT_EQ(expect_agreement(), 3u);
    now_ = seconds(60);
    const Index row = join({kGroup, kRow10}), source{1, 4, 10, 0, 0, 7};
    const auto member = [](oid port) { return join({{5120 + port}, kRow10, kGroup}); };
    for (const oid port : {5u, 6u}) make_row("mgmdIgmpSnpGroupStatus", member(port));
    make_row("mgmdIgmpSnpGroupSrcStatus", join({member(5), source}));
    EXPECT_EQ(expect_agreement(), 4u);
    expect_row(row, {{"mgmdRouterCacheExpiryTime", 0}, {"mgmdRouterCacheSourceFilterMode", 2}});  // configured
    EXPECT_EQ(get("mgmdRouterCacheLastReporter", row), std::string(4, '\0'));
    EXPECT_EQ(get("mgmdInverseRouterCacheAddress", join({kRow10, kGroup})), "\xef\x09\x09\x09");
    EXPECT_EQ(get("mgmdRouterInterfaceJoins", {1034, 1}), 6);
    remove_row("mgmdIgmpSnpGroupStatus", member(5));
    EXPECT_EQ(expect_agreement(), 4u);  // port 6 still wants it
    remove_row("mgmdIgmpSnpGroupStatus", member(6));
    remove_row("mgmdIgmpSnpGroupSrcStatus", join({member(5), source}));
    EXPECT_EQ(expect_agreement(), 3u);
    remove_row("dot1qVlanStaticRowStatus", {10});
    EXPECT_EQ(expect_agreement(), 1u);
}

TEST_F(MulticastSwitch, RoutesOnVlanInterfacesAlone) {
    make_row("nVlanInterfaceRowStatus", {20});
    EXPECT_EQ(get("mgmdRouterInterfaceVersion", {1044, 1}), 3);
    expect({{"mgmdIgmpLimit", {1044}, 9}, {"mgmdMldLimit", {1044}, 8}});
    remove_row("nVlanInterfaceRowStatus", {20});
    EXPECT_EQ(get("mgmdRouterInterfaceVersion", {1044, 1}), kNone);
    expect_row({1044}, {{"mgmdIgmpLimit", kNone}, {"mgmdMldLimit", kNone}});
    remove_row("nVlanInterfaceRowStatus", {10});
    expect_rows(2, {"mgmdRouterInterfaceVersion"});
    expect_rows(1, {"mgmdRouterCacheUpTime", "mgmdInverseRouterCacheAddress", "mgmdRouterSrcListExpire"});
}

TEST_F(MulticastSwitch, TakesSettingsOfRouters) {
    const Index row{1034, 1};
    expect({
        {"mgmdRouterInterfaceQueryInterval", row, 31744},
        {"mgmdRouterInterfaceVersion", row, 2},
        {"mgmdRouterInterfaceQueryMaxResponseTime", row, 250},
        {"mgmdRouterInterfaceRobustness", row, 7},
        {"mgmdRouterInterfaceLastMemberQueryInterval", row, 10},
        {"mgmdRouterInterfaceVersion", row, 4, "'4' does not fit"},
        {"mgmdRouterInterfaceRobustness", {5121, 1}, 5, "not a VLAN interface"},
        {"mgmdRouterInterfaceRobustness", {1044, 1}, 5, "ends too early"},
    });
    expect_row(row, {{"mgmdRouterInterfaceStartupQueryCount", 7}, {"mgmdRouterInterfaceStartupQueryInterval", 7936}});
    EXPECT_EQ(get("mgmdRouterInterfaceVersion", {1025, 1}), 3);
}

TEST_F(MulticastSwitch, RenewsMembershipsAtEachQuery) {
    const Index group = rows("mgmdRouterCacheExpiryTime").at(0), router{1025, 1};
    now_ = seconds(100);
    expect_row(group, {{"mgmdRouterCacheUpTime", 10000}, {"mgmdRouterCacheExpiryTime", 16000}});
    EXPECT_EQ(get("mgmdRouterInterfaceQuerierExpiryTime", router), 15500);
    EXPECT_EQ(get("mgmdRouterInterfaceQuerierExpiryTime", {1034, 1}), 0);  // the switch itself
    now_ = seconds(135);
    EXPECT_EQ(get("mgmdRouterCacheExpiryTime", group), 25000);
    EXPECT_EQ(set({{"mgmdRouterInterfaceQueryInterval", router, 20}, {"mgmdRouterInterfaceRobustness", router, 3}}), 0);
    EXPECT_EQ(get("mgmdRouterCacheExpiryTime", group), 5500);  // 3 * 20 + 10 - 15 seconds
}

TEST_F(MulticastSwitch, LimitsGroupsAndAccessOnInterfaces) {
    for (const char* limit : {"mgmdIgmpLimit", "mgmdMldLimit"}) {
        expect({{limit, kRow1, {1, 2048}}, {limit, {5121}, 5, "not a VLAN interface"}});
        EXPECT_EQ(set({{limit, kRow1, 0}}), 0);
        EXPECT_EQ(get(limit, kRow1), kNone);
    }
    // MLD's status sets IGMP's access group.
    for (const std::string protocol : {"mgmdIgmp", "mgmdMld"}) {
        const std::string name = protocol + "AccessGroup", status = protocol + "AccGrpStatus";
        EXPECT_EQ(set_row(kRow1, {{name, protocol}, {status, createAndGo}}), 0);
        expect_row(kRow1, {{"mgmdIgmpAccessGroup", protocol}, {"mgmdIgmpAccGrpStatus", 1}});
        EXPECT_EQ(get("mgmdMldAccessGroup", kRow1), kNone);
        remove_row(status, kRow1);
        EXPECT_EQ(get("mgmdIgmpAccessGroup", kRow1), kNone);
    }
    expect_refused(set({{"mgmdIgmpAccGrpStatus", kRow1, 6}}), "no access group");
    ASSERT_TRUE(configure(5, "interface vlan1"));
    expect_refused(-1, "ip igmp access-group " + std::string(33, 'n'), "at most 32");
}

TEST_F(MulticastSwitch, CarriesGroupsOfMulticastVlans) {
    const Index row = join({{20}, kGroup, {4}}), more = join({{20}, kGroup, {5}});
    const std::string status = "mvrSourceVlanGroupRowStatus";
    make_row(status, row);
    expect_row(row, {{"mvrSourceVlanGroupAddress", "\xef\x09\x09\x09"}, {"mvrSourceVlanGroupCount", 4}});
    make_row(status, more);  // in its place
    expect_rows(2, {status});
    expect({{status, more, 1}});
    remove_row(status, more);
    expect_rows(1, {status});
    expect({
        {status, join({{99}, kGroup, {4}}), 4, "no such VLAN"},
        {status, {20, 1, 4, 10, 0, 0, 1, 4}, 4, "not a multicast address"},
        {status, join({{20}, kGroup, {0}}), 4, "'0' does not fit"},
        {status, row, 6, "no such group"},
    });
    remove_row("dot1qVlanStaticRowStatus", {20});
    expect_rows(0, {status, "mvrPortVlanId"});
}

TEST_F(MulticastSwitch, HasSourceAndReceiverPortsOfMulticastVlans) {
    const std::string source = ports({1, 26, 90}), receivers = ports({7});
    EXPECT_EQ(set({{"mvrSourcePortList", {30}, written(source)}, {"mvrReceivePortList", {30}, written(receivers)}}), 0);
    expect_row({30}, {{"mvrSourcePortList", source}, {"mvrReceivePortList", receivers}});
    EXPECT_EQ(get("mvrReceivePortList", {20}), ports({5, 6}));
    EXPECT_EQ(set({{"mvrSourcePortList", {30}, source}}), 0);  // too short to have ports
    EXPECT_EQ(get("mvrSourcePortList", {30}), ports({}));
    expect_refused(set({{"mvrSourcePortList", {99}, written(source)}}), "no such VLAN");
    remove_row("mvrPortRowStatus", {30});
    expect_rows(0, {"mvrPortRowStatus"});  // of every VLAN
}

struct MulticastSwitchOfMany : MulticastSwitch {
    MulticastSwitchOfMany() : MulticastSwitch({.groups = 500}) {}
};

TEST_F(MulticastSwitchOfMany, HasAllGroupsOfSnooping) { EXPECT_GT(expect_agreement(), 400u); }

}  // namespace sw
