// How each port forwards multicast frames to groups that are not registered.
#define MODULE pellamL2FDB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 15);

TABLE(nL2FDBMulticastFilterModeTable, NL2FDBMULTICASTFILTERMODETABLE, 1, 1, 1);

Error write_nL2FDBMcastFilterMode(Set& set) {
    return set.interface_line({{1, "multicast filtering-mode forward-all"},
                               {2, "multicast filtering-mode forward-unregistered"},
                               {3, "multicast filtering-mode filter-unregistered"}});
}

// Rows are asked for by the interface's name; one without a name has no value, but a write method.
Command show_mode(const InterfaceKey& row) {
    InterfaceName name;
    if (Set::interface_name(row.ifindex, name) != noError) return no_answer;
    return {"show debugging multicast filtering-mode interface %s", name.text};
}

constexpr Table<InterfaceKey> nL2FDBMulticastFilterModeTable{
    .id = NL2FDBMULTICASTFILTERMODETABLE,
    .command = {"show debugging multicast filtering-mode", show_mode},
    .columns =
        {
            {1, "nL2FDBMcastFilterModeIfIndex", Integer, ReadOnly, never},
            {2, "nL2FDBMcastFilterMode", Integer, ReadWrite, WRITER(write_nL2FDBMcastFilterMode)},
        },
};

MODULE_END(2, nL2FDBMulticastFilterModeTable);

}  // namespace switchmib::MODULE
