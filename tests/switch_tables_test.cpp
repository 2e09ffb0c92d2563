// The simulated switch through the library: its tables by object name, and what SETs change in them.
#include "support/simulated_switch.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <tuple>

namespace sw {
namespace {

using std::chrono::seconds;

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
    const std::tuple<const char*, std::size_t> counts[] = {{"ifDescr", 31},
                                                           {"ifName", 31},
                                                           {"swPortSpeed", 26},
                                                           {"nVlanInterfaceName", 3},
                                                           {"dot1qVlanFdbId", 4},
                                                           {"dot1qVlanStaticName", 4},
                                                           {"dot1qPvid", 26},
                                                           {"inetCidrRouteIfIndex", 8},
                                                           {"mgmdMldSnpState", 3},
                                                           {"mgmdIgmpSnpStatisticColumn4", 34},
                                                           {"mgmdIgmpSnpFilterLimit", 1},
                                                           {"mgmdMldSnpGroupStatus", 6}};
    for (const auto& [object, count] : counts) EXPECT_EQ(rows(object).size(), count) << object;
    const std::tuple<const char*, Index, Fact> facts[] = {
        {"ifNumber", {0}, 31},
        {"ifTableLastChange", {0}, 0},
        {"swPortTableNumber", {0}, 26},
        {"dot1qNumVlans", {0}, 4},
        {"inetCidrRouteNumber", {0}, 8},
        {"ifDescr", port(1), "port1 10/100/1000BASE-T"},
        {"ifSpeed", port(25), 4294967295},
        {"ifType", {1034}, 136},
        {"ifOperStatus", port(4), 2},  // no cable
        {"nVlanInterfaceIfIndex", {10}, 1034},
        {"dot1qVlanStaticName", {10}, "office"},
        {"dot1qVlanCurrentEgressPorts", {0, 30}, ports({17, 18, 19, 20, 25, 26})},
        {"mgmdIgmpSnpAccessGroup", port_of_vlan10(6, 1), "office-channels"},
        {"mgmdMldSnpMrouterLearned", {1034}, ports({25})},
        // A clear key is the first row of a GETNEXT, and none of a GET.
        {"ifDescr", {}, kNone},
        {"ifDescr", {0}, kNone},
        {"ifAlias", {0}, kNone},
        {"swPortIndex", {0}, kNone},
        {"nVlanInterfaceVid", {0}, kNone},
        {"nVlanInterfaceVid", {4097}, kNone},
        {"dot1qVlanFdbId", {1, 10}, kNone},
        {"inetCidrRouteIfIndex", {}, kNone}};
    for (const auto& [object, index, fact] : facts) EXPECT_EQ(get(object, index), fact) << object;
    EXPECT_EQ(switch_.interface_name(5146), "port26");
    EXPECT_EQ(switch_.interface_name(1034), "vlan10");
    EXPECT_FALSE(switch_.interface_name(1035));
    EXPECT_TRUE(log_.empty()) << log_.front();
}

class LargeSwitch : public OnSwitch {
protected:
    LargeSwitch() : OnSwitch({.ports = 90, .vlans = 4094, .routes = 3000, .groups = 3000}) {}
};

TEST_F(LargeSwitch, HasTheRowsThatWereAskedFor) {
    const std::tuple<const char*, std::size_t> counts[] = {{"swPortSpeed", 90},
                                                           {"dot1qVlanStaticName", 4094},
                                                           {"inetCidrRouteIfIndex", 3000},
                                                           {"mgmdIgmpSnpGroupStatus", 3000},
                                                           {"mgmdMldSnpGroupSrcStatus", 3000},
                                                           {"mgmdMldSnpHostAddress", 3000}};
    for (const auto& [object, count] : counts) EXPECT_EQ(rows(object).size(), count) << object;
    EXPECT_TRUE(log_.empty()) << log_.front();
}

TEST(SwitchSize, IsRefusedOutOfItsRanges) {
    const Size sizes[] = {{.ports = 91}, {.vlans = 4095}, {.routes = 100'001}, {.fdb = 100'001}, {.groups = 100'001}};
    for (const Size& size : sizes) EXPECT_THROW(SimulatedSwitch({{}, {}, size}), std::invalid_argument);
}

// --- Settings --------------------------------------------------------------------------------------------------------

TEST_F(OnSwitch, KeepsWhatIsSet) {
    expect({
        {"ifAdminStatus", port(1), 2},
        {"ifAdminStatus", port(1), 1},
        {"ifLinkUpDownTrapEnable", port(1), 2},
        {"ifLinkUpDownTrapEnable", port(1), 1},
        {"ifAlias", {1034}, "uplink  to the core "},
        {"ifAlias", {1034}, ""},
        {"ifAlias", port(1), "\r", "control character"},
        {"swPortDuplex", port(1), 1},
        {"swPortDuplex", port(1), 2},
        {"swPortDuplex", port(1), 3},
        {"swPortDuplex", port(21), 2},
        {"swPortSpeed", port(1), -2},
        {"swPortSpeed", port(1), -1},
        {"swPortSpeed", port(1), 1},
        {"swPortSpeed", port(1), 2},
        {"swPortSpeed", port(1), 3},
        {"swPortSpeed", port(1), 6},
        {"swPortSpeed", port(1), 7},
        {"swPortSpeed", port(1), 9},
        {"swPortSpeed", port(1), 10},
        {"swPortSpeed", port(1), 11},
        {"swPortSpeed", port(1), 12},
        {"swPortSpeed", port(1), 8},
        {"swPortSpeed", port(21), 1},
        {"swPortSpeed", port(21), -2},
        {"swPortSpeed", port(21), 10},
        {"swPortSpeed", port(22), 6},
        {"swPortFlowControlSend", port(1), 1},
        {"swPortFlowControlReceive", port(1), 1},
        {"swPortFlowControlSend", port(21), 1},
        {"swPortFlowControlReceive", port(22), 1},
        {"swPortMedium", port(21), 1},
        {"swPortMedium", port(21), 2},
        {"swPortMedium", port(21), 4},
        {"swPortMedium", port(21), 3},
        {"swPortBreakout", port(25), 1},
        {"swPortBreakout", port(25), 2},
        {"swPortMaxRcvFrameSize", port(26), 12288},
        {"dot1qPortAcceptableFrameTypes", port(2), 2},
        {"dot1qPortAcceptableFrameTypes", port(2), 3},
        {"dot1qPortAcceptableFrameTypes", port(2), 1},
        {"dot1qPortIngressFiltering", port(2), 2},
        {"dot1qPortIngressFiltering", port(2), 1},
        {"dot1qPvid", port(14), 20},
        {"dot1qPvid", port(26), 20},
        {"dot1qPvid", port(14), 99, "there is no such VLAN"},
        {"dot1qVlanStaticName", {10}, "the office "},
    });
    EXPECT_EQ(get("ifHighSpeed", port(1)), 100);
    EXPECT_EQ(get("swPortSpeedStatus", port(1)), 2);
    EXPECT_EQ(get("swPortFlowControlStatus", port(1)), 3);
    EXPECT_EQ(get("ifOperStatus", port(21)), 2);  // set to fiber, and its cable is copper
    EXPECT_EQ(get("swPortDuplexStatus", port(21)), 0);
    // What is set for one medium leaves the other alone.
    EXPECT_EQ(get("swPortFlowControlSend", port(21)), 0);
    EXPECT_EQ(get("swPortSpeed", port(21)), 6);

    for (const int type : {1, 2}) {
        const auto object = [type](const char* name) {
            return (type == 1 ? "mgmdIgmpSnp" : "mgmdMldSnp") + std::string(name);
        };
        // Each flag, and that no other one changes with it.
        const auto flags = [&] {
            std::vector<Fact> all;
            for (const char* prefix : {"mgmdIgmpSnp", "mgmdMldSnp"})
                for (const char* column : {"State", "QuerierState", "ImmediateLeave", "HostBaseFastLeave"})
                    for (const Index& row : rows(prefix + std::string(column)))
                        all.push_back(get(prefix + std::string(column), row));
            return all;
        };
        for (const char* flag : {"State", "QuerierState", "ImmediateLeave", "HostBaseFastLeave"})
            for (const int value : {1, 2}) {
                const std::vector<Fact> before = flags();
                const Fact was = get(object(flag), {1034, static_cast<oid>(type)});
                expect({{object(flag).c_str(), {1034, static_cast<oid>(type)}, value}});
                const std::vector<Fact> after = flags();
                std::size_t changed = 0;
                for (std::size_t i = 0; i < after.size(); ++i) changed += after[i] != before[i];
                EXPECT_EQ(changed, was == Fact(value) ? 0u : 1u) << flag;
            }
        const std::string designated = object("MrouterDesignate"), forbidden = object("MrouterNotAllowed"),
                          limit = object("FilterLimit");
        expect({
            {designated.c_str(), {1034}, ports({8, 96})},
            {forbidden.c_str(), {1034}, ports({40, 47})},
            {limit.c_str(), port_of_vlan10(5, static_cast<oid>(type)), 2048},
            {limit.c_str(), {5121, 1123, static_cast<oid>(type)}, 7, "there is no such VLAN"},
        });
        EXPECT_EQ(get(object("MrouterLearned"), {1034}), ports({25}));
        expect({{forbidden.c_str(), {1034}, ports({25})}});
        EXPECT_EQ(get(object("MrouterLearned"), {1034}), ports({}));
    }
}

// --- Interfaces and VLANs --------------------------------------------------------------------------------------------

TEST_F(OnSwitch, MakesAndRemovesVlanInterfaces) {
    now_ = seconds(5);
    EXPECT_EQ(set({{"nVlanInterfaceRowStatus", {20}, 4}}), 0);
    EXPECT_EQ(set({{"ifAdminStatus", {1044}, 2}}), 0);
    EXPECT_EQ(get("ifTableLastChange"), 500);
    EXPECT_EQ(get("nVlanInterfaceName", {20}), "vlan20");
    EXPECT_EQ(get("ifCounterDiscontinuityTime", {1044}), 500);
    EXPECT_EQ(get("mgmdMldSnpState", {1044, 2}), 1);
    now_ = seconds(6);
    EXPECT_EQ(set({{"nVlanInterfaceRowStatus", {20}, 4}}), 0);  // just entered
    EXPECT_EQ(get("ifTableLastChange"), 500);
    EXPECT_EQ(set({{"nVlanInterfaceRowStatus", {20}, 6}}), 0);
    EXPECT_EQ(get("ifTableLastChange"), 600);
    EXPECT_EQ(get("nVlanInterfaceName", {20}), kNone);
    EXPECT_EQ(get("mgmdMldSnpState", {1044, 2}), kNone);
    EXPECT_EQ(get("ifNumber"), 31);
    EXPECT_TRUE(log_.empty()) << log_.front();
    EXPECT_FALSE(configure(-1, "no shutdown"));  // nothing is entered
}

TEST_F(OnSwitch, MovesCountersWhileAnInterfaceIsUp) {
    const auto octets = [&](std::uint32_t n) { return get("ifHCInOctets", port(n)).number(); };
    EXPECT_EQ(octets(1), 0);
    now_ = std::chrono::hours(100);
    const std::int64_t after = octets(1);
    EXPECT_GT(after, 0xffffffff);
    EXPECT_EQ(get("ifInOctets", port(1)), after & 0xffffffff);
    EXPECT_NE(octets(2), after);
    EXPECT_EQ(octets(4), 0);  // no cable

    // A port that goes down keeps its counts, and goes on from them when it comes back.
    expect({{"ifAdminStatus", port(1), 2}});
    EXPECT_EQ(get("ifOperStatus", port(1)), 2);
    EXPECT_EQ(get("ifLastChange", port(1)), 36'000'000);
    now_ += std::chrono::hours(1);
    EXPECT_EQ(octets(1), after);
    expect({{"ifAdminStatus", port(1), 1}});
    now_ += std::chrono::hours(100);
    EXPECT_EQ(octets(1), 2 * after);
}

TEST_F(OnSwitch, MakesVlansWithTheirPortsAndRemovesEverythingOfThem) {
    now_ = seconds(7);
    EXPECT_EQ(set({{"dot1qVlanStaticName", {100}, "the lab"},
                   {"dot1qVlanStaticEgressPorts", {100}, ports({13, 14, 17, 25})},
                   {"dot1qVlanStaticUntaggedPorts", {100}, ports({14, 17})},
                   {"dot1qVlanStaticRowStatus", {100}, 4}}),
              0);
    expect({{"dot1qPvid", port(26), 100}});
    EXPECT_TRUE(configure(5, "interface port1"));
    EXPECT_TRUE(configure(-1, "switchport access vlan 100"));
    EXPECT_EQ(get("dot1qVlanStaticName", {100}), "the lab");
    EXPECT_EQ(get("dot1qVlanCreationTime", {0, 100}), 700);
    EXPECT_EQ(get("dot1qNumVlans"), 5);
    EXPECT_EQ(get("dot1qVlanStaticEgressPorts", {100}), ports({1, 13, 14, 17, 25, 26}));
    EXPECT_EQ(get("dot1qVlanCurrentUntaggedPorts", {0, 100}), ports({1, 14, 17, 26}));
    // An access port is in one VLAN; a trunk keeps its former native one with tags.
    const auto first_octet = [](const Fact& list) { return std::get<std::string>(list.is)[0]; };
    EXPECT_EQ(first_octet(get("dot1qVlanStaticEgressPorts", {1})), '\x70');
    EXPECT_EQ(get("dot1qVlanCurrentUntaggedPorts", {0, 1}),
              ports({2, 3, 4, 13, 14, 15, 16, 17, 18, 21, 22, 23, 24, 25}));

    expect({{"dot1qVlanStaticEgressPorts", {100}, ports({1, 14, 17, 26})}});
    EXPECT_EQ(set({{"dot1qVlanStaticRowStatus", {100}, 6}}), 0);
    EXPECT_EQ(get("dot1qVlanStaticName", {100}), kNone);
    EXPECT_EQ(get("dot1qPvid", port(1)), 1);
    EXPECT_EQ(get("dot1qPvid", port(26)), 1);
    EXPECT_EQ(get("dot1qVlanNumDeletes"), 1);
    EXPECT_TRUE(configure(5, "vlan 100"));
    EXPECT_EQ(get("dot1qVlanStaticName", {100}), "VLAN0100");
    EXPECT_EQ(get("dot1qVlanStaticEgressPorts", {100}), ports({}));
    EXPECT_TRUE(log_.empty()) << log_.front();

    // What snooping knew of a VLAN goes with it, and its interface is down.
    EXPECT_EQ(set({{"dot1qVlanStaticRowStatus", {10}, 6}}), 0);
    const std::tuple<const char*, std::size_t> left[] = {
        {"mgmdMldSnpFilterLimit", 0},    {"mgmdMldSnpAccessGroup", 0}, {"mgmdMldSnpGroupStatus", 2},
        {"mgmdMldSnpGroupSrcStatus", 2}, {"mgmdMldSnpHostAddress", 2}, {"mgmdMldSnpStatisticGroupColumn4", 1}};
    for (const auto& [object, count] : left) EXPECT_EQ(rows(object).size(), count) << object;
    EXPECT_EQ(get("ifOperStatus", {1034}), 2);
}

// --- Routes ----------------------------------------------------------------------------------------------------------

const Index kLab{1, 4, 10, 20, 0, 0, 16, 2, 0, 0, 1, 4, 192, 0, 2, 9};
const Index kLab6{2, 16, 0x20, 1,  0xd,  0xb8, 0,   0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 48, 2,
                  0, 0,  2,    16, 0x20, 1,    0xd, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0,  9};

TEST_F(OnSwitch, MakesAndRemovesStaticRoutes) {
    EXPECT_EQ(set({{"inetCidrRouteStatus", kLab, 4}}), 0);
    EXPECT_EQ(get("inetCidrRouteNumber"), 9);
    EXPECT_EQ(get("inetCidrRouteIfIndex", kLab), 1025);  // the interface of the network that the next hop is in
    EXPECT_EQ(get("inetCidrRouteType", kLab), 4);
    EXPECT_EQ(get("inetCidrRouteProto", kLab), 3);
    EXPECT_EQ(get("inetCidrRouteMetric1", kLab), 1);
    now_ += seconds(90);
    EXPECT_EQ(get("inetCidrRouteAge", kLab), 90);
    expect({{"inetCidrRouteMetric1", kLab, 30}});
    EXPECT_EQ(get("inetCidrRouteAge", kLab), 90);

    const std::pair<oid, oid> interfaces[] = {{1034, 1034}, {897, 897}};
    for (const auto& [asked, answered] : interfaces) {
        EXPECT_EQ(set({{"inetCidrRouteIfIndex", kLab6, asked}, {"inetCidrRouteStatus", kLab6, 4}}), 0);
        EXPECT_EQ(get("inetCidrRouteIfIndex", kLab6), answered);
    }
    EXPECT_EQ(get("inetCidrRouteNumber"), 10);
    EXPECT_EQ(set({{"inetCidrRouteStatus", kLab, 6}}), 0);
    EXPECT_EQ(set({{"inetCidrRouteStatus", kLab6, 6}}), 0);
    EXPECT_EQ(get("inetCidrRouteIfIndex", kLab), kNone);
    EXPECT_EQ(get("inetCidrRouteIfIndex", kLab6), kNone);
    EXPECT_EQ(get("inetCidrRouteNumber"), 8);
    EXPECT_TRUE(log_.empty()) << log_.front();
    EXPECT_NE(set({{"inetCidrRouteStatus", kLab, 6}}), 0);
    EXPECT_TRUE(contains(log_.at(0), "no such static route")) << log_[0];
}

TEST_F(OnSwitch, KeepsTheRoutesOfAVrfApartButForIpv6) {
    services::services().context.vrf = "red";
    EXPECT_EQ(rows("inetCidrRouteProto").size(), 5u);
    EXPECT_EQ(set({{"inetCidrRouteStatus", kLab, 4}}), 0);
    EXPECT_EQ(get("inetCidrRouteProto", kLab), 3);
    services::services().context.vrf.reset();
    EXPECT_EQ(get("inetCidrRouteProto", kLab), kNone);
    services::services().context.vrf = "red";
    EXPECT_EQ(set({{"inetCidrRouteStatus", kLab, 6}}), 0);
    EXPECT_EQ(get("inetCidrRouteProto", kLab), kNone);
    EXPECT_TRUE(log_.empty()) << log_.front();
    // The first IPv6 route comes after the last IPv4 one, in an unknown VRF at once.
    services::services().context.vrf = "blue";
    EXPECT_EQ(rows("inetCidrRouteProto").size(), 3u);
    EXPECT_NE(set({{"inetCidrRouteStatus", kLab, 4}}), 0);
    EXPECT_TRUE(contains(log_.at(0), "no such VRF")) << log_[0];
}

// --- Snooping --------------------------------------------------------------------------------------------------------

struct Protocol {
    oid type;
    std::string prefix;
    Index group, source;
};
const Protocol kProtocols[] = {{1, "mgmdIgmpSnp", {1, 4, 239, 9, 9, 9}, {1, 4, 10, 0, 0, 7}},
                               {2,
                                "mgmdMldSnp",
                                {2, 16, 0xff, 0x0e, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9},
                                {2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}}};

TEST_F(OnSwitch, MakesAndRemovesSnoopingRowsOfPorts) {
    for (const Protocol& protocol : kProtocols) {
        SCOPED_TRACE(protocol.prefix);
        const Index group = join({{5122, 1034}, protocol.group}), source = join({group, protocol.source});
        const Index row = port_of_vlan10(2, protocol.type);
        const auto object = [&](const char* name) { return protocol.prefix + name; };
        now_ = seconds(20);
        EXPECT_EQ(set({{object("GroupStatus"), group, 4}}), 0);
        now_ = seconds(21);
        EXPECT_EQ(get(object("GroupUpTime"), group), 100);
        EXPECT_EQ(get(object("GroupExpiryTime"), group), 0);
        EXPECT_EQ(get(object("GroupSrcStatus"), source), kNone);
        EXPECT_EQ(set({{object("GroupSrcStatus"), source, 4}}), 0);
        EXPECT_EQ(set({{object("GroupStatus"), group, 6}}), 0);
        EXPECT_EQ(get(object("GroupStatus"), group), kNone);
        EXPECT_EQ(get(object("GroupSrcStatus"), source), 1);
        EXPECT_EQ(set({{object("GroupSrcStatus"), source, 6}}), 0);
        EXPECT_EQ(get(object("GroupSrcStatus"), source), kNone);

        EXPECT_EQ(set({{object("FilterLimit"), row, 2048}}), 0);
        EXPECT_EQ(get(object("FilterLimit"), row), 2048);
        EXPECT_EQ(set({{object("FilterLimit"), row, 0}}), 0);
        EXPECT_EQ(get(object("FilterLimit"), row), kNone);
        EXPECT_EQ(set({{object("AccessGroup"), row, "channels"}, {object("AccGrpStatus"), row, 4}}), 0);
        EXPECT_EQ(get(object("AccessGroup"), row), "channels");
        EXPECT_EQ(set({{object("AccessGroup"), row, "channels"}, {object("AccGrpStatus"), row, 6}}), 0);
        EXPECT_EQ(get(object("AccessGroup"), row), kNone);
        EXPECT_TRUE(log_.empty()) << log_.front();

        EXPECT_NE(set({{object("GroupStatus"), group, 6}}), 0);
        EXPECT_TRUE(contains(log_.at(0), "no such static group")) << log_[0];
        log_.clear();
    }
}

TEST_F(OnSwitch, RenewsLearnedGroups) {
    for (const Protocol& protocol : kProtocols) {
        const Index group = rows(protocol.prefix + "GroupUpTime").front();
        now_ = seconds(100);
        EXPECT_EQ(get(protocol.prefix + "GroupUpTime", group), 10000);
        EXPECT_EQ(get(protocol.prefix + "GroupExpiryTime", group), 16000);
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
    EXPECT_TRUE(log_.empty()) << log_.front();
}

}  // namespace
}  // namespace sw
