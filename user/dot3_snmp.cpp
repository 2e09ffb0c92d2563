// EtherLike-MIB: Ethernet error statistics of each port, and the pause mode, which is set as flow control.
#define MODULE dot3
#include "framework/module.h"
#include "framework/port.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 10, 7);

// The tables have no form of their own for the first row: the backend answers index 0 with the first port.

// --- dot3StatsTable --------------------------------------------------------------------------------------------------

TABLE(dot3StatsTable, DOT3STATSTABLE, 2, 1);

constexpr Table<InterfaceKey> dot3StatsTable{
    .id = DOT3STATSTABLE,
    .command = "show interface_uib dot3Stats %d",
    .columns =
        {
            {1, "dot3StatsIndex", Integer, ReadOnly},
            {2, "dot3StatsAlignmentErrors", Counter32, ReadOnly},
            {3, "dot3StatsFCSErrors", Counter32, ReadOnly},
            {4, "dot3StatsSingleCollisionFrames", Counter32, ReadOnly},
            {5, "dot3StatsMultipleCollisionFrames", Counter32, ReadOnly},
            {6, "dot3StatsSQETestErrors", Counter32, ReadOnly},
            {7, "dot3StatsDeferredTransmissions", Counter32, ReadOnly},
            {8, "dot3StatsLateCollisions", Counter32, ReadOnly},
            {9, "dot3StatsExcessiveCollisions", Counter32, ReadOnly},
            {10, "dot3StatsInternalMacTransmitErrors", Counter32, ReadOnly},
            {11, "dot3StatsCarrierSenseErrors", Counter32, ReadOnly},
            {13, "dot3StatsFrameTooLongs", Counter32, ReadOnly},
            {16, "dot3StatsInternalMacReceiveErrors", Counter32, ReadOnly},
            {17, "dot3StatsEtherChipSet", ObjectIdentifier, ReadOnly},
            {18, "dot3StatsSymbolErrors", Counter32, ReadOnly},
            {19, "dot3StatsDuplexStatus", Integer, ReadOnly},
            {20, "dot3StatsRateControlAbility", Integer, ReadOnly},
            {21, "dot3StatsRateControlStatus", Integer, ReadOnly},
        },
};

// --- dot3CollTable ---------------------------------------------------------------------------------------------------

TABLE(dot3CollTable, DOT3COLLTABLE, 5, 1);

constexpr Table<InterfaceKey> dot3CollTable{
    .id = DOT3COLLTABLE,
    .answers = false,
    .columns =
        {
            {2, "dot3CollCount", Integer, ReadOnly},
            {3, "dot3CollFrequencies", Counter32, ReadOnly},
        },
};

// --- dot3ControlTable ------------------------------------------------------------------------------------------------

TABLE(dot3ControlTable, DOT3CONTROLTABLE, 9, 1);

constexpr Table<InterfaceKey> dot3ControlTable{
    .id = DOT3CONTROLTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot3ControlFunctionsSupported", OctetString, ReadOnly},
            {2, "dot3ControlInUnknownOpcodes", Counter32, ReadOnly},
            {3, "dot3HCControlInUnknownOpcodes", Counter64, ReadOnly},
        },
};

// --- dot3PauseTable --------------------------------------------------------------------------------------------------

TABLE(dot3PauseTable, DOT3PAUSETABLE, 10, 1);

Error write_dot3PauseAdminMode(Set& set) {
    enum : std::int32_t { kDisabled = 1, kTransmit, kReceive, kBoth };
    std::int32_t mode;
    InterfaceKey row;
    TRY(set.integer(mode));
    TRY(set.row(row));
    const std::uint32_t type = port_info(row.ifindex, PortItem::type);
    const std::uint32_t medium = port_info(row.ifindex, PortItem::medium);
    TRY(set.range(mode, kDisabled, kBoth));
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    const char* word = medium_word(type, medium);
    if (mode == kDisabled) return set.sub({"flowcontrol off%s", word});
    if (mode == kBoth) return set.sub({"flowcontrol on%s", word});
    const char* on = mode == kTransmit ? "send" : "receive";
    const char* off = mode == kTransmit ? "receive" : "send";
    // Kept on purpose: the one direction is turned on only where the other one cannot be turned off.
    if (set.sub({"flowcontrol %s off%s", off, word}) == noError) return noError;
    return set.sub({"flowcontrol %s on%s", on, word});
}

constexpr Table<InterfaceKey> dot3PauseTable{
    .id = DOT3PAUSETABLE,
    .command = "show interface_uib dot3Pause %d",
    .columns =
        {
            {1, "dot3PauseAdminMode", Integer, ReadWrite, WRITER(write_dot3PauseAdminMode)},
            {2, "dot3PauseOperMode", Integer, ReadOnly},
            {3, "dot3InPauseFrames", Counter32, ReadOnly},
            {4, "dot3OutPauseFrames", Counter32, ReadOnly},
            {5, "dot3HCInPauseFrames", Counter64, ReadOnly},
            {6, "dot3HCOutPauseFrames", Counter64, ReadOnly},
        },
};

// --- dot3HCStatsTable ------------------------------------------------------------------------------------------------

TABLE(dot3HCStatsTable, DOT3HCSTATSTABLE, 11, 1);

constexpr Table<InterfaceKey> dot3HCStatsTable{
    .id = DOT3HCSTATSTABLE,
    .command = "show interface_uib dot3HCStats %d",
    .columns =
        {
            {1, "dot3HCStatsAlignmentErrors", Counter64, ReadOnly},
            {2, "dot3HCStatsFCSErrors", Counter64, ReadOnly},
            {3, "dot3HCStatsInternalMacTransmitErrors", Counter64, ReadOnly},
            {4, "dot3HCStatsFrameTooLongs", Counter64, ReadOnly},
            {5, "dot3HCStatsInternalMacReceiveErrors", Counter64, ReadOnly},
            {6, "dot3HCStatsSymbolErrors", Counter64, ReadOnly},
        },
};

MODULE_END(35, dot3StatsTable, dot3CollTable, dot3ControlTable, dot3PauseTable, dot3HCStatsTable);

}  // namespace switchmib::MODULE
