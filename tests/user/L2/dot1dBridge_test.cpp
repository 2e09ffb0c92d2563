#include "support/recording_host.h"

namespace tests {

class Bridge : public RecordingHost {};

TEST_F(Bridge, ScalarsButTheAgingTimeHaveNoCommandOfTheirOwn) {
    answer("dot1dBridgeGlobals", integer(26));
    EXPECT_EQ(get("dot1dBaseNumPorts", {0}).value, integer(26));
    get("dot1dTpLearnedEntryDiscards", {0});
    get("dot1dTpAgingTime", {0});
    EXPECT_THAT(commands(), ElementsAre("", "", "show mac address-table aging-time"));
    EXPECT_EQ(shown[1].request.magic, 18);
    EXPECT_EQ(shown[1].request.key_size, 0);
    // What spanning tree refuses to be set to can be read.
    EXPECT_EQ(get("dot1dStpPriority", {0}).value, integer(26));
}

TEST_F(Bridge, PortsAreAskedForByInterfaceIndex) {
    answer("dot1dBasePortTable", integer(5123), integer(3));
    EXPECT_EQ(next("dot1dBasePortIfIndex").name, oid_of("dot1dBasePortIfIndex", {3}));
    get("dot1dBasePortIfIndex", {90});
    EXPECT_THAT(commands(), ElementsAre("show snmp bridge-port interface 0", "show snmp bridge-port interface 5210"));
    for (const oid port : {91u, 0x80000000u, 0xffffffffu}) {
        EXPECT_EQ(get("dot1dBasePort", {port}).value, std::nullopt);
        EXPECT_EQ(next("dot1dBasePort", {port}).value, std::nullopt);
    }
    EXPECT_EQ(shown.size(), 2u);
}

TEST_F(Bridge, ForwardingDatabaseIsAskedForByAddress) {
    answer("dot1dTpFdbTable", integer(7), {0, 0x1f, 0xab, 3, 4, 5});
    EXPECT_EQ(next("dot1dTpFdbPort").name, oid_of("dot1dTpFdbPort", {0, 31, 171, 3, 4, 5}));
    get("dot1dTpFdbAddress", {0, 31, 171, 3, 4, 255});
    EXPECT_THAT(commands(), ElementsAre("show uib default mac address-table address 00-00-00-00-00-00",
                                        "show uib default mac address-table address 00-1f-ab-03-04-ff"));
    EXPECT_EQ(shown[1].key, (Bytes{0, 31, 171, 3, 4, 255}));
    EXPECT_EQ(get("dot1dTpFdbAddress", {0, 31, 171, 3, 4}).value, std::nullopt);
}

TEST_F(Bridge, AgingTimeIsCheckedBeforeAction) {
    expect_checks({
        Writable("dot1dTpAgingTime", {0}, Integer, between(0, 1000000).good(10).bad(1).bad(9))
            .order({step::type, step::length, step::value.in({reserve1, reserve2})})
            .sends({{0, {"5 mac address-table aging-time 0"}}, {1000000, {"5 mac address-table aging-time 1000000"}}}),
    });
}

TEST_F(Bridge, SpanningTreeAndStaticEntriesOnlyRefuse) {
    for (const char* object : {"dot1dStpPort", "dot1dStpPortEnable", "dot1dTpPortInFrames", "dot1dStaticStatus"}) {
        EXPECT_EQ(get(object, {1}).value, std::nullopt) << object;
        EXPECT_EQ(next(object).value, std::nullopt) << object;
    }
    EXPECT_THAT(shown, IsEmpty());
    std::vector<Writable> refused;
    for (const char* scalar :
         {"dot1dStpPriority", "dot1dStpBridgeMaxAge", "dot1dStpBridgeHelloTime", "dot1dStpBridgeForwardDelay"})
        refused.push_back(Writable(scalar, {0}, Integer, any_number()).order(unparsed()).refused());
    for (const char* number :
         {"dot1dStpPortPriority", "dot1dStpPortPathCost", "dot1dStpPortPathCost32", "dot1dStaticReceivePort"})
        refused.push_back(Writable(number, {1}, Integer, any_number()).order(unparsed()).refused());
    refused.push_back(Writable("dot1dStpPortEnable", {1}, Integer, between(1, 2)).order(unparsed()).refused());
    for (const char* octets : {"dot1dStaticAddress", "dot1dStaticAllowedToGoTo"})
        refused.push_back(Writable(octets, {1}, OctetString, any_octets()).order(unparsed()).refused());
    refused.push_back(Writable("dot1dStaticStatus", {1}, Integer, between(1, 5)).order(unparsed()).refused());
    expect_checks(refused);
}

}  // namespace tests
