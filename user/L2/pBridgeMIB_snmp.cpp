// P-BRIDGE-MIB: what the bridge and its ports can do, each port's default priority and what it makes of priorities.
// Traffic classes, GARP and GMRP are registered, and refuse to be set.
#define MODULE pBridgeMIB
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kMib2, 17, 6);

alignas(std::uint32_t) unsigned char result_buffer[512];
constexpr Result kResult = result_buffer;

constexpr std::uint64_t kPriorityClass = 16384;  // of the show requests for priorities

constexpr Writer kRefused = refuses({.always = true});
constexpr Writer kRefusedSwitch = refuses({.low = 1, .high = 2, .always = true});  // on or off

unsigned char* device_capabilities(const Read& read) {
    static unsigned char bits;
    bits = 0x12;  // independent VLAN learning, configurable PVID tagging
    *read.value_length = sizeof bits;
    return &bits;
}

constexpr Scalars pBridgeMIBGlobals{
    .name = "pBridgeMIBGlobals",
    .scalars =
        {
            {{1, 1, 1}, "dot1dDeviceCapabilities", OctetString, ReadOnly, computes(device_capabilities)},
            {{1, 1, 2}, "dot1dTrafficClassesEnabled", Integer, ReadWrite, kRefusedSwitch, never},
            {{1, 1, 3}, "dot1dGmrpStatus", Integer, ReadWrite, kRefusedSwitch, never},
        },
};

struct PortKey {
    std::uint32_t port;
    static constexpr Kind index[] = {Kind::integer};
};
struct PortPriorityKey {
    std::uint32_t ifindex;
    std::uint32_t priority;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};

// --- dot1dPortCapabilitiesTable --------------------------------------------------------------------------------------

TABLE(dot1dPortCapabilitiesTable, DOT1DPORTCAPABILITIESTABLE, 1, 1, 4, 1);

constexpr Table<PortKey> dot1dPortCapabilitiesTable{
    .id = DOT1DPORTCAPABILITIESTABLE,
    .command = {"show port-capabilities", "show port-capabilities %d"},
    .result = kResult,
    .columns = {{1, "dot1dPortCapabilities", OctetString, ReadOnly}},
};

// --- dot1dPortPriorityTable ------------------------------------------------------------------------------------------

TABLE(dot1dPortPriorityTable, DOT1DPORTPRIORITYTABLE, 1, 2, 1, 1);

Error write_dot1dPortDefaultUserPriority(Set& set) {
    std::int32_t priority;
    InterfaceKey row;
    InterfaceName name;
    TRY(set.integer(priority));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, name));
    // genErr, not wrongValue, and before ACTION only: managers expect it.
    if ((set.phase == reserve1 || set.phase == reserve2) && set.range(priority, 0, 7) != noError) return genErr;
    if (!set.acting()) return noError;
    TRY(set.enter(name));
    return set.sub({"mls qos cos %d", priority});
}

constexpr Table<InterfaceKey> dot1dPortPriorityTable{
    .id = DOT1DPORTPRIORITYTABLE,
    .accepts = [](InterfaceKey& row, const Read&) { return row.ifindex <= kLastPortIfIndex; },
    .command = "show qos interface cos %d",
    .result = kResult,
    .request_class = kPriorityClass,
    .columns =
        {
            {1, "dot1dPortDefaultUserPriority", Integer, ReadWrite, WRITER(write_dot1dPortDefaultUserPriority)},
            {2, "dot1dPortNumTrafficClasses", Integer, ReadWrite, kRefused, shows("")},
        },
};

// --- dot1dUserPriorityRegenTable -------------------------------------------------------------------------------------

TABLE(dot1dUserPriorityRegenTable, DOT1DUSERPRIORITYREGENTABLE, 1, 2, 2, 1);

constexpr Table<PortPriorityKey> dot1dUserPriorityRegenTable{
    .id = DOT1DUSERPRIORITYREGENTABLE,
    .accepts = [](PortPriorityKey& row, const Read&) { return row.ifindex <= kLastPortIfIndex && row.priority <= 7; },
    .command =
        [](const PortPriorityKey& row) { return Command("show qos cos regen %d %d", row.ifindex, row.priority); },
    .result = kResult,
    .request_class = kPriorityClass,
    .counts_index = true,
    .columns =
        {
            {1, "dot1dUserPriority", Integer, ReadOnly, never},
            {2, "dot1dRegenUserPriority", Integer, ReadWrite, kRefused},
        },
};

// --- tables without values -------------------------------------------------------------------------------------------

TABLE(dot1dTrafficClassTable, DOT1DTRAFFICCLASSTABLE, 1, 2, 3, 1);

constexpr Table<PortPriorityKey> dot1dTrafficClassTable{
    .id = DOT1DTRAFFICCLASSTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dTrafficClassPriority", Integer, ReadOnly},
            {2, "dot1dTrafficClass", Integer, ReadWrite, kRefused},
        },
};

TABLE(dot1dPortOutboundAccessPriorityTable, DOT1DPORTOUTBOUNDACCESSPRIORITYTABLE, 1, 2, 4, 1);

constexpr Table<PortPriorityKey> dot1dPortOutboundAccessPriorityTable{
    .id = DOT1DPORTOUTBOUNDACCESSPRIORITYTABLE,
    .answers = false,
    .columns = {{1, "dot1dPortOutboundAccessPriority", Integer, ReadOnly}},
};

TABLE(dot1dPortGarpTable, DOT1DPORTGARPTABLE, 1, 3, 1, 1);

// Writable as registered, but without write methods.
constexpr Table<PortKey> dot1dPortGarpTable{
    .id = DOT1DPORTGARPTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dPortGarpJoinTime", Integer, ReadWrite},
            {2, "dot1dPortGarpLeaveTime", Integer, ReadWrite},
            {3, "dot1dPortGarpLeaveAllTime", Integer, ReadWrite},
        },
};

TABLE(dot1dPortGmrpTable, DOT1DPORTGMRPTABLE, 1, 4, 1, 1);

constexpr Table<PortKey> dot1dPortGmrpTable{
    .id = DOT1DPORTGMRPTABLE,
    .answers = false,
    .columns =
        {
            {1, "dot1dPortGmrpStatus", Integer, ReadWrite, kRefusedSwitch},
            {2, "dot1dPortGmrpFailedRegistrations", Counter32, ReadOnly},
            {3, "dot1dPortGmrpLastPduOrigin", OctetString, ReadOnly},
            {4, "dot1dPortRestrictedGroupRegistration", Integer, ReadWrite, kRefusedSwitch},
        },
};

MODULE_END(18, pBridgeMIBGlobals, dot1dPortCapabilitiesTable, dot1dPortPriorityTable, dot1dUserPriorityRegenTable,
           dot1dTrafficClassTable, dot1dPortOutboundAccessPriorityTable, dot1dPortGarpTable, dot1dPortGmrpTable);

}  // namespace switchmib::MODULE
