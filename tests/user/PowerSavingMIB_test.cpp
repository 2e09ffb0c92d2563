#include "support/recording_host.h"

namespace tests {

class PowerSaving : public RecordingHost {};

TEST_F(PowerSaving, IsShownWithTheKeyedCommandForTheFirstRowToo) {
    answer("swPowerSavingPortStatusTable", integer(1), integer(5121));
    answer("pellamPowerSavingMIBGlobals", integer(1));
    EXPECT_EQ(next("swPortEEEState").name, oid_of("swPortEEEState", {5121}));
    get("swPowerSavingPort", {5121});
    get("swPowerSavingLEDState", {0});
    EXPECT_THAT(commands(), ElementsAre("show port powersaving_table 0", "show port powersaving_table 5121",
                                        "show ports leds configuration"));
}

TEST_F(PowerSaving, IsSwitchedOffByZero) {
    expect_checks({
        Writable("swPowerSavingLEDState", {0}, Integer, between(0, 1))
            .sends({{0, {"5 disable ports leds"}}, {1, {"5 no disable ports leds"}}}),
        Writable("swPortEnergyDetectState", {5121}, Integer, between(0, 1))
            .order(on_interface())
            .sends({{0, {"5 interface port1", "-1 no green-ethernet energy-detect"}},
                    {1, {"5 interface port1", "-1 green-ethernet energy-detect"}}}),
        Writable("swPortEEEState", {5121}, Integer, between(0, 1))
            .order(on_interface())
            .sends({{0, {"5 interface port1", "-1 no eee enable"}}, {1, {"5 interface port1", "-1 eee enable"}}}),
    });
}

}  // namespace tests
