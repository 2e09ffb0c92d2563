// IEEE8021-FQTSS-MIB: the bandwidth that each port has for the stream reservation classes, and where their domain ends.
#define MODULE ieee8021FqtssMib
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kIeee8021, 16);

// Of the served tables. The backend asks for the first row with port 0.
struct ClassKey {
    std::uint32_t port;
    std::uint32_t traffic_class;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// --- ieee8021FqtssBapTable -------------------------------------------------------------------------------------------

TABLE(ieee8021FqtssBapTable, IEEE8021FQTSSBAPTABLE, 1, 1, 1, 1);

// Any number goes to the backend.
Error write_ieee8021FqtssDeltaBandwidth(Set& set) {
    std::uint32_t bandwidth;
    ClassKey row;
    TRY(set.unsigned32(bandwidth));
    TRY(set.row(row));
    if (!set.acting()) return noError;
    if (row.traffic_class > 1) return genErr;
    return set.global({"msrp_snmp interface %d delta-bandwidth class-%s %d", row.port,
                       row.traffic_class == 0 ? "a" : "b", bandwidth});
}

constexpr Table<ClassKey> ieee8021FqtssBapTable{
    .id = IEEE8021FQTSSBAPTABLE,
    .command = {"show snmp ieee8021fqtss-bap 0 0",
                [](const ClassKey& row) {
                    return Command("show snmp ieee8021fqtss-bap %d %d", row.port, row.traffic_class);
                },
                &ClassKey::port},
    .columns =
        {
            {1, "ieee8021FqtssBAPTrafficClass", Unsigned32, ReadOnly, never},
            {2, "ieee8021FqtssDeltaBandwidth", Unsigned32, ReadWrite, WRITER(write_ieee8021FqtssDeltaBandwidth)},
            {3, "ieee8021FqtssOperIdleSlopeMs", Unsigned32, ReadOnly, never},
            {4, "ieee8021FqtssOperIdleSlopeLs", Unsigned32, ReadOnly, never},
            {5, "ieee8021FqtssAdminIdleSlopeMs", Unsigned32, ReadWrite, never},
            {6, "ieee8021FqtssAdminIdleSlopeLs", Unsigned32, ReadWrite, never},
            {7, "ieee8021FqtssBapRowStatus", Integer, ReadWrite, never},
        },
};

// --- ieee8021FqtssTxSelectionAlgorithmTable --------------------------------------------------------------------------

TABLE(ieee8021FqtssTxSelectionAlgorithmTable, IEEE8021FQTSSTXSELECTIONALGORITHMTABLE, 1, 2, 1, 1);

struct ComponentClassKey {
    std::uint32_t component, port, traffic_class;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};
};

constexpr Table<ComponentClassKey> ieee8021FqtssTxSelectionAlgorithmTable{
    .id = IEEE8021FQTSSTXSELECTIONALGORITHMTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021FqtssTrafficClass", Unsigned32, ReadOnly},
            {2, "ieee8021FqtssTxSelectionAlgorithmID", Unsigned32, ReadWrite, refuses()},
        },
};

// --- ieee8021FqtssSrpRegenOverrideTable ------------------------------------------------------------------------------

TABLE(ieee8021FqtssSrpRegenOverrideTable, IEEE8021FQTSSSRPREGENOVERRIDETABLE, 1, 2, 2, 1);

constexpr Table<ClassKey> ieee8021FqtssSrpRegenOverrideTable{
    .id = IEEE8021FQTSSSRPREGENOVERRIDETABLE,
    .command = {"show snmp ieee8021fqtss-srp-regen-override 0 0",
                [](const ClassKey& row) {
                    return Command("show snmp ieee8021fqtss-srp-regen-override %d %d", row.port, row.traffic_class);
                },
                &ClassKey::port},
    .columns =
        {
            {1, "ieee8021FqtssSrClassPriority", Unsigned32, ReadOnly, never},
            {2, "ieee8021FqtssPriorityRegenOverride", Unsigned32, ReadWrite, never},
            {3, "ieee8021FqtssSrpBoundaryPort", Integer, ReadOnly},
        },
};

MODULE_END(12, ieee8021FqtssBapTable, ieee8021FqtssTxSelectionAlgorithmTable, ieee8021FqtssSrpRegenOverrideTable);

}  // namespace switchmib::MODULE
