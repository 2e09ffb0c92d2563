// IF-MIB, ifMIBObjects: ifXTable, and the stack, test and receive-address tables, which are registered but read as
// empty and refuse what is written to them.
#define MODULE ifMIB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 31);

// --- ifXTable --------------------------------------------------------------------------------------------------------

TABLE(ifXTable, IFXTABLE, 1, 1, 1);

Error write_ifLinkUpDownTrapEnable(Set& set) {
    constexpr std::int32_t kEnabled = 1, kDisabled = 2;
    std::int32_t enable;
    InterfaceKey row;
    TRY(set.integer(enable));
    TRY(set.row(row));
    TRY(set.range(enable, kEnabled, kDisabled));
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    return set.sub(enable == kEnabled ? "linktrap 1" : "linktrap 0");
}

Error write_ifAlias(Set& set) {
    constexpr std::size_t kLongest = 64;
    InterfaceKey row;
    TRY(set.type(OctetString));
    TRY(set.row(row));
    TRY(set.at_most(kLongest));
    const std::size_t length = set.length_given;
    if (length > 0 && set.value[0] == 255) return wrongValue;
    char alias[kLongest + 1] = "\r";
    // A carriage return alone is an alias like any other, the one control character that is sent.
    if (length != 1 || set.value[0] != '\r') TRY(set.text(alias));
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    return length == 0 ? set.sub("no desc") : set.sub({"desc %s", alias});
}

// Refused once its checks pass. Unlike other refused columns it parses its index, as the other columns do.
Error write_ifPromiscuousMode(Set& set) {
    std::int32_t promiscuous;
    InterfaceKey row;
    TRY(set.integer(promiscuous));
    TRY(set.row(row));
    TRY(set.range(promiscuous, 1, 2));
    return set.acting() ? genErr : noError;
}

constexpr Table<InterfaceKey> ifXTable{
    .id = IFXTABLE,
    // No form of its own for the first row: the backend answers index 0 with the first interface.
    .command = "show interface_uib ifMIB %d",
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
            {16, "ifPromiscuousMode", Integer, ReadWrite, WRITER(write_ifPromiscuousMode)},
            {17, "ifConnectorPresent", Integer, ReadOnly},
            {18, "ifAlias", OctetString, ReadWrite, WRITER(write_ifAlias)},
            {19, "ifCounterDiscontinuityTime", TimeTicks, ReadOnly},
        },
};

// --- ifStackTable ----------------------------------------------------------------------------------------------------

TABLE(ifStackTable, IFSTACKTABLE, 1, 2, 1);

struct StackKey {
    std::uint32_t higher;
    std::uint32_t lower;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

constexpr Table<StackKey> ifStackTable{
    .id = IFSTACKTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifStackHigherLayer", Integer, ReadOnly},
            {2, "ifStackLowerLayer", Integer, ReadOnly},
            {3, "ifStackStatus", Integer, ReadWrite, refuses(1, 6)},
        },
};

// --- ifTestTable -----------------------------------------------------------------------------------------------------

TABLE(ifTestTable, IFTESTTABLE, 1, 3, 1);

constexpr Table<InterfaceKey> ifTestTable{
    .id = IFTESTTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifTestId", Integer, ReadWrite, refuses()},
            {2, "ifTestStatus", Integer, ReadWrite, refuses(1, 2)},
            // An OBJECT IDENTIFIER of exactly one sub-identifier, on purpose.
            {3, "ifTestType", ObjectIdentifier, ReadWrite, refuses()},
            {4, "ifTestResult", Integer, ReadOnly},
            {5, "ifTestCode", ObjectIdentifier, ReadOnly},
            {6, "ifTestOwner", OctetString, ReadWrite, refuses()},
        },
};

// --- ifRcvAddressTable -----------------------------------------------------------------------------------------------

TABLE(ifRcvAddressTable, IFRCVADDRESSTABLE, 1, 4, 1);

struct AddressKey {
    std::uint32_t ifindex;
    Octets<6> address;
    static constexpr Kind index[] = {Kind::integer, Kind::counted_string(6)};
};

constexpr Table<AddressKey> ifRcvAddressTable{
    .id = IFRCVADDRESSTABLE,
    .answers = false,
    .columns =
        {
            {1, "ifRcvAddressAddress", OctetString, ReadOnly},
            {2, "ifRcvAddressStatus", Integer, ReadWrite, refuses(1, 6)},
            {3, "ifRcvAddressType", Integer, ReadWrite, refuses(1, 3)},
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

MODULE_END(33, ifXTable, ifStackTable, ifTestTable, ifRcvAddressTable, ifMIBGlobals);

}  // namespace switchmib::MODULE
