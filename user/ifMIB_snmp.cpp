// IF-MIB, ifMIBObjects: ifXTable, and the stack, test and receive-address tables, which are registered but read as
// empty and refuse what is written to them.
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::ifMIB {

MODULE(ifMIB, kMib2, 31);

// --- ifXTable --------------------------------------------------------------------------------------------------------

TABLE(ifMIB, IFXTABLE, 1, 1, 1);

Error write_ifLinkUpDownTrapEnable(Set& set) {
    constexpr std::int32_t kEnabled = 1, kDisabled = 2;
    std::int32_t enable;
    InterfaceKey row;
    TRY(set.integer(enable));
    TRY(set.row(IFXTABLE, row));
    TRY(set.range(enable, kEnabled, kDisabled));
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    return set.sub(enable == kEnabled ? "linktrap 1" : "linktrap 0");
}

Error write_ifAlias(Set& set) {
    constexpr std::size_t kLongest = 64;
    InterfaceKey row;
    TRY(set.type(OctetString));
    TRY(set.row(IFXTABLE, row));
    const std::size_t length = set.length_given;
    if (length > kLongest) return wrongLength;
    if (length > 0 && set.value[0] == 255) return wrongValue;
    // A carriage return alone is an alias like any other.
    if (length > 1 && set.value[0] == '\r') return wrongValue;
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    if (length == 0) return set.sub("no desc");
    return set.sub({"desc %.*s", static_cast<int>(length), reinterpret_cast<const char*>(set.value)});
}

constexpr Table<InterfaceKey> ifXTable{
    .name = "ifXTable",
    .id = IFXTABLE,
    // No form of its own for the first row: the backend answers index 0 with the first interface.
    .command = [](const InterfaceKey& row) { return Command("show interface_uib ifMIB %d", row.ifindex); },
    .columns =
        {
            {1, "ifName", OctetString, ReadOnly},
            {2, "ifInMulticastPkts", Counter32, ReadOnly},
            {3, "ifInBroadcastPkts", Counter32, ReadOnly},
            {4, "ifOutMulticastPkts", Counter32, ReadOnly},
            {5, "ifOutBroadcastPkts", Counter32, ReadOnly},
            {6, "ifHCInOctets", Counter64, ReadOnly},
            {7, "ifHCInUcastPkts", Counter64, ReadOnly},
            {8, "ifHCInMulticastPkts", Counter64, ReadOnly},
            {9, "ifHCInBroadcastPkts", Counter64, ReadOnly},
            {10, "ifHCOutOctets", Counter64, ReadOnly},
            {11, "ifHCOutUcastPkts", Counter64, ReadOnly},
            {12, "ifHCOutMulticastPkts", Counter64, ReadOnly},
            {13, "ifHCOutBroadcastPkts", Counter64, ReadOnly},
            {14, "ifLinkUpDownTrapEnable", Integer, ReadWrite, WRITER(write_ifLinkUpDownTrapEnable)},
            {15, "ifHighSpeed", Gauge32, ReadOnly},
            {16, "ifPromiscuousMode", Integer, ReadWrite, refusing<Refusal{.table = &IFXTABLE, .low = 1, .high = 2}>},
            {17, "ifConnectorPresent", Integer, ReadOnly},
            {18, "ifAlias", OctetString, ReadWrite, WRITER(write_ifAlias)},
            {19, "ifCounterDiscontinuityTime", TimeTicks, ReadOnly},
        },
};

// --- ifStackTable ----------------------------------------------------------------------------------------------------

TABLE(ifMIB, IFSTACKTABLE, 1, 2, 1);

constexpr Table<NoKey> ifStackTable{
    .name = "ifStackTable",
    .id = IFSTACKTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifStackHigherLayer", Integer, ReadOnly},
            {2, "ifStackLowerLayer", Integer, ReadOnly},
            {3, "ifStackStatus", Integer, ReadWrite, refusing<Refusal{.table = &IFSTACKTABLE, .low = 1, .high = 6}>},
        },
};

// --- ifTestTable -----------------------------------------------------------------------------------------------------

TABLE(ifMIB, IFTESTTABLE, 1, 3, 1);

constexpr Table<NoKey> ifTestTable{
    .name = "ifTestTable",
    .id = IFTESTTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifTestId", Integer, ReadWrite, refusing<Refusal{.table = &IFTESTTABLE}>},
            {2, "ifTestStatus", Integer, ReadWrite, refusing<Refusal{.table = &IFTESTTABLE, .low = 1, .high = 2}>},
            // An OBJECT IDENTIFIER of exactly one sub-identifier, on purpose.
            {3, "ifTestType", ObjectIdentifier, ReadWrite,
             refusing<Refusal{.type = ObjectIdentifier, .length = 4, .table = &IFTESTTABLE}>},
            {4, "ifTestResult", Integer, ReadOnly},
            {5, "ifTestCode", ObjectIdentifier, ReadOnly},
            {6, "ifTestOwner", OctetString, ReadWrite,
             refusing<Refusal{.type = OctetString, .length = kAnyLength, .table = &IFTESTTABLE}>},
        },
};

// --- ifRcvAddressTable -----------------------------------------------------------------------------------------------

TABLE(ifMIB, IFRCVADDRESSTABLE, 1, 4, 1);

constexpr Table<NoKey> ifRcvAddressTable{
    .name = "ifRcvAddressTable",
    .id = IFRCVADDRESSTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifRcvAddressAddress", OctetString, ReadOnly},
            {2, "ifRcvAddressStatus", Integer, ReadWrite,
             refusing<Refusal{.table = &IFRCVADDRESSTABLE, .low = 1, .high = 6}>},
            {3, "ifRcvAddressType", Integer, ReadWrite,
             refusing<Refusal{.table = &IFRCVADDRESSTABLE, .low = 1, .high = 3}>},
        },
};

// --- scalars ---------------------------------------------------------------------------------------------------------

constexpr Scalars ifMIBGlobals{
    .name = "ifMIBGlobals",
    .text = "show interface_uib ifMIB_g",
    .scalars =
        {
            {{1, 5}, "ifTableLastChange", TimeTicks, ReadOnly},
            {{1, 6}, "ifStackLastChange", TimeTicks, ReadOnly},
        },
};

MODULE_INIT(ifMIB, ifMIB_snmp_init, "user/ifMIB_snmp", 33, ifXTable, ifStackTable, ifTestTable, ifRcvAddressTable,
            ifMIBGlobals);

}  // namespace switchmib::ifMIB
