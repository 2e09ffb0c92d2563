// The switch's health: processor utilisation, memory, fan and temperature.
#define MODULE pellamsysmonitorMIB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 1, 4);

Error write_temperature_threshold(Set& set, const char* which) {
    std::int32_t degrees;
    TRY(set.integer(degrees));
    if (!set.acting()) return noError;
    return set.global({"environment temperature threshold %s %d", which, degrees});
}

// Overheating is the low threshold and cooling down the high one, on purpose.
Error write_systemTemperatureOverheat(Set& set) { return write_temperature_threshold(set, "low"); }
Error write_systemTemperatureHeatdown(Set& set) { return write_temperature_threshold(set, "high"); }

constexpr Scalars pellamsysmonitorMIBGlobals{
    .name = "pellamsysmonitorMIBGlobals",
    .scalars =
        {
            {{1, 1, 1}, "systemCpuUtilization5Seconds", Integer, ReadOnly, shows("show cpu utilization 1")},
            {{1, 1, 2}, "systemCpuUtilization1Minute", Integer, ReadOnly, shows("show cpu utilization 2")},
            {{1, 1, 3}, "systemCpuUtilization5Minutes", Integer, ReadOnly, shows("show cpu utilization 3")},
            {{1, 2, 1}, "systemMemoryTotal", Integer, ReadOnly, shows("show unit 4")},
            {{1, 2, 2}, "systemMemoryUsed", Integer, ReadOnly, shows("show unit 5")},
            {{1, 3, 1}, "systemFlashTotal", Integer, ReadOnly, shows("show unit 6")},
            {{1, 3, 2}, "systemFlashUsed", Integer, ReadOnly, shows("show unit 7")},
            {{1, 4, 1}, "systemFanSpeed", Integer, ReadOnly, shows("show environment fan")},
            {{1, 5, 1}, "systemTemperature", Integer, ReadOnly, shows("show environment temperature 9")},
            {{1, 5, 2},
             "systemTemperatureOverheat",
             Integer,
             ReadWrite,
             WRITER(write_systemTemperatureOverheat),
             shows("show environment temperature 10")},
            {{1, 5, 3},
             "systemTemperatureHeatdown",
             Integer,
             ReadWrite,
             WRITER(write_systemTemperatureHeatdown),
             shows("show environment temperature 11")},
        },
};

MODULE_END(11, pellamsysmonitorMIBGlobals);

}  // namespace switchmib::MODULE
