#include "support/recording_host.h"

namespace tests {

class Transceivers : public RecordingHost {};

TEST_F(Transceivers, AreShownWithFormsOfTheirOwnForTheFirstRow) {
    answer("swDdmMIBGlobals", integer(3));
    answer("swDdmStatusTable", text("31.2"), integer(5145));
    answer("swDdmPortMgmtTable", integer(1), integer(5145));
    get("swDdmTrapState", {0});
    next("swDdmTemperature");
    get("swDdmRxPower", {5145});
    next("swDdmPortState");
    get("swDdmPortShutdown", {5145});
    EXPECT_THAT(commands(), ElementsAre("show ddm-snmp trap", "show ddm-snmp status", "show ddm-snmp status 5145",
                                        "show ddm-snmp portmgmt", "show ddm-snmp portmgmt 5145"));
}

TEST_F(Transceivers, ThresholdsFollowTheFirstRowByTheirInterfaceAlone) {
    Bytes key = integer(5145);
    for (const std::uint8_t octet : integer(2)) key.push_back(octet);
    answer("swDdmThresholdMgmtTable", text("75"), key);
    EXPECT_EQ(next("swDdmHighAlarm").name, oid_of("swDdmHighAlarm", {5145, 2}));
    get("swDdmLowWarning", {0, 3});
    next("swDdmLowAlarm", {5145});
    get("swDdmHighWarning", {5145, 2});
    EXPECT_THAT(commands(), ElementsAre("show ddm-snmp configuration", "show ddm-snmp configuration",
                                        "show ddm-snmp configuration 5145 0", "show ddm-snmp configuration 5145 2"));
}

TEST_F(Transceivers, SettingsAreLinesOfTheirOwn) {
    const std::string enter = "5 interface port1";
    expect_checks({
        Writable("swDdmTrapState", {0}, Integer, between(0, 3))
            .sends({{0, {"5 no snmp-server enable traps transceiver-monitoring"}},
                    {1, {"5 snmp-server enable traps transceiver-monitoring alarm"}},
                    {2, {"5 snmp-server enable traps transceiver-monitoring warning"}},
                    {3, {"5 snmp-server enable traps transceiver-monitoring"}}}),
        Writable("swDdmPortState", {5121}, Integer, between(1, 2))
            .order(on_interface())
            .sends({{1, {enter, "-1 transceiver-monitoring enable"}},
                    {2, {enter, "-1 no transceiver-monitoring enable"}}}),
        Writable("swDdmPortShutdown", {5121}, Integer, between(1, 3))
            .order(on_interface())
            .sends({{1, {enter, "-1 transceiver-monitoring action shutdown alarm"}},
                    {2, {enter, "-1 transceiver-monitoring action shutdown warning"}},
                    {3, {enter, "-1 no transceiver-monitoring action shutdown"}}}),
    });
}

TEST_F(Transceivers, ThresholdsAreTextsThatNaRemoves) {
    // A text that is too long is not wrongLength.
    const Order order{step::type, step::column, step::index, step::interface, step::value};
    const struct {
        const char* object;
        std::string threshold;
    } thresholds[] = {{"swDdmHighAlarm", "high alarm"},
                      {"swDdmLowAlarm", "low alarm"},
                      {"swDdmHighWarning", "high warning"},
                      {"swDdmLowWarning", "low warning"}};
    for (const auto& [object, threshold] : thresholds) {
        const std::string line = "transceiver-monitoring temperature " + threshold + " ";
        expect_checks({
            Writable(object, {5121, 1}, OctetString, words(15).bad("0123456789abcdef", genErr))
                .order(order)
                .sends({{"75.5", {"5 interface port1", "-1 " + line + "75.5"}},
                        {"", {"5 interface port1", "-1 " + line}},
                        {"N", {"5 interface port1", "-1 " + line + "N"}}}),
        });
        for (const char* removal : {"NA", "NAx"}) {
            forget();
            EXPECT_EQ(set(object, {5121, 1}, OctetString, text(removal)), noError);
            EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 no " + line));
        }
    }
    for (const auto& [type, words] :
         std::map<int, std::string>{{2, "voltage"}, {3, "bias-current"}, {4, "tx-power"}, {5, "rx-power"}}) {
        forget();
        EXPECT_EQ(set("swDdmLowWarning", {5121, static_cast<oid>(type)}, OctetString, text("-3")), noError);
        EXPECT_EQ(lines().back(), "-1 transceiver-monitoring " + words + " low warning -3");
    }
}

TEST_F(Transceivers, UnknownThresholdTypesFailAfterTheInterfaceLine) {
    for (const oid type : {0u, 6u, 0xffffffffu}) {
        forget();
        EXPECT_EQ(set("swDdmHighAlarm", {5121, type}, OctetString, text("NA")), genErr);
        EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
    }
}

}  // namespace tests
