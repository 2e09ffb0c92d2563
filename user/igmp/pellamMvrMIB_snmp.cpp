// Multicast VLAN registration: which groups a VLAN carries for the others, and a VLAN's source and receiver ports.
#define MODULE pellamMvrMIB
#include "framework/address.h"
#include "framework/module.h"
#include "framework/write.h"
#include "igmp/multicast.h"

#include <cstdlib>
#include <cstring>

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 16);

// --- groups ----------------------------------------------------------------------------------------------------------

TABLE(mvrSourceVlanGroupTable, MVRSOURCEVLANGROUPTABLE, 1, 1, 1);

struct GroupKey {
    std::uint32_t vid;
    InetAddress group;
    std::uint32_t count;  // of groups from that one on
    static constexpr Kind index[] = {Kind::integer, Kind::address, Kind::integer};
};
static_assert(sizeof(GroupKey) == 36);

const char* group_word(const GroupKey& row, AddressText& text) { return address_word(row.group, text, "0.0.0.0"); }

Error write_mvrSourceVlanGroupRowStatus(Set& set) {
    std::int32_t status;
    GroupKey row;
    AddressText text;
    TRY(set.integer(status));
    TRY(set.row(row));
    const char* group = group_word(row, text);
    TRY(set.row_status(status));
    if (!set.acting()) return noError;
    TRY(set.global("mvr"));  // for a status without a line too
    switch (status) {
        case createAndGo: return set.sub({"mvr-group %s count %d vlan %d", group, row.count, row.vid});
        case destroy: return set.sub({"no mvr-group %s vlan %d", group, row.vid});
        default: return noError;
    }
}

constexpr Table<GroupKey> mvrSourceVlanGroupTable{
    .id = MVRSOURCEVLANGROUPTABLE,
    .command =
        [](const GroupKey& row) {
            AddressText text;
            return Command("show mvr group snmp vlan %d group %s", row.vid, group_word(row, text));
        },
    .columns =
        {
            {1, "mvrSourceVlanGroupVlanId", Integer, ReadOnly},
            {2, "mvrSourceVlanGroupAddressType", Integer, ReadOnly},
            {3, "mvrSourceVlanGroupAddress", OctetString, ReadOnly},
            {4, "mvrSourceVlanGroupCount", Integer, ReadWrite},  // set by the index of a row that is created
            {5, "mvrSourceVlanGroupRowStatus", Integer, ReadWrite, WRITER(write_mvrSourceVlanGroupRowStatus)},
        },
};

// --- ports -----------------------------------------------------------------------------------------------------------

TABLE(mvrPortTable, MVRPORTTABLE, 1, 2, 1);

// Where a port list that is written is looked at. The list itself is its last 12 octets, after 640 that mean nothing
// here; a shorter one has no ports. Made when the module is initialised.
constexpr std::size_t kAreaSize = 652, kPorts = 640;
unsigned char* area = nullptr;

// Sends a port list as three decimal numbers. Operators see the line in every phase.
Error write_ports(const Set& set, const char* role) {
    VlanKey row;
    TRY(set.type(OctetString));
    TRY(set.row(row));
    if (area == nullptr) return genErr;
    std::memset(area, 0, kAreaSize);
    set.copy(area, kAreaSize);  // a longer list is cut
    const unsigned char* ports = area + kPorts;
    // Two blanks before the VLAN.
    const Command line("mvr snmp vlan  %d %s %d %d %d", row.vid, role, port_word(ports), port_word(ports + 4),
                       port_word(ports + 8));
    pal_log_output_ui_simple("[%s,%d]cmd[%s]\n", set.caller, __LINE__, line.c_str());
    return set.acting() ? set.global(line) : noError;
}

Error write_mvrSourcePortList(Set& set) { return write_ports(set, "source"); }
Error write_mvrReceivePortList(Set& set) { return write_ports(set, "receive"); }

Error write_mvrPortRowStatus(Set& set) {
    std::int32_t status;
    VlanKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.row_status(status));
    if (!set.acting() || status != destroy) return noError;
    // "%d" itself is what the backend takes, for any VLAN.
    return set.global("mvr snmp vlan %d remove all_port");
}

constexpr Table<VlanKey> mvrPortTable{
    .id = MVRPORTTABLE,
    .command = "show mvr member snmp vlan %d",
    .columns =
        {
            {1, "mvrPortVlanId", Integer, ReadOnly},
            {2, "mvrSourcePortList", OctetString, ReadWrite, WRITER(write_mvrSourcePortList)},
            {3, "mvrReceivePortList", OctetString, ReadWrite, WRITER(write_mvrReceivePortList)},
            {4, "mvrPortRowStatus", Integer, ReadWrite, WRITER(write_mvrPortRowStatus)},
        },
};

VARIABLES(9, mvrSourceVlanGroupTable, mvrPortTable);

SWITCHMIB_EXPORT void MODULE_INIT() {
    REGISTER();
    // Also when the agent refuses the module.
    if (area == nullptr) area = static_cast<unsigned char*>(std::malloc(kAreaSize));
}

}  // namespace switchmib::MODULE
