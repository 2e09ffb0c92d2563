// Digital diagnostic monitoring of the ports' optical transceivers: what they measure, the thresholds of alarms and
// warnings, and what an alarm does.
#define MODULE swDdmMIB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 8, 1);

Error write_swDdmTrapState(Set& set) {
    return set.scalar_line({{0, "no snmp-server enable traps transceiver-monitoring"},
                            {1, "snmp-server enable traps transceiver-monitoring alarm"},
                            {2, "snmp-server enable traps transceiver-monitoring warning"},
                            {3, "snmp-server enable traps transceiver-monitoring"}});
}

constexpr Scalars swDdmMIBGlobals{
    .name = "swDdmMIBGlobals",
    .text = "show ddm-snmp trap",
    .scalars = {{{1, 1}, "swDdmTrapState", Integer, ReadWrite, WRITER(write_swDdmTrapState)}},
};

// --- swDdmStatusTable ------------------------------------------------------------------------------------------------

TABLE(swDdmStatusTable, SWDDMSTATUSTABLE, 2, 1, 1, 1);

constexpr Table<InterfaceKey> swDdmStatusTable{
    .id = SWDDMSTATUSTABLE,
    .command = {"show ddm-snmp status", "show ddm-snmp status %d"},
    .columns =
        {
            {1, "swDdmPort", Integer, ReadOnly},
            {2, "swDdmTemperature", OctetString, ReadOnly},
            {3, "swDdmVoltage", OctetString, ReadOnly},
            {4, "swDdmBiasCurrent", OctetString, ReadOnly},
            {5, "swDdmTxPower", OctetString, ReadOnly},
            {6, "swDdmRxPower", OctetString, ReadOnly},
        },
};

// --- swDdmThresholdMgmtTable -----------------------------------------------------------------------------------------

TABLE(swDdmThresholdMgmtTable, SWDDMTHRESHOLDMGMTTABLE, 3, 1, 1, 1);

struct ThresholdKey {
    std::uint32_t ifindex;
    std::uint32_t type;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// A threshold is a number as text, sent as it is; "NA" removes it.
Error write_threshold(Set& set, const char* threshold) {
    static constexpr const char* kTypes[] = {"temperature", "voltage", "bias-current", "tx-power", "rx-power"};
    ThresholdKey row;
    InterfaceName interface;
    char value[16];
    TRY(set.type(OctetString));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, interface));
    // genErr and not wrongLength, on purpose.
    if (set.at_most(sizeof value - 1) != noError) return genErr;
    TRY(set.text(value));
    if (!set.acting()) return noError;
    TRY(set.enter(interface));
    if (row.type < 1 || row.type > std::size(kTypes)) return genErr;
    const bool removed = value[0] == 'N' && value[1] == 'A';
    return set.sub({"%stransceiver-monitoring %s %s %s", removed ? "no " : "", kTypes[row.type - 1], threshold,
                    removed ? "" : value});
}

Error write_swDdmHighAlarm(Set& set) { return write_threshold(set, "high alarm"); }
Error write_swDdmLowAlarm(Set& set) { return write_threshold(set, "low alarm"); }
Error write_swDdmHighWarning(Set& set) { return write_threshold(set, "high warning"); }
Error write_swDdmLowWarning(Set& set) { return write_threshold(set, "low warning"); }

constexpr Table<ThresholdKey> swDdmThresholdMgmtTable{
    .id = SWDDMTHRESHOLDMGMTTABLE,
    .command = {"show ddm-snmp configuration",
                [](const ThresholdKey& row) {
                    return Command("show ddm-snmp configuration %d %d", row.ifindex, row.type);
                },
                &ThresholdKey::ifindex},
    .columns =
        {
            {1, "swDdmThresholdType", Integer, ReadOnly},
            {2, "swDdmHighAlarm", OctetString, ReadWrite, WRITER(write_swDdmHighAlarm)},
            {3, "swDdmLowAlarm", OctetString, ReadWrite, WRITER(write_swDdmLowAlarm)},
            {4, "swDdmHighWarning", OctetString, ReadWrite, WRITER(write_swDdmHighWarning)},
            {5, "swDdmLowWarning", OctetString, ReadWrite, WRITER(write_swDdmLowWarning)},
        },
};

// --- swDdmPortMgmtTable ----------------------------------------------------------------------------------------------

TABLE(swDdmPortMgmtTable, SWDDMPORTMGMTTABLE, 3, 2, 1, 1);

Error write_swDdmPortState(Set& set) {
    return set.interface_line({{1, "transceiver-monitoring enable"}, {2, "no transceiver-monitoring enable"}});
}

Error write_swDdmPortShutdown(Set& set) {
    return set.interface_line({{1, "transceiver-monitoring action shutdown alarm"},
                               {2, "transceiver-monitoring action shutdown warning"},
                               {3, "no transceiver-monitoring action shutdown"}});
}

constexpr Table<InterfaceKey> swDdmPortMgmtTable{
    .id = SWDDMPORTMGMTTABLE,
    .command = {"show ddm-snmp portmgmt", "show ddm-snmp portmgmt %d"},
    .columns =
        {
            {1, "swDdmPortState", Integer, ReadWrite, WRITER(write_swDdmPortState)},
            {2, "swDdmPortShutdown", Integer, ReadWrite, WRITER(write_swDdmPortShutdown)},
        },
};

MODULE_END(14, swDdmMIBGlobals, swDdmStatusTable, swDdmThresholdMgmtTable, swDdmPortMgmtTable);

}  // namespace switchmib::MODULE
