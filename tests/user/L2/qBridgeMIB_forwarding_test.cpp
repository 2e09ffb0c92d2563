// The forwarding database, groups and static addresses of Q-BRIDGE-MIB.
#include "support/recording_host.h"

namespace tests {
namespace {

const Oid kStaticGroup{10, 1, 0, 0x5e, 0, 0, 0xfb, 0};  // VLAN, address, receive port
const std::string kAdd = "5 mac address-table static 01-00-5e-00-00-fb vlan 10";

}  // namespace

class QBridgeForwarding : public RecordingHost {};

TEST_F(QBridgeForwarding, AddressIsAskedForInSmallLetters) {
    const Oid row{10, 0, 31, 1, 2, 3, 255};
    answer("dot1qTpFdbTable", integer(3), {10, 0, 0, 0, 0, 0x1f, 1, 2, 3, 255, 0, 0});
    EXPECT_EQ(next("dot1qTpFdbPort").name, oid_of("dot1qTpFdbPort", row));
    get("dot1qTpFdbStatus", row);
    EXPECT_EQ(commands().back(), "show uib mac address-table address 00-1f-01-02-03-ff vlan 10");
}

TEST_F(QBridgeForwarding, FirstGroupIsThatOfNoVlanWhateverItsAddress) {
    next("dot1qTpGroupLearnt", {0, 1, 2, 3, 4, 5, 6});
    next("dot1qStaticMulticastStatus", {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_THAT(commands(), ElementsAre("show debugging mcast group_table", "show debugging mcast static_table"));
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
        {"dot1qStaticMulticastStaticEgressPorts", kStaticGroup, OctetString, any_octets()},
        {"dot1qStaticMulticastStatus", kStaticGroup, Integer, between(1, 2)},
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

}  // namespace tests
