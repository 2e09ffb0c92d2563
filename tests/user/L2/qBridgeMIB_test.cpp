#include "support/recording_host.h"

namespace tests {

class QBridge : public RecordingHost {};

TEST_F(QBridge, ConstantsComeFromTheLibrary) {
    EXPECT_EQ(get("dot1qVlanVersionNumber", {0}).value, integer(1));
    EXPECT_EQ(get("dot1qMaxVlanId", {0}).value, integer(4094));
    EXPECT_EQ(get("dot1qMaxSupportedVlans", {0}).value, integer(4094));
    EXPECT_EQ(get("dot1qNextFreeLocalVlanIndex", {0}).value, integer(4096));
    EXPECT_THAT(shown, IsEmpty());
    answer("qBridgeMIBGlobals", integer(7));
    EXPECT_NE(get("dot1qNumVlans", {0}).address, ret_value);
}

TEST_F(QBridge, TimeMarkIsNotLookedAt) {
    get("dot1qVlanFdbId", {9, 0});
    get("dot1qVlanFdbId", {9, 10});
    EXPECT_THAT(commands(), ElementsAre("show snmp vlan-current", "show snmp vlan-current 10"));
}

TEST_F(QBridge, WritersCheckInTheirOrder) {
    const std::vector<int> always{0, 1, 2, 3, 4, 5, 6};
    expect_checks({
        Writable("dot1qGvrpStatus", {0}, Integer, any_number()).sends_nothing(),
        Writable("dot1qConstraintSetDefault", {0}, Integer, any_number()).refused(),
        Writable("dot1qConstraintTypeDefault", {0}, Integer, between(1, 2)).refused(),
        // Refused before any check.
        Writable("dot1qPortGvrpStatus", {1, 2, 3}, Counter64, any_octets()).order({}).refused(always),
        Writable("dot1qPortRestrictedVlanRegistration", {1}, Integer, any_number()).order({}).refused(always),
        Writable("dot1qPortAcceptableFrameTypes", {5121}, Integer, between(1, 3)).order(on_interface()),
        Writable("dot1qPortIngressFiltering", {5121}, Integer, between(1, 2)).order(on_interface()),
    });
}

// The record that outlives requests is read by others.
TEST_F(QBridge, LayoutOfTheStagedVlan) {
    unsigned char* const record = loaded().symbol<unsigned char>("vlan_static");
    std::fill_n(record, 84, static_cast<unsigned char>(0));
    const Assignment staged[] = {{"ieee8021QBridgeVlanStaticName", {1, 10}, OctetString, text("y")},
                                 {"dot1qVlanStaticName", {10}, OctetString, Bytes(32, 'x')},
                                 {"dot1qVlanStaticEgressPorts", {1}, OctetString, port_list({8})},
                                 {"dot1qVlanForbiddenEgressPorts", {1}, OctetString, port_list({7})},
                                 {"dot1qVlanStaticUntaggedPorts", {1}, OctetString, port_list({8})},
                                 {"dot1qVlanStaticRowStatus", {1}, Integer, integer(active)}};
    for (const auto& [object, row, type, value] : staged)
        EXPECT_EQ(write(reserve1, object, row, type, value), noError) << object;
    EXPECT_EQ(Bytes(record, record + 4), integer(10));
    EXPECT_EQ(Bytes(record + 4, record + 37), text(std::string(32, 'x') + '\0'));
    EXPECT_EQ(record[37], 0x01);
    EXPECT_EQ(record[49], 0x02);
    EXPECT_EQ(record[61], 0x01);
    EXPECT_EQ(Bytes(record + 76, record + 84), (Bytes{1, 0, 0, 0, 0, 0, 0, 0}));
    // The IEEE module has a record of its own: nothing is pending there.
    EXPECT_EQ(write(action, "ieee8021QBridgeVlanStaticName", {1, 10}, OctetString, text("x")), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name x"));
    EXPECT_EQ(write(undo, "dot1qVlanStaticRowStatus", {1}, Integer, integer(7)), wrongValue);
    std::fill_n(record, 84, static_cast<unsigned char>(0));
}

}  // namespace tests
