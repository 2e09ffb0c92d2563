#include "support/recording_host.h"

namespace tests {

class Transceivers : public RecordingHost {};

TEST_F(Transceivers, ThresholdsFollowTheFirstRowByTheirInterfaceAlone) {
    get("swDdmLowWarning", {0, 3});
    next("swDdmLowAlarm", {5145});
    EXPECT_THAT(commands(), ElementsAre("show ddm-snmp configuration", "show ddm-snmp configuration 5145 0"));
}

TEST_F(Transceivers, SettingsAreCheckedInTheirOrder) {
    // A threshold that is too long is not wrongLength.
    const Order order{step::type, step::column, step::index, step::interface, step::value};
    std::vector<Writable> writables{
        {"swDdmTrapState", {0}, Integer, between(0, 3)},
        Writable("swDdmPortState", {5121}, Integer, between(1, 2)).order(on_interface()),
        Writable("swDdmPortShutdown", {5121}, Integer, between(1, 3)).order(on_interface()),
    };
    for (const char* threshold : {"swDdmHighAlarm", "swDdmLowAlarm", "swDdmHighWarning", "swDdmLowWarning"})
        writables.push_back(
            Writable(threshold, {5121, 1}, OctetString, words(15).bad("0123456789abcdef", genErr)).order(order));
    expect_checks(writables);
}

TEST_F(Transceivers, ThresholdsAreRemovedByWhatBeginsWithNa) {
    const std::string line = "transceiver-monitoring temperature low alarm ";
    const std::pair<const char*, std::string> texts[] = {
        {"N", line + "N"}, {"NA", "no " + line}, {"NAx", "no " + line}};
    for (const auto& [threshold, sends] : texts) {
        forget();
        EXPECT_EQ(set("swDdmLowAlarm", {5121, 1}, OctetString, text(threshold)), noError);
        EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 " + sends));
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
