// Power saving: the port LEDs of the switch, and energy detection and Energy-Efficient Ethernet of each port. Values are
// 0 for off and 1 for on.
#define MODULE pellamPowerSavingMIB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 1, 5);

Error write_swPowerSavingLEDState(Set& set) {
    return set.scalar_line({{0, "disable ports leds"}, {1, "no disable ports leds"}});
}

constexpr Scalars pellamPowerSavingMIBGlobals{
    .name = "pellamPowerSavingMIBGlobals",
    .text = "show ports leds configuration",
    .scalars = {{{1, 1}, "swPowerSavingLEDState", Integer, ReadWrite, WRITER(write_swPowerSavingLEDState)}},
};

// --- swPowerSavingPortStatusTable ------------------------------------------------------------------------------------

TABLE(swPowerSavingPortStatusTable, SWPOWERSAVINGPORTSTATUSTABLE, 2, 1, 1, 1);

Error write_swPortEnergyDetectState(Set& set) {
    return set.interface_line({{0, "no green-ethernet energy-detect"}, {1, "green-ethernet energy-detect"}});
}

Error write_swPortEEEState(Set& set) { return set.interface_line({{0, "no eee enable"}, {1, "eee enable"}}); }

constexpr Table<InterfaceKey> swPowerSavingPortStatusTable{
    .id = SWPOWERSAVINGPORTSTATUSTABLE,
    // No form of its own for the first row: the backend answers index 0 with the first port.
    .command = "show port powersaving_table %d",
    .columns =
        {
            {1, "swPowerSavingPort", Integer, ReadOnly},
            {2, "swPortEnergyDetectState", Integer, ReadWrite, WRITER(write_swPortEnergyDetectState)},
            {3, "swPortEEEState", Integer, ReadWrite, WRITER(write_swPortEEEState)},
        },
};

MODULE_END(4, pellamPowerSavingMIBGlobals, swPowerSavingPortStatusTable);

}  // namespace switchmib::MODULE
