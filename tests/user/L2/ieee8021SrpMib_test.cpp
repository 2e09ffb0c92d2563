#include "support/recording_host.h"

namespace tests {

class StreamReservation : public RecordingHost {};

TEST_F(StreamReservation, BridgeAndPortsAreAskedForByOneNumber) {
    answer("ieee8021SrpBridgeBaseTable", integer(1), integer(1));
    answer("ieee8021SrpBridgePortTable", integer(2), integer(5121));
    EXPECT_EQ(next("ieee8021SrpBridgeBaseMsrpEnabledStatus").name,
              oid_of("ieee8021SrpBridgeBaseMsrpEnabledStatus", {1}));
    EXPECT_EQ(next("ieee8021SrpBridgePortSrPvid").name, oid_of("ieee8021SrpBridgePortSrPvid", {5121}));
    get("ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", {1});
    get("ieee8021SrpBridgePortMsrpEnabledStatus", {5122});
    EXPECT_THAT(commands(),
                ElementsAre("show snmp ieee8021srp-bridge", "show snmp ieee8021srp-bridge interface",
                            "show snmp ieee8021srp-bridge 1", "show snmp ieee8021srp-bridge interface 5122"));
    forget();
    for (const char* object : {"ieee8021SrpBridgeBaseMsrpMaxFanInPorts", "ieee8021SrpBridgePortMsrpFailedRegistrations",
                               "ieee8021SrpBridgePortMsrpLastPduOrigin"}) {
        EXPECT_EQ(get(object, {1}).value, std::nullopt) << object;
        EXPECT_EQ(get(object, {1}).writer, kUntouched) << object;
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(StreamReservation, StreamsAreAskedForByTheirIdsOctets) {
    const Oid index{1, 0x02, 0x48, 0, 0, 1, 254, 0, 7, 5122};
    answer("ieee8021SrpStreamTable", integer(1), {1, 0, 0, 0, 0x02, 0x48, 0, 0, 1, 254, 0, 7, 2, 20, 0, 0});  // 5122
    EXPECT_EQ(next("ieee8021SrpStreamId").name, oid_of("ieee8021SrpStreamId", index));
    EXPECT_TRUE(get("ieee8021SrpStreamRank", index).value);
    EXPECT_EQ(get("ieee8021SrpStreamRank", {1, 2, 3}).value, std::nullopt);
    EXPECT_EQ(get("ieee8021SrpStreamDataFramePriority", index).value, std::nullopt);
    // The component alone decides which row is asked for.
    get("ieee8021SrpStreamVlanId", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_THAT(commands(), ElementsAre("show snmp ieee8021srp-stream 0 00:00:00:00:00:00:00:00 0",
                                        "show snmp ieee8021srp-stream 1 02:48:00:00:01:fe:00:07 5122",
                                        "show snmp ieee8021srp-stream 0 00:00:00:00:00:00:00:00 0"));
    EXPECT_EQ(shown[1].key, (Bytes{1, 0, 0, 0, 0x02, 0x48, 0, 0, 1, 254, 0, 7, 2, 20, 0, 0}));
}

TEST_F(StreamReservation, LatenciesAndReservationsAreNeverShown) {
    for (const char* object : {"ieee8021SrpPortTcLatency", "ieee8021SrpReservationDeclarationType"}) {
        EXPECT_EQ(get(object, {1, 5121, 0}).value, std::nullopt);
        EXPECT_EQ(next(object).value, std::nullopt);
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(StreamReservation, ChecksOfTheColumns) {
    expect_checks({
        Writable("ieee8021SrpBridgeBaseMsrpEnabledStatus", {1}, Integer, between(1, 2))
            .sends({{1, {"-1 msrp global"}}, {2, {"-1 no msrp global"}}}),
        Writable("ieee8021SrpBridgeBaseMsrpTalkerPruning", {1}, Integer, between(1, 2))
            .sends({{1, {"-1 msrp talker-pruning"}}, {2, {"-1 no msrp talker-pruning"}}}),
        Writable("ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", {1}, Unsigned32, any_number())
            .sends({{1500, {"5 msrp latency-frame-size 1500"}}, {0xffffffff, {"5 msrp latency-frame-size -1"}}}),
        Writable("ieee8021SrpBridgePortMsrpEnabledStatus", {5121}, Integer, between(1, 2))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 msrp enable"}}, {2, {"5 interface port1", "-1 no msrp enable"}}})
            .refused_first_line(Writable::succeeds),
        Writable("ieee8021SrpBridgePortSrPvid", {5121}, Unsigned32, any_number())
            .order(on_interface())
            .sends({{2, {"5 interface port1", "-1 msrp sr-pvid 2"}},
                    {5000, {"5 interface port1", "-1 msrp sr-pvid 5000"}}})
            .refused_first_line(Writable::succeeds),
    });
}

}  // namespace tests
