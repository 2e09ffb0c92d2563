// The simulated switch through the library: its tables by object name, and what SETs change in them.
#include "support/simulated_switch.h"

#include <set>
#include <tuple>

namespace sw {
namespace {

Index port_of_vlan10(std::uint32_t n, std::uint32_t type) { return {5120 + n, 1034, type}; }

// --- All of it -------------------------------------------------------------------------------------------------------

// Each object that the switch serves is the one that the library has under its name and number, and has rows.
TEST_F(OnSwitch, ServesEachObjectUnderItsName) {
    std::set<std::string> names;
    for (const auto& [name, magic] : switch_.served()) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(names.insert(name).second);
        EXPECT_EQ(object(name).entry.magic, magic);
        EXPECT_FALSE(rows(name).empty());
    }
}

TEST_F(OnSwitch, ComesWithPlausibleTables) {
    expect_rows(1, {"mgmdIgmpSnpFilterLimit"});
    expect_rows(3, {"nVlanInterfaceName", "mgmdMldSnpState"});
    expect_rows(4, {"dot1qVlanFdbId", "dot1qVlanStaticName"});
    expect_rows(6, {"mgmdMldSnpGroupStatus"});
    expect_rows(8, {"inetCidrRouteIfIndex"});
    expect_rows(26, {"swPortSpeed", "dot1qPvid"});
    expect_rows(31, {"ifDescr", "ifName"});
    expect_rows(34, {"mgmdIgmpSnpStatisticColumn4"});
    expect_row({0}, {{"ifNumber", 31}, {"ifTableLastChange", 0}, {"swPortTableNumber", 26}});
    expect_row({0}, {{"dot1qNumVlans", 4}, {"inetCidrRouteNumber", 8}});
    // A clear key is the first row of a GETNEXT, and none of a GET.
    expect_row({0}, {{"ifDescr", kNone}, {"ifAlias", kNone}, {"swPortIndex", kNone}, {"nVlanInterfaceVid", kNone}});
    expect_row({}, {{"ifDescr", kNone}, {"inetCidrRouteIfIndex", kNone}});
    const std::tuple<const char*, Index, Fact> facts[] = {
        {"ifDescr", port(1), "port1 10/100/1000BASE-T"},
        {"ifSpeed", port(25), 4294967295},
        {"ifType", {1034}, 136},
        {"ifOperStatus", port(4), 2},  // no cable
        {"nVlanInterfaceIfIndex", {10}, 1034},
        {"dot1qVlanStaticName", {10}, "office"},
        {"dot1qVlanCurrentEgressPorts", {0, 30}, ports({17, 18, 19, 20, 25, 26})},
        {"mgmdIgmpSnpAccessGroup", port_of_vlan10(6, 1), "office-channels"},
        {"mgmdMldSnpMrouterLearned", {1034}, ports({25})},
        {"nVlanInterfaceVid", {4097}, kNone},
        {"dot1qVlanFdbId", {1, 10}, kNone}};
    for (const auto& [object, index, fact] : facts) EXPECT_EQ(get(object, index), fact) << object;
    EXPECT_EQ(switch_.interface_name(5146), "port26");
    EXPECT_EQ(switch_.interface_name(1034), "vlan10");
    EXPECT_FALSE(switch_.interface_name(1035));
}

struct LargeSwitch : OnSwitch {
    LargeSwitch() : OnSwitch({.ports = 90, .vlans = 4094, .routes = 3000, .groups = 3000}) {}
};

TEST_F(LargeSwitch, HasTheRowsThatWereAskedFor) {
    expect_rows(90, {"swPortSpeed"});
    expect_rows(4094, {"dot1qVlanStaticName"});
    expect_rows(3000, {"inetCidrRouteIfIndex", "mgmdIgmpSnpGroupStatus", "mgmdMldSnpGroupSrcStatus"});
    expect_rows(3000, {"mgmdMldSnpHostAddress"});
}

TEST(SwitchSize, IsRefusedOutOfItsRanges) {
    const Size sizes[] = {{.ports = 91},    {.vlans = 4095},         {.routes = 100'001},
                          {.fdb = 100'001}, {.neighbours = 100'001}, {.groups = 100'001}};
    for (const Size& size : sizes) EXPECT_THROW(SimulatedSwitch({{}, {}, size}), std::invalid_argument);
}

// --- Settings --------------------------------------------------------------------------------------------------------

TEST_F(OnSwitch, KeepsWhatIsSet) {
    expect({
        {"ifAdminStatus", port(1), {2, 1}},
        {"ifLinkUpDownTrapEnable", port(1), {2, 1}},
        {"ifAlias", {1034}, {"uplink  to the core ", ""}},
        {"ifAlias", port(1), "\r", "control character"},
        {"swPortDuplex", port(1), {1, 2, 3}},
        {"swPortDuplex", port(21), 2},
        {"swPortSpeed", port(1), {-2, -1, 1, 2, 3, 6, 7, 9, 10, 11, 12, 8}},
        {"swPortSpeed", port(21), {1, -2, 10}},
        {"swPortSpeed", port(22), 6},
        {"swPortFlowControlSend", port(1), 1},
        {"swPortFlowControlReceive", port(1), 1},
        {"swPortFlowControlSend", port(21), 1},
        {"swPortFlowControlReceive", port(22), 1},
        {"swPortMedium", port(21), {1, 2, 4, 3}},
        {"swPortBreakout", port(25), {1, 2}},
        {"swPortMaxRcvFrameSize", port(26), 12288},
        {"dot1qPortAcceptableFrameTypes", port(2), {2, 3, 1}},
        {"dot1qPortIngressFiltering", port(2), {2, 1}},
        {"dot1qPvid", port(14), 20},
        {"dot1qPvid", port(26), 20},
        {"dot1qPvid", port(14), 99, "there is no such VLAN"},
        {"dot1qVlanStaticName", {10}, "the office "},
    });
    expect_row(port(1), {{"ifHighSpeed", 100}, {"swPortSpeedStatus", 2}, {"swPortFlowControlStatus", 3}});
    // Port 21 is set to fiber, and its cable is copper; what is set for one medium leaves the other alone.
    expect_row(port(21), {{"ifOperStatus", 2}, {"swPortDuplexStatus", 0}});
    expect_row(port(21), {{"swPortFlowControlSend", 0}, {"swPortSpeed", 6}});
}

// --- Interfaces and VLANs --------------------------------------------------------------------------------------------

TEST_F(OnSwitch, MakesAndRemovesVlanInterfaces) {
    now_ = seconds(5);
    make_row("nVlanInterfaceRowStatus", {20});
    expect({{"ifAdminStatus", {1044}, 2}});
    EXPECT_EQ(get("ifTableLastChange"), 500);
    EXPECT_EQ(get("nVlanInterfaceName", {20}), "vlan20");
    EXPECT_EQ(get("ifCounterDiscontinuityTime", {1044}), 500);
    EXPECT_EQ(get("mgmdMldSnpState", {1044, 2}), 1);
    now_ = seconds(6);
    make_row("nVlanInterfaceRowStatus", {20});  // just entered
    EXPECT_EQ(get("ifTableLastChange"), 500);
    remove_row("nVlanInterfaceRowStatus", {20});
    expect_row({0}, {{"ifTableLastChange", 600}, {"ifNumber", 31}});
    EXPECT_EQ(get("mgmdMldSnpState", {1044, 2}), kNone);
    expect_refused(-1, "no shutdown", "no mode was entered");
}

TEST_F(OnSwitch, MovesCountersWhileAnInterfaceIsUp) {
    const auto octets = [&](std::uint32_t n) { return get("ifHCInOctets", port(n)).number(); };
    EXPECT_EQ(octets(1), 0);
    now_ = hours(100);
    const std::int64_t after = octets(1);
    EXPECT_GT(after, 0xffffffff);
    EXPECT_EQ(get("ifInOctets", port(1)), after & 0xffffffff);
    EXPECT_NE(octets(2), after);
    EXPECT_EQ(octets(4), 0);  // no cable

    // A port that goes down keeps its counts, and goes on from them when it comes back.
    expect({{"ifAdminStatus", port(1), 2}});
    EXPECT_EQ(get("ifOperStatus", port(1)), 2);
    EXPECT_EQ(get("ifLastChange", port(1)), 36'000'000);
    now_ += hours(1);
    EXPECT_EQ(octets(1), after);
    expect({{"ifAdminStatus", port(1), 1}});
    now_ += hours(100);
    EXPECT_EQ(octets(1), 2 * after);
}

TEST_F(OnSwitch, MakesVlansWithTheirPortsAndRemovesEverythingOfThem) {
    now_ = seconds(7);
    EXPECT_EQ(set_row({100}, {{"dot1qVlanStaticName", "the lab"},
                              {"dot1qVlanStaticEgressPorts", ports({13, 14, 17, 25})},
                              {"dot1qVlanStaticUntaggedPorts", ports({14, 17})},
                              {"dot1qVlanStaticRowStatus", createAndGo}}),
              0);
    expect({{"dot1qPvid", port(26), 100}});
    EXPECT_TRUE(configure(5, "interface port1"));
    EXPECT_TRUE(configure(-1, "switchport access vlan 100"));
    const std::string egress = ports({1, 13, 14, 17, 25, 26}), untagged = ports({1, 14, 17, 26});
    expect_row({100}, {{"dot1qVlanStaticName", "the lab"}, {"dot1qVlanStaticEgressPorts", egress}});
    expect_row({0, 100}, {{"dot1qVlanCreationTime", 700}, {"dot1qVlanCurrentUntaggedPorts", untagged}});
    EXPECT_EQ(get("dot1qNumVlans"), 5);
    // An access port is in one VLAN; a trunk keeps its former native one with tags.
    EXPECT_EQ(std::get<std::string>(get("dot1qVlanStaticEgressPorts", {1}).is)[0], '\x70');
    EXPECT_EQ(get("dot1qVlanCurrentUntaggedPorts", {0, 1}),
              ports({2, 3, 4, 13, 14, 15, 16, 17, 18, 21, 22, 23, 24, 25}));

    expect({{"dot1qVlanStaticEgressPorts", {100}, ports({1, 14, 17, 26})}});
    remove_row("dot1qVlanStaticRowStatus", {100});
    EXPECT_EQ(get("dot1qPvid", port(1)), 1);
    EXPECT_EQ(get("dot1qPvid", port(26)), 1);
    EXPECT_EQ(get("dot1qVlanNumDeletes"), 1);
    EXPECT_TRUE(configure(5, "vlan 100"));
    expect_row({100}, {{"dot1qVlanStaticName", "VLAN0100"}, {"dot1qVlanStaticEgressPorts", ports({})}});

    // What snooping knew of a VLAN goes with it, and its interface is down.
    remove_row("dot1qVlanStaticRowStatus", {10});
    expect_rows(0, {"mgmdMldSnpFilterLimit", "mgmdMldSnpAccessGroup"});
    expect_rows(1, {"mgmdMldSnpStatisticGroupColumn4"});
    expect_rows(2, {"mgmdMldSnpGroupStatus", "mgmdMldSnpGroupSrcStatus", "mgmdMldSnpHostAddress"});
    EXPECT_EQ(get("ifOperStatus", {1034}), 2);
}

// --- Routes ----------------------------------------------------------------------------------------------------------

const Index kLab{1, 4, 10, 20, 0, 0, 16, 2, 0, 0, 1, 4, 192, 0, 2, 9};
const Index kLab6{2, 16, 0x20, 1,  0xd,  0xb8, 0,   0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 48, 2,
                  0, 0,  2,    16, 0x20, 1,    0xd, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0,  9};

TEST_F(OnSwitch, MakesAndRemovesStaticRoutes) {
    make_row("inetCidrRouteStatus", kLab);
    EXPECT_EQ(get("inetCidrRouteNumber"), 9);
    // The interface of the network that the next hop is in.
    expect_row(kLab, {{"inetCidrRouteIfIndex", 1025}, {"inetCidrRouteType", 4}});
    expect_row(kLab, {{"inetCidrRouteProto", 3}, {"inetCidrRouteMetric1", 1}});
    now_ += seconds(90);
    EXPECT_EQ(get("inetCidrRouteAge", kLab), 90);
    expect({{"inetCidrRouteMetric1", kLab, 30}});
    EXPECT_EQ(get("inetCidrRouteAge", kLab), 90);

    for (const oid ifindex : {1034u, 897u}) {
        EXPECT_EQ(set({{"inetCidrRouteIfIndex", kLab6, ifindex}, {"inetCidrRouteStatus", kLab6, 4}}), 0);
        EXPECT_EQ(get("inetCidrRouteIfIndex", kLab6), ifindex);
    }
    EXPECT_EQ(get("inetCidrRouteNumber"), 10);
    for (const Index& route : {kLab, kLab6}) remove_row("inetCidrRouteStatus", route);
    EXPECT_EQ(get("inetCidrRouteNumber"), 8);
    expect_refused(set({{"inetCidrRouteStatus", kLab, 6}}), "no such static route");
}

TEST_F(OnSwitch, KeepsTheRoutesOfAVrfApartButForIpv6) {
    services::services().context.vrf = "red";
    expect_rows(5, {"inetCidrRouteProto"});
    make_row("inetCidrRouteStatus", kLab);
    services::services().context.vrf.reset();
    EXPECT_EQ(get("inetCidrRouteProto", kLab), kNone);
    services::services().context.vrf = "red";
    remove_row("inetCidrRouteStatus", kLab);
    // The first IPv6 route comes after the last IPv4 one, in an unknown VRF at once.
    services::services().context.vrf = "blue";
    expect_rows(3, {"inetCidrRouteProto"});
    expect_refused(set({{"inetCidrRouteStatus", kLab, 4}}), "no such VRF");
}

// --- Snooping --------------------------------------------------------------------------------------------------------

struct Protocol {
    oid type;
    std::string prefix;
    Index group, source;
};
const Protocol kIgmp{1, "mgmdIgmpSnp", {1, 4, 239, 9, 9, 9}, {1, 4, 10, 0, 0, 7}};
const Protocol kMld{2,
                    "mgmdMldSnp",
                    {2, 16, 0xff, 0x0e, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9},
                    {2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}};

TEST_F(OnSwitch, ChangesEachSnoopingFlagAlone) {
    std::map<std::pair<std::string, Index>, Fact> flags;
    for (const std::string prefix : {"mgmdIgmpSnp", "mgmdMldSnp"})
        for (const char* flag : {"State", "QuerierState", "ImmediateLeave", "HostBaseFastLeave"})
            for (const Index& row : rows(prefix + flag)) flags[{prefix + flag, row}] = get(prefix + flag, row);
    for (auto& [flag, value] : flags)
        for (const int changed : {1, 2}) {
            expect({{flag.first, flag.second, changed}});
            value = changed;
            for (const auto& [other, its_value] : flags) EXPECT_EQ(get(other.first, other.second), its_value);
        }
}

TEST_F(OnSwitch, KeepsSnoopingSettings) {
    for (const Protocol& protocol : {kIgmp, kMld}) {
        const auto object = [&](const char* name) { return protocol.prefix + name; };
        expect({
            {object("MrouterDesignate"), {1034}, ports({8, 96})},
            {object("MrouterNotAllowed"), {1034}, ports({40, 47})},
            {object("FilterLimit"), port_of_vlan10(5, protocol.type), 2048},
            {object("FilterLimit"), {5121, 1123, protocol.type}, 7, "there is no such VLAN"},
        });
        EXPECT_EQ(get(object("MrouterLearned"), {1034}), ports({25}));
        expect({{object("MrouterNotAllowed"), {1034}, ports({25})}});
        EXPECT_EQ(get(object("MrouterLearned"), {1034}), ports({}));
    }
}

TEST_F(OnSwitch, MakesAndRemovesSnoopingRowsOfPorts) {
    for (const Protocol& protocol : {kIgmp, kMld}) {
        SCOPED_TRACE(protocol.prefix);
        const Index group = join({{5122, 1034}, protocol.group}), source = join({group, protocol.source});
        const Index row = port_of_vlan10(2, protocol.type);
        const auto object = [&](const char* name) { return protocol.prefix + name; };
        now_ = seconds(20);
        make_row(object("GroupStatus"), group);
        now_ = seconds(21);
        expect_row(group, {{object("GroupUpTime"), 100}, {object("GroupExpiryTime"), 0}});
        EXPECT_EQ(get(object("GroupSrcStatus"), source), kNone);
        make_row(object("GroupSrcStatus"), source);
        remove_row(object("GroupStatus"), group);
        EXPECT_EQ(get(object("GroupSrcStatus"), source), 1);
        remove_row(object("GroupSrcStatus"), source);

        expect({{object("FilterLimit"), row, 2048}});
        EXPECT_EQ(set({{object("FilterLimit"), row, 0}}), 0);
        EXPECT_EQ(get(object("FilterLimit"), row), kNone);
        EXPECT_EQ(set_row(row, {{object("AccessGroup"), "channels"}, {object("AccGrpStatus"), createAndGo}}), 0);
        EXPECT_EQ(get(object("AccessGroup"), row), "channels");
        EXPECT_EQ(set_row(row, {{object("AccessGroup"), "channels"}, {object("AccGrpStatus"), destroy}}), 0);
        EXPECT_EQ(get(object("AccessGroup"), row), kNone);
        expect_refused(set({{object("GroupStatus"), group, 6}}), "no such static group");
    }
}

TEST_F(OnSwitch, RenewsLearnedGroups) {
    for (const Protocol& protocol : {kIgmp, kMld}) {
        const Index group = rows(protocol.prefix + "GroupUpTime").front();
        now_ = seconds(100);
        expect_row(group, {{protocol.prefix + "GroupUpTime", 10000}, {protocol.prefix + "GroupExpiryTime", 16000}});
        const Index on_port = port_of_vlan10(5, protocol.type);
        const std::int64_t count = get(protocol.prefix + "StatisticColumn4", on_port).number();
        now_ = seconds(135);  // a query, and an answer, later
        EXPECT_EQ(get(protocol.prefix + "GroupExpiryTime", group), 25000);
        EXPECT_GT(get(protocol.prefix + "StatisticColumn4", on_port).number(), count);
        now_ = {};
    }
}

// The library forces an address's type in the key, but not in the command's text: a walk from the index of another type
// goes on after it, and a GET finds nothing under it.
TEST_F(OnSwitch, WalksOnFromAddressesOfOtherTypes) {
    const std::string object = "mgmdIgmpSnpGroupStatus";
    const auto all = rows(object);
    Index other{all[0][0], all[0][1], 2, 16, 0xff};
    other.resize(20);
    EXPECT_EQ(get(object, other), kNone);
    EXPECT_EQ(next(object, other), all[1]);
    EXPECT_EQ(next(object, {all[0][0], all[0][1]}), all[0]);
    other[2] = 3;
    EXPECT_EQ(next(object, other), all[1]);
}

}  // namespace
}  // namespace sw
