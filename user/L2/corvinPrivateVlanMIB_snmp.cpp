// Private VLANs: which VLANs are primary, isolated or community, which primary VLAN each secondary one belongs to, and
// the pairs of them on ports.
#define MODULE corvinPrivateVlanMIB
#include "L2/vlans.h"
#include "framework/module.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 8);

// A row of each table between varbinds and requests; nothing clears it after its row status.
struct PrivateVlan {
    std::uint32_t vid;
    std::uint32_t type;
    std::uint32_t primary;
    std::uint32_t pending;
};
struct PrivateVlanPort {
    std::uint32_t zero[2];
    std::uint32_t primary;
    std::uint32_t pending;
};
static_assert(sizeof(PrivateVlan) == 16 && sizeof(PrivateVlanPort) == 16);

SWITCHMIB_EXPORT PrivateVlan private_vlan;
constinit PrivateVlan private_vlan{};
SWITCHMIB_EXPORT PrivateVlanPort private_vlan_port;
constinit PrivateVlanPort private_vlan_port{};

// --- scalars ---------------------------------------------------------------------------------------------------------

Error write_nPrivateVlanSyncSecVlans(Set& set) {
    enum { synchronize = 1, nothing = 2 };
    std::int32_t number;
    TRY(set.integer(number));
    TRY(set.range(number, synchronize, nothing));
    if (!set.acting() || number == nothing) return noError;
    TRY(set.global("spanning-tree mst configuration"));
    return set.sub("private-vlan synchronize");
}

constexpr Scalars corvinPrivateVlanMIBGlobals{
    .name = "corvinPrivateVlanMIBGlobals",
    .scalars = {{{1, 1, 1},
                 "nPrivateVlanSyncSecVlans",
                 Integer,
                 ReadWrite,
                 WRITER(write_nPrivateVlanSyncSecVlans),
                 computes(constant<2>)}},
};

// --- nPrivateVlanVlanTable -------------------------------------------------------------------------------------------

TABLE(nPrivateVlanVlanTable, NPRIVATEVLANVLANTABLE, 1, 2, 1);

enum Type : std::uint32_t { primary = 1, isolated = 2, community = 3 };

// A VLAN's type, or no type; wrongValue in place of the second line for a type that there is not.
Error change_type(const Set& set, const char* no, std::uint32_t vid, std::uint32_t type) {
    static constexpr const char* kWords[] = {"primary", "isolated", "community"};
    TRY(set.global({"vlan %d", vid}));
    if (type < primary || type > community) return wrongValue;
    return set.sub({"%sprivate-vlan %s", no, kWords[type - primary]});
}

// The VLAN is the key's, the type and the primary VLAN are the record's, which an earlier request may have staged.
struct VlanRow : StagedRow<true, true> {
    VlanKey key;
    static constexpr PrivateVlan& staged = private_vlan;

    Error create(const Set& set) const {
        if (number_of(set, {"show snmp pvlan %d", key.vid}, 2) != 0) return genErr;
        TRY(change_type(set, "", key.vid, staged.type));
        if (staged.primary == 0 || staged.type == primary) return noError;
        TRY(set.global({"vlan %d", staged.primary}));
        return set.sub({"private-vlan association add %d", key.vid});
    }
    Error remove(const Set& set) const { return change_type(set, "no ", key.vid, staged.type); }
};

Error write_nPrivateVlanVlanType(Set& set) {
    std::int32_t number;
    VlanKey row;
    TRY(set.integer(number));
    TRY(set.row(row));
    TRY(set.range(number, primary, community));
    const auto type = static_cast<std::uint32_t>(number);
    if (stages(set, VlanRow::columns_stage_in_commit)) private_vlan = {row.vid, type, 0, 0};
    return set.acting() && !private_vlan.pending ? change_type(set, "", row.vid, type) : noError;
}

Error write_nPrivateVlanVlanAssocPriVlan(Set& set) {
    std::int32_t vid;
    VlanKey row;
    TRY(set.integer(vid));
    TRY(set.row(row));
    if (stages(set, VlanRow::columns_stage_in_commit)) {
        private_vlan.pending = 0;
        private_vlan.primary = static_cast<std::uint32_t>(vid);
    }
    if (!set.acting() || private_vlan.pending) return noError;
    return set.global({"pvlan modify association %d %d", row.vid, vid});
}

constexpr Table<VlanKey> nPrivateVlanVlanTable{
    .id = NPRIVATEVLANVLANTABLE,
    .command = "show snmp pvlan %d",
    .columns =
        {
            {1, "nPrivateVlanVlanIndex", Integer, ReadOnly, never},
            {2, "nPrivateVlanVlanType", Integer, ReadWrite, WRITER(write_nPrivateVlanVlanType)},
            {3, "nPrivateVlanVlanAssocPriVlan", Integer, ReadWrite, WRITER(write_nPrivateVlanVlanAssocPriVlan)},
            {4, "nPrivateVlanVlanRowStatus", Integer, ReadWrite, SHARED(write_staged_status<VlanRow>)},
        },
};

// --- nPrivateVlanIfVlanMapTable --------------------------------------------------------------------------------------

TABLE(nPrivateVlanIfVlanMapTable, NPRIVATEVLANIFVLANMAPTABLE, 1, 3, 1);

struct MapKey {
    std::uint32_t ifindex;
    std::uint32_t secondary;
    Octets<8> more;  // the backend takes a record of 16 octets
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// The primary VLAN is the record's.
struct MapRow : StagedRow<true, true> {
    MapKey key;
    static constexpr PrivateVlanPort& staged = private_vlan_port;

    Error create(const Set& set) const {
        return set.global(
            {"pvlan port-association create %d %d %d", key.ifindex, key.secondary, private_vlan_port.primary});
    }
    Error remove(const Set& set) const {
        return set.global({"pvlan port-association destroy %d %d", key.ifindex, key.secondary});
    }
};

Error write_nPrivateVlanIfVlanMapPriVlan(Set& set) {
    std::int32_t vid;
    MapKey row;
    TRY(set.integer(vid));
    TRY(set.row(row));
    if (stages(set, MapRow::columns_stage_in_commit)) private_vlan_port = {{}, static_cast<std::uint32_t>(vid), 0};
    if (!set.acting() || private_vlan_port.pending) return noError;
    return set.global({"pvlan port-association modify %d %d %d", row.ifindex, row.secondary, vid});
}

constexpr Table<MapKey> nPrivateVlanIfVlanMapTable{
    .id = NPRIVATEVLANIFVLANMAPTABLE,
    .command = [](const MapKey& row) { return Command("show snmp pvlan interface %d %d", row.ifindex, row.secondary); },
    .columns =
        {
            {1, "nPrivateVlanIfVlanMapIfIndex", Integer, ReadOnly, never},
            {2, "nPrivateVlanIfVlanMapSecVlan", Integer, ReadOnly, never},
            {3, "nPrivateVlanIfVlanMapPriVlan", Integer, ReadWrite, WRITER(write_nPrivateVlanIfVlanMapPriVlan)},
            {4, "nPrivateVlanIfVlanMapRowStatus", Integer, ReadWrite, SHARED(write_staged_status<MapRow>)},
        },
};

MODULE_END(9, corvinPrivateVlanMIBGlobals, nPrivateVlanVlanTable, nPrivateVlanIfVlanMapTable);

}  // namespace switchmib::MODULE
