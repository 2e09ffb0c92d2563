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
    const ReadResult vlans = get("dot1qNumVlans", {0});
    get("dot1qVlanNumDeletes", {0});
    EXPECT_THAT(commands(), ElementsAre("show snmp vlan number", "show snmp vlan-delete-num"));
    EXPECT_EQ(shown[1].request.magic, 6);
    EXPECT_EQ(shown[0].request.result_size, 512);
    EXPECT_NE(vlans.address, ret_value);
}

TEST_F(QBridge, SomeObjectsAreOnlyWritten) {
    for (const char* object : {"dot1qGvrpStatus", "dot1qConstraintSetDefault", "dot1qConstraintTypeDefault"}) {
        const ReadResult result = get(object, {0});
        EXPECT_EQ(result.value, std::nullopt) << object;
        EXPECT_TRUE(result.writer != nullptr && result.writer != kUntouched) << object;
    }
    for (const char* object :
         {"dot1qVlanForbiddenEgressPorts", "dot1qPortGvrpStatus", "dot1qPortRestrictedVlanRegistration"})
        EXPECT_EQ(get(object, {1}).value, std::nullopt) << object;
    EXPECT_THAT(shown, IsEmpty());
    const std::vector<int> always{0, 1, 2, 3, 4, 5, 6};
    expect_checks({
        Writable("dot1qGvrpStatus", {0}, Integer, any_number()).sends_nothing(),
        Writable("dot1qConstraintSetDefault", {0}, Integer, any_number()).refused(),
        Writable("dot1qConstraintTypeDefault", {0}, Integer, between(1, 2)).refused(),
        // Refused before any check.
        Writable("dot1qPortGvrpStatus", {1, 2, 3}, Counter64, any_octets()).order({}).refused(always),
        Writable("dot1qPortRestrictedVlanRegistration", {1}, Integer, any_number()).order({}).refused(always),
    });
}

TEST_F(QBridge, TablesAreAskedForByVlanAndByInterface) {
    get("dot1qVlanFdbId", {0, 0});
    get("dot1qVlanFdbId", {9, 0});  // the time mark is not looked at
    get("dot1qVlanFdbId", {9, 10});
    get("dot1qVlanStaticName", {10});
    next("dot1qVlanStaticName");
    get("dot1qPvid", {5121});
    next("dot1qPvid");
    EXPECT_THAT(commands(), ElementsAre("show snmp vlan-current", "show snmp vlan-current", "show snmp vlan-current 10",
                                        "show snmp vlan-static 10", "show snmp vlan-static", "show snmp port-vlan 5121",
                                        "show snmp port-vlan"));
    EXPECT_EQ(shown[2].request.key_size, 8);
}

// The record that outlives requests is read by others.
TEST_F(QBridge, LayoutOfTheStagedVlan) {
    unsigned char* const record = loaded().symbol<unsigned char>("vlan_static");
    std::fill_n(record, 84, static_cast<unsigned char>(0));
    EXPECT_EQ(write(reserve1, "ieee8021QBridgeVlanStaticName", {1, 10}, OctetString, text("y")), noError);
    EXPECT_EQ(write(reserve1, "dot1qVlanStaticName", {10}, OctetString, Bytes(32, 'x')), noError);
    EXPECT_EQ(write(reserve1, "dot1qVlanStaticEgressPorts", {1}, OctetString, port_list({8})), noError);
    EXPECT_EQ(write(reserve1, "dot1qVlanForbiddenEgressPorts", {1}, OctetString, port_list({7})), noError);
    EXPECT_EQ(write(reserve1, "dot1qVlanStaticUntaggedPorts", {1}, OctetString, port_list({8})), noError);
    EXPECT_EQ(write(reserve1, "dot1qVlanStaticRowStatus", {1}, Integer, integer(active)), noError);
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

TEST_F(QBridge, ProtocolTablesAreAskedByFrameTypeAndByPort) {
    get("dot1vProtocolGroupId", {1, 2, 0x08, 0x06});
    next("dot1vProtocolGroupRowStatus");
    get("dot1vProtocolPortGroupVid", {5121, 7});
    next("dot1vProtocolPortRowStatus");
    EXPECT_THAT(commands(), ElementsAre("show snmp qbridge protocol-group 1 0x8060", "show snmp qbridge protocol-group",
                                        "show snmp qbridge protocol-vlan 5121 7", "show snmp qbridge protocol-vlan"));
    EXPECT_EQ(shown[0].request.result_size, 512);
    EXPECT_EQ(shown[0].request.key_size, 8);
    EXPECT_EQ(shown[2].request.result_size, 512);
}

TEST_F(QBridge, FrameTypesAndIngressFiltering) {
    expect_checks({
        Writable("dot1qPortAcceptableFrameTypes", {5121}, Integer, between(1, 3))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 acceptable-frame admit-all"}},
                    {2, {"5 interface port1", "-1 acceptable-frame tagged-only"}},
                    {3, {"5 interface port1", "-1 acceptable-frame untagged-only"}}}),
        Writable("dot1qPortIngressFiltering", {5121}, Integer, between(1, 2))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 ingress-checking"}},
                    {2, {"5 interface port1", "-1 no ingress-checking"}}}),
    });
}

}  // namespace tests
