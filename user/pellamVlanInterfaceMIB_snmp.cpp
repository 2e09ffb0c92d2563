// VLAN interfaces: the routed interface of a VLAN, listed, created and deleted.
#define MODULE pellamVlanInterfaceMIB
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 3, 4);

// --- nVlanInterfaceTable ---------------------------------------------------------------------------------------------

TABLE(nVlanInterfaceTable, NVLANINTERFACETABLE, 1, 1, 1);

Error write_nVlanInterfaceRowStatus(Set& set) {
    std::int32_t status;
    VlanKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.row_status(status));
    if (!set.acting()) return noError;
    switch (status) {
        case createAndGo: return set.global({"interface vlan%d", row.vid});
        case destroy: return set.global({"no interface vlan%d", row.vid});
        default: return noError;
    }
}

constexpr Table<VlanKey> nVlanInterfaceTable{
    .id = NVLANINTERFACETABLE,
    // The backend addresses a VLAN interface by its interface index; the key stays the VLAN id.
    .command =
        [](const VlanKey& row) {
            return row.vid == 0 ? Command("show vlan-interface")
                                : Command("show vlan-interface %d", row.vid + kVlanIfIndexBase);
        },
    .columns =
        {
            {1, "nVlanInterfaceVid", Gauge32, ReadOnly},
            {2, "nVlanInterfaceIfIndex", Integer, ReadOnly},
            {3, "nVlanInterfaceName", OctetString, ReadOnly},
            {4, "nVlanInterfaceRowStatus", Integer, ReadWrite, WRITER(write_nVlanInterfaceRowStatus)},
        },
};

MODULE_END(4, nVlanInterfaceTable);

}  // namespace switchmib::MODULE
