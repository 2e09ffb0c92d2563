// The forwarding database, groups and static addresses of Q-BRIDGE-MIB.
#include "support/recording_host.h"

namespace tests {
namespace {

const Oid kStaticGroup{10, 1, 0, 0x5e, 0, 0, 0xfb, 0};  // VLAN, address, receive port
const std::string kAdd = "5 mac address-table static 01-00-5e-00-00-fb vlan 10";

}  // namespace

class QBridgeForwarding : public RecordingHost {};

TEST_F(QBridgeForwarding, RowsAreAskedForByVlanAndAddress) {
    answer("dot1qFdbTable", integer(3), integer(10));
    EXPECT_EQ(next("dot1qFdbDynamicCount").name, oid_of("dot1qFdbDynamicCount", {10}));
    get("dot1qFdbDynamicCount", {10});
    answer("dot1qTpFdbTable", integer(3), {10, 0, 0, 0, 0, 0x1f, 1, 2, 3, 255, 0, 0});
    EXPECT_EQ(next("dot1qTpFdbPort").name, oid_of("dot1qTpFdbPort", {10, 0, 31, 1, 2, 3, 255}));
    get("dot1qTpFdbStatus", {10, 0, 31, 1, 2, 3, 255});
    EXPECT_THAT(commands(), ElementsAre("show mac address-table count vlan 0", "show mac address-table count vlan 10",
                                        "show uib mac address-table address 00-00-00-00-00-00 vlan 0",
                                        "show uib mac address-table address 00-1f-01-02-03-ff vlan 10"));
    EXPECT_EQ(shown[3].request.key_size, 12);
    EXPECT_EQ(shown[3].request.result_size, 8192);
}

TEST_F(QBridgeForwarding, GroupsHaveAFirstRowOfTheirOwn) {
    next("dot1qTpGroupEgressPorts");
    next("dot1qTpGroupLearnt", {0, 1, 2, 3, 4, 5, 6});  // the VLAN alone decides
    get("dot1qTpGroupLearnt", {10, 1, 0, 0x5e, 0, 0, 0xfb});
    next("dot1qStaticMulticastStaticEgressPorts");
    get("dot1qStaticMulticastStatus", kStaticGroup);
    EXPECT_THAT(commands(), ElementsAre("show debugging mcast group_table", "show debugging mcast group_table",
                                        "show debugging mcast group_table vlan 10 mac 01-00-5E-00-00-FB",
                                        "show debugging mcast static_table",
                                        "show debugging mcast static_table vlan 10 mac 01-00-5E-00-00-FB"));
    EXPECT_EQ(shown[4].request.key_size, 16);
}

TEST_F(QBridgeForwarding, StaticPortsAreAddedBeforeOthersAreRemoved) {
    Bytes current = {0x82, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x3f};  // ports 1, 7 and what is after 90
    answers["write_dot1qStaticMulticastStaticEgressPorts"] = [&](const services::ShowRequest&) {
        return Answer{current, {}};
    };
    const auto set_ports = [&](const Bytes& ports) {
        forget();
        return set("dot1qStaticMulticastStaticEgressPorts", kStaticGroup, OctetString, ports);
    };
    EXPECT_EQ(set_ports({0x60, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x40, 0xff, 0xff}), noError);  // cut to 12 octets
    EXPECT_THAT(lines(), ElementsAre(kAdd + " interface port2", kAdd + " interface port3", kAdd + " interface port90",
                                     "5 no" + kAdd.substr(1) + " interface port1",
                                     "5 no" + kAdd.substr(1) + " interface port7"));
    EXPECT_THAT(commands().back(), "show debugging mcast static_table egressport vlan 10 mac 01-00-5e-00-00-fb");
    EXPECT_EQ(shown.back().request.magic, 3);
    EXPECT_EQ(shown.back().request.result_size, 12);
    EXPECT_EQ(set_ports(current), noError);
    EXPECT_THAT(sent, IsEmpty());

    refused_lines = {(kAdd + " interface port3").substr(2)};
    EXPECT_EQ(set_ports({0x60}), genErr);
    EXPECT_EQ(sent.size(), 2u);
    interfaces_have_names = false;
    EXPECT_EQ(set_ports({0x60}), genErr);
    EXPECT_THAT(sent, IsEmpty());
    interfaces_have_names = true;
    answers.clear();  // without knowing the current ports nothing is changed
    EXPECT_EQ(set_ports({0x60}), genErr);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(QBridgeForwarding, WritersCheckWhatTheyTake) {
    answer("write_dot1qStaticMulticastStaticEgressPorts", Bytes(12));
    std::vector<Writable> writables{
        Writable("dot1qStaticMulticastStaticEgressPorts", kStaticGroup, OctetString, any_octets()),
        Writable("dot1qStaticMulticastStatus", kStaticGroup, Integer, between(1, 2))
            .sends({{1, {}}, {2, {"5 no mac address-table static 01-00-5e-00-00-fb vlan 10"}}}),
        Writable("dot1qStaticUnicastStatus", {1}, Integer, between(1, 5)).order(unparsed()).refused(),
        Writable("dot1qConstraintType", {1}, Integer, any_number()).order(unparsed()).refused(),
        Writable("dot1qConstraintStatus", {1}, Integer, any_number()).order(unparsed()).refused(),
    };
    for (const char* ports : {"dot1qForwardAllStaticPorts", "dot1qForwardAllForbiddenPorts",
                              "dot1qForwardUnregisteredStaticPorts", "dot1qForwardUnregisteredForbiddenPorts",
                              "dot1qStaticUnicastAllowedToGoTo", "dot1qStaticMulticastForbiddenEgressPorts"})
        writables.push_back(Writable(ports, {1}, OctetString, any_octets()).order(unparsed()).refused());
    expect_checks(writables);
}

TEST_F(QBridgeForwarding, IndexesAndTablesOnTheirOwnHaveNoValue) {
    for (const char* object : {"dot1qFdbId", "dot1qTpFdbAddress", "dot1qTpGroupAddress", "dot1qForwardAllPorts",
                               "dot1qForwardUnregisteredPorts", "dot1qStaticUnicastStatus",
                               "dot1qStaticMulticastReceivePort", "dot1qStaticMulticastForbiddenEgressPorts",
                               "dot1qTpVlanPortInFrames", "dot1qTpVlanPortHCInFrames", "dot1qConstraintStatus"})
        EXPECT_EQ(next(object).value, std::nullopt) << object;
    EXPECT_THAT(shown, IsEmpty());
}

}  // namespace tests
