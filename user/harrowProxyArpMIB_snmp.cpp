// Proxy ARP: the interfaces that answer for other networks (proxy ARP) and for their own (local proxy ARP).
#define MODULE harrowProxyArpMIB
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kSecondVendor, 10, 120, 100, 2, 14);

constexpr Scalars proxyARPMIBGlobals{
    .name = "proxyARPMIBGlobals",
    .text = "show ip snmp proxy-arp num",
    .scalars =
        {
            {{1, 1}, "proxyARPNumber", Integer, ReadOnly},
            {{1, 3}, "localproxyARPNumber", Integer, ReadOnly},
        },
};

// Puts a row's interface into a table (createAndGo), where `feature` is on, or takes it out (destroy).
Error write_status(const Set& set, const char* feature) {
    std::int32_t status = 0;
    InterfaceKey row;
    InterfaceName interface;
    TRY(set.row(row));
    // Type and length are checked in these two phases alone: a status is what up to four octets of the value make.
    if (set.phase == reserve1 || set.phase == commit) {
        TRY(set.type(Integer));
        TRY(set.length(sizeof status));
    }
    if (!set.acting()) return noError;
    set.copy(&status, sizeof status);
    TRY(set.row_status(status));
    if (status != createAndGo && status != destroy) return noError;
    TRY(set.interface_name(row.ifindex, interface, wrongValue));
    TRY(set.enter(interface));
    return set.sub(Command("%s%s", status == destroy ? "no " : "", feature));
}

// --- proxyARPTable ---------------------------------------------------------------------------------------------------

TABLE(proxyARPTable, PROXYARPTABLE, 1, 2, 1);

Error write_proxyARPRowStatus(Set& set) { return write_status(set, "ip proxy-arp"); }

constexpr Table<InterfaceKey> proxyARPTable{
    .id = PROXYARPTABLE,
    .command = "show ip snmp proxy-arp entry %d",
    .columns =
        {
            {1, "proxyARPIfIndex", Integer, ReadOnly},
            {2, "proxyARPRowStatus", Integer, ReadWrite, WRITER(write_proxyARPRowStatus)},
        },
};

// --- localproxyARPTable ----------------------------------------------------------------------------------------------

TABLE(localproxyARPTable, LOCALPROXYARPTABLE, 1, 4, 1);

Error write_localproxyARPRowStatus(Set& set) { return write_status(set, "ip local-proxy-arp"); }

constexpr Table<InterfaceKey> localproxyARPTable{
    .id = LOCALPROXYARPTABLE,
    .command = "show ip snmp local-proxy-arp entry %d",
    .columns =
        {
            {1, "localproxyARPIfIndex", Integer, ReadOnly},
            {2, "localproxyARPRowStatus", Integer, ReadWrite, WRITER(write_localproxyARPRowStatus)},
        },
};

MODULE_END(6, proxyARPMIBGlobals, proxyARPTable, localproxyARPTable);

}  // namespace switchmib::MODULE
