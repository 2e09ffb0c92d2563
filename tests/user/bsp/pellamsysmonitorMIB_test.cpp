#include "support/recording_host.h"

namespace tests {

class SystemMonitor : public RecordingHost {};

TEST_F(SystemMonitor, ShowsEachObjectByItsMagic) {
    answer("pellamsysmonitorMIBGlobals", integer(42));
    for (const char* object : {"systemCpuUtilization5Seconds", "systemCpuUtilization5Minutes", "systemMemoryTotal",
                               "systemFlashUsed", "systemFanSpeed", "systemTemperature", "systemTemperatureHeatdown"})
        EXPECT_EQ(get(object, {0}).value, integer(42));
    EXPECT_THAT(commands(), ElementsAre("show cpu utilization 1", "show cpu utilization 3", "show unit 4",
                                        "show unit 7", "show environment fan", "show environment temperature 9",
                                        "show environment temperature 11"));
    EXPECT_EQ(shown[3].request.magic, 7);
}

TEST_F(SystemMonitor, OverheatSetsTheLowThreshold) {
    expect_checks({
        Writable("systemTemperatureOverheat", {0}, Integer, any_number())
            .sends({{70, {"5 environment temperature threshold low 70"}},
                    {-5, {"5 environment temperature threshold low -5"}}}),
        Writable("systemTemperatureHeatdown", {0}, Integer, any_number())
            .sends({{60, {"5 environment temperature threshold high 60"}}}),
    });
}

}  // namespace tests
