// IF-MIB, the interfaces group: ifNumber and ifTable.
#define MODULE interfaces
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 2);

constexpr Scalars interfacesGlobals{
    .name = "interfacesGlobals",
    .text = "show interface_uib interfaces_g",
    .scalars = {{{1}, "ifNumber", Integer, ReadOnly}},
};

// --- ifTable ---------------------------------------------------------------------------------------------------------

TABLE(ifTable, IFTABLE, 2, 1);

Error write_ifAdminStatus(Set& set) {
    constexpr std::int32_t kUp = 1, kDown = 2, kTesting = 3;
    std::int32_t status;
    InterfaceKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.range(status, kUp, kTesting));
    if (!set.acting()) return noError;
    TRY(enter_intf(row.ifindex));
    switch (status) {
        case kUp: return set.sub("no shutdown");
        case kDown: return set.sub("shutdown");
        default: return noError;  // testing is accepted and leaves the interface as it is
    }
}

constexpr Table<InterfaceKey> ifTable{
    .id = IFTABLE,
    // No form of its own for the first row: the backend answers index 0 with the first interface.
    .command = "show interface_uib interfaces %d",
    .columns =
        {
            {1, "ifIndex", Integer, ReadOnly},
            {2, "ifDescr", OctetString, ReadOnly},
            {3, "ifType", Integer, ReadOnly},
            {4, "ifMtu", Integer, ReadOnly},
            {5, "ifSpeed", Gauge32, ReadOnly},
            {6, "ifPhysAddress", OctetString, ReadOnly},
            {7, "ifAdminStatus", Integer, ReadWrite, WRITER(write_ifAdminStatus)},
            {8, "ifOperStatus", Integer, ReadOnly},
            {9, "ifLastChange", TimeTicks, ReadOnly},
            {10, "ifInOctets", Counter32, ReadOnly},
            {11, "ifInUcastPkts", Counter32, ReadOnly},
            {12, "ifInNUcastPkts", Counter32, ReadOnly},
            {13, "ifInDiscards", Counter32, ReadOnly},
            {14, "ifInErrors", Counter32, ReadOnly},
            {15, "ifInUnknownProtos", Counter32, ReadOnly},
            {16, "ifOutOctets", Counter32, ReadOnly},
            {17, "ifOutUcastPkts", Counter32, ReadOnly},
            {18, "ifOutNUcastPkts", Counter32, ReadOnly},
            {19, "ifOutDiscards", Counter32, ReadOnly},
            {20, "ifOutErrors", Counter32, ReadOnly},
            {21, "ifOutQLen", Gauge32, ReadOnly},
            {22, "ifSpecific", ObjectIdentifier, ReadOnly},
        },
};

MODULE_END(23, interfacesGlobals, ifTable);

}  // namespace switchmib::MODULE
