// BRIDGE-MIB: the bridge itself, its ports and the forwarding database by MAC address. Spanning tree, frame counts and
// static entries are registered, and refuse to be set.
#define MODULE dot1dBridge
#include "framework/address.h"
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 17);

// Looked at before ACTION only: what arrives there has been checked.
Error write_dot1dTpAgingTime(Set& set) {
    std::int32_t seconds;
    TRY(set.integer(seconds));
    if (seconds != 0 && (set.phase == reserve1 || set.phase == reserve2)) TRY(set.range(seconds, 10, 1000000));
    return set.acting() ? set.global({"mac address-table aging-time %d", seconds}) : noError;
}

constexpr Scalars dot1dBridgeGlobals{
    .name = "dot1dBridgeGlobals",
    .scalars =
        {
            {{1, 1}, "dot1dBaseBridgeAddress", OctetString, ReadOnly},
            {{1, 2}, "dot1dBaseNumPorts", Integer, ReadOnly},
            {{1, 3}, "dot1dBaseType", Integer, ReadOnly},
            {{2, 1}, "dot1dStpProtocolSpecification", Integer, ReadOnly},
            {{2, 2}, "dot1dStpPriority", Integer, ReadWrite, refuses()},
            {{2, 3}, "dot1dStpTimeSinceTopologyChange", TimeTicks, ReadOnly},
            {{2, 4}, "dot1dStpTopChanges", Counter32, ReadOnly},
            {{2, 5}, "dot1dStpDesignatedRoot", OctetString, ReadOnly},
            {{2, 6}, "dot1dStpRootCost", Integer, ReadOnly},
            {{2, 7}, "dot1dStpRootPort", Integer, ReadOnly},
            {{2, 8}, "dot1dStpMaxAge", Integer, ReadOnly},
            {{2, 9}, "dot1dStpHelloTime", Integer, ReadOnly},
            {{2, 10}, "dot1dStpHoldTime", Integer, ReadOnly},
            {{2, 11}, "dot1dStpForwardDelay", Integer, ReadOnly},
            {{2, 12}, "dot1dStpBridgeMaxAge", Integer, ReadWrite, refuses()},
            {{2, 13}, "dot1dStpBridgeHelloTime", Integer, ReadWrite, refuses()},
            {{2, 14}, "dot1dStpBridgeForwardDelay", Integer, ReadWrite, refuses()},
            {{4, 1}, "dot1dTpLearnedEntryDiscards", Counter32, ReadOnly},
            {{4, 2},
             "dot1dTpAgingTime",
             Integer,
             ReadWrite,
             WRITER(write_dot1dTpAgingTime),
             shows("show mac address-table aging-time")},
        },
};

struct PortKey {
    std::uint32_t port;
    static constexpr Kind index[] = {Kind::integer};
};

// --- dot1dBasePortTable ----------------------------------------------------------------------------------------------

TABLE(dot1dBasePortTable, DOT1DBASEPORTTABLE, 1, 4, 1);

constexpr Table<PortKey> dot1dBasePortTable{
    .id = DOT1DBASEPORTTABLE,
    .accepts = [](PortKey& row, const Read&) { return row.port <= kLastPort; },
    .command = {"show snmp bridge-port interface 0",
                [](const PortKey& row) {
                    return Command("show snmp bridge-port interface %d", row.port + kPortIfIndexBase);
                }},
    .columns =
        {
            {1, "dot1dBasePort", Integer, ReadOnly},
            {2, "dot1dBasePortIfIndex", Integer, ReadOnly},
            {3, "dot1dBasePortCircuit", ObjectIdentifier, ReadOnly},
            {4, "dot1dBasePortDelayExceededDiscards", Counter32, ReadOnly},
            {5, "dot1dBasePortMtuExceededDiscards", Counter32, ReadOnly},
        },
};

// --- dot1dStpPortTable -----------------------------------------------------------------------------------------------

TABLE(dot1dStpPortTable, DOT1DSTPPORTTABLE, 2, 15, 1);

constexpr Table<PortKey> dot1dStpPortTable{
    .id = DOT1DSTPPORTTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dStpPort", Integer, ReadOnly},
            {2, "dot1dStpPortPriority", Integer, ReadWrite, refuses()},
            {3, "dot1dStpPortState", Integer, ReadOnly},
            {4, "dot1dStpPortEnable", Integer, ReadWrite, refuses(1, 2)},
            {5, "dot1dStpPortPathCost", Integer, ReadWrite, refuses()},
            {6, "dot1dStpPortDesignatedRoot", OctetString, ReadOnly},
            {7, "dot1dStpPortDesignatedCost", Integer, ReadOnly},
            {8, "dot1dStpPortDesignatedBridge", OctetString, ReadOnly},
            {9, "dot1dStpPortDesignatedPort", OctetString, ReadOnly},
            {10, "dot1dStpPortForwardTransitions", Counter32, ReadOnly},
            {11, "dot1dStpPortPathCost32", Integer, ReadWrite, refuses()},
        },
};

// --- dot1dTpFdbTable -------------------------------------------------------------------------------------------------

TABLE(dot1dTpFdbTable, DOT1DTPFDBTABLE, 4, 3, 1);

struct MacKey {
    Mac mac;
    static constexpr Kind index[] = {Kind::mac};
};

constexpr Table<MacKey> dot1dTpFdbTable{
    .id = DOT1DTPFDBTABLE,
    .command =
        [](const MacKey& row) {
            return Command("show uib default mac address-table address %s", lower(row.mac).c_str());
        },
    .columns =
        {
            {1, "dot1dTpFdbAddress", OctetString, ReadOnly},
            {2, "dot1dTpFdbPort", Integer, ReadOnly},
            {3, "dot1dTpFdbStatus", Integer, ReadOnly},
        },
};

// --- dot1dTpPortTable ------------------------------------------------------------------------------------------------

TABLE(dot1dTpPortTable, DOT1DTPPORTTABLE, 4, 4, 1);

constexpr Table<PortKey> dot1dTpPortTable{
    .id = DOT1DTPPORTTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dTpPort", Integer, ReadOnly},
            {2, "dot1dTpPortMaxInfo", Integer, ReadOnly},
            {3, "dot1dTpPortInFrames", Counter32, ReadOnly},
            {4, "dot1dTpPortOutFrames", Counter32, ReadOnly},
            {5, "dot1dTpPortInDiscards", Counter32, ReadOnly},
        },
};

// --- dot1dStaticTable ------------------------------------------------------------------------------------------------

TABLE(dot1dStaticTable, DOT1DSTATICTABLE, 5, 1, 1);

struct MacPortKey {
    Mac mac;
    std::uint32_t port;
    static constexpr Kind index[] = {Kind::mac, Kind::integer};
};

constexpr Table<MacPortKey> dot1dStaticTable{
    .id = DOT1DSTATICTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dStaticAddress", OctetString, ReadWrite, refuses()},
            {2, "dot1dStaticReceivePort", Integer, ReadWrite, refuses()},
            {3, "dot1dStaticAllowedToGoTo", OctetString, ReadWrite, refuses()},
            {4, "dot1dStaticStatus", Integer, ReadWrite, refuses(1, 5)},
        },
};

MODULE_END(47, dot1dBridgeGlobals, dot1dBasePortTable, dot1dStpPortTable, dot1dTpFdbTable, dot1dTpPortTable,
           dot1dStaticTable);

}  // namespace switchmib::MODULE
