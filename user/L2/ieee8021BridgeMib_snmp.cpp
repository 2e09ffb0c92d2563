// IEEE8021-BRIDGE-MIB: each port's MRP timers. Everything else is registered, and refuses to be set.
#define MODULE ieee8021BridgeMib
#include "framework/module.h"
#include "framework/twins.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kIeee8021, 2);

// Indexes of the tables without values

struct ComponentKey {
    std::uint32_t component;
    static constexpr Kind index[] = {Kind::integer};
};
struct PortKey {
    std::uint32_t component, port;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
struct PriorityKey {
    std::uint32_t component, port, priority;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};
};
// Of the encoding table too, which never answers: its fifth field, drop eligible, has no room in a group's record.
struct CodePointKey {
    std::uint32_t component, port, row, code_point;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer, Kind::integer};
};

TABLE(ieee8021BridgeBaseTable, IEEE8021BRIDGEBASETABLE, 1, 1, 1, 1);

constexpr Table<ComponentKey> ieee8021BridgeBaseTable{
    .id = IEEE8021BRIDGEBASETABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeBaseComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgeBaseBridgeAddress", OctetString, ReadWrite, refuses()},
            {3, "ieee8021BridgeBaseNumPorts", Integer, ReadOnly},
            {4, "ieee8021BridgeBaseComponentType", Integer, ReadWrite, refuses()},
            {5, "ieee8021BridgeBaseDeviceCapabilities", OctetString, ReadWrite, refuses()},
            {6, "ieee8021BridgeBaseTrafficClassesEnabled", Integer, ReadWrite, refuses()},
            {7, "ieee8021BridgeBaseMmrpEnabledStatus", Integer, ReadWrite, refuses()},
            {8, "ieee8021BridgeBaseRowStatus", Integer, ReadWrite, refuses(active, destroy)},
        },
};

TABLE(ieee8021BridgeBasePortTable, IEEE8021BRIDGEBASEPORTTABLE, 1, 1, 4, 1);

constexpr Table<PortKey> ieee8021BridgeBasePortTable{
    .id = IEEE8021BRIDGEBASEPORTTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeBasePortComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgeBasePort", Gauge32, ReadOnly},
            {3, "ieee8021BridgeBasePortIfIndex", Integer, ReadWrite, refuses()},
            {4, "ieee8021BridgeBasePortDelayExceededDiscards", Counter64, ReadOnly},
            {5, "ieee8021BridgeBasePortMtuExceededDiscards", Counter64, ReadOnly},
            {6, "ieee8021BridgeBasePortCapabilities", OctetString, ReadOnly},
            {7, "ieee8021BridgeBasePortTypeCapabilities", OctetString, ReadOnly},
            {8, "ieee8021BridgeBasePortType", Integer, ReadOnly},
            {9, "ieee8021BridgeBasePortExternal", Integer, ReadOnly},
            {10, "ieee8021BridgeBasePortAdminPointToPoint", Integer, ReadWrite, refuses()},
            {11, "ieee8021BridgeBasePortOperPointToPoint", Integer, ReadOnly},
            {12, "ieee8021BridgeBasePortName", OctetString, ReadOnly},
        },
};

TABLE(ieee8021BridgeTpPortTable, IEEE8021BRIDGETPPORTTABLE, 1, 2, 1, 1);

constexpr Table<PortKey> ieee8021BridgeTpPortTable{
    .id = IEEE8021BRIDGETPPORTTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeTpPortComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgeTpPort", Gauge32, ReadOnly},
            {3, "ieee8021BridgeTpPortMaxInfo", Integer, ReadOnly},
            {4, "ieee8021BridgeTpPortInFrames", Counter64, ReadOnly},
            {5, "ieee8021BridgeTpPortOutFrames", Counter64, ReadOnly},
            {6, "ieee8021BridgeTpPortInDiscards", Counter64, ReadOnly},
        },
};

TABLE(ieee8021BridgePortPriorityTable, IEEE8021BRIDGEPORTPRIORITYTABLE, 1, 3, 1, 1);

constexpr Table<PortKey> ieee8021BridgePortPriorityTable{
    .id = IEEE8021BRIDGEPORTPRIORITYTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgePortDefaultUserPriority", Gauge32, ReadWrite, refuses()},
            {2, "ieee8021BridgePortNumTrafficClasses", Integer, ReadWrite, refuses()},
            {3, "ieee8021BridgePortPriorityCodePointSelection", Integer, ReadWrite, refuses()},
            {4, "ieee8021BridgePortUseDEI", Integer, ReadWrite, refuses()},
            {5, "ieee8021BridgePortRequireDropEncoding", Integer, ReadWrite, refuses()},
            {6, "ieee8021BridgePortServiceAccessPrioritySelection", Integer, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgeUserPriorityRegenTable, IEEE8021BRIDGEUSERPRIORITYREGENTABLE, 1, 3, 2, 1);

constexpr Table<PriorityKey> ieee8021BridgeUserPriorityRegenTable{
    .id = IEEE8021BRIDGEUSERPRIORITYREGENTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeUserPriority", Gauge32, ReadOnly},
            {2, "ieee8021BridgeRegenUserPriority", Gauge32, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgeTrafficClassTable, IEEE8021BRIDGETRAFFICCLASSTABLE, 1, 3, 3, 1);

constexpr Table<PriorityKey> ieee8021BridgeTrafficClassTable{
    .id = IEEE8021BRIDGETRAFFICCLASSTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeTrafficClassPriority", Gauge32, ReadOnly},
            {2, "ieee8021BridgeTrafficClass", Integer, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgePortOutboundAccessPriorityTable, IEEE8021BRIDGEPORTOUTBOUNDACCESSPRIORITYTABLE, 1, 3, 4, 1);

constexpr Table<PriorityKey> ieee8021BridgePortOutboundAccessPriorityTable{
    .id = IEEE8021BRIDGEPORTOUTBOUNDACCESSPRIORITYTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgePortOutboundAccessPriority", Gauge32, ReadOnly},
        },
};

TABLE(ieee8021BridgePortDecodingTable, IEEE8021BRIDGEPORTDECODINGTABLE, 1, 3, 5, 1);

constexpr Table<CodePointKey> ieee8021BridgePortDecodingTable{
    .id = IEEE8021BRIDGEPORTDECODINGTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgePortDecodingComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgePortDecodingPortNum", Gauge32, ReadOnly},
            {3, "ieee8021BridgePortDecodingPriorityCodePointRow", Integer, ReadOnly},
            {4, "ieee8021BridgePortDecodingPriorityCodePoint", Integer, ReadOnly},
            {5, "ieee8021BridgePortDecodingPriority", Gauge32, ReadWrite, refuses()},
            {6, "ieee8021BridgePortDecodingDropEligible", Integer, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgePortEncodingTable, IEEE8021BRIDGEPORTENCODINGTABLE, 1, 3, 6, 1);

constexpr Table<CodePointKey> ieee8021BridgePortEncodingTable{
    .id = IEEE8021BRIDGEPORTENCODINGTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgePortEncodingComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgePortEncodingPortNum", Gauge32, ReadOnly},
            {3, "ieee8021BridgePortEncodingPriorityCodePointRow", Integer, ReadOnly},
            {4, "ieee8021BridgePortEncodingPriorityCodePoint", Integer, ReadOnly},
            {5, "ieee8021BridgePortEncodingDropEligible", Integer, ReadOnly},
            {6, "ieee8021BridgePortEncodingPriority", Gauge32, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgeServiceAccessPriorityTable, IEEE8021BRIDGESERVICEACCESSPRIORITYTABLE, 1, 3, 7, 1);

constexpr Table<PriorityKey> ieee8021BridgeServiceAccessPriorityTable{
    .id = IEEE8021BRIDGESERVICEACCESSPRIORITYTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeServiceAccessPriorityComponentId", Gauge32, ReadOnly},
            {2, "ieee8021BridgeServiceAccessPriorityPortNum", Gauge32, ReadOnly},
            {3, "ieee8021BridgeServiceAccessPriorityReceived", Gauge32, ReadOnly},
            {4, "ieee8021BridgeServiceAccessPriorityValue", Gauge32, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgePortMrpTable, IEEE8021BRIDGEPORTMRPTABLE, 1, 4, 1, 1);

// Any time goes to the backend. The line names the interface by its index, so that no interface is entered.
template <FixedString timer>
Error write_timer(Set& set) {
    std::int32_t time;
    InterfaceKey row;
    TRY(set.integer(time));
    TRY(set.row(row));
    return set.acting() ? set.global({"mrp_snmp timer %s %d ifindex %d", timer.text, time, row.ifindex}) : noError;
}

constexpr Table<InterfaceKey> ieee8021BridgePortMrpTable{
    .id = IEEE8021BRIDGEPORTMRPTABLE,
    .command = "show snmp mrp timer %d",
    .columns =
        {
            {1, "ieee8021BridgePortMrpJoinTime", Integer, ReadWrite, SHARED(write_timer<"join">)},
            {2, "ieee8021BridgePortMrpLeaveTime", Integer, ReadWrite, SHARED(write_timer<"leave">)},
            {3, "ieee8021BridgePortMrpLeaveAllTime", Integer, ReadWrite, SHARED(write_timer<"leave-all">)},
        },
};

TABLE(ieee8021BridgePortMmrpTable, IEEE8021BRIDGEPORTMMRPTABLE, 1, 5, 1, 1);

constexpr Table<PortKey> ieee8021BridgePortMmrpTable{
    .id = IEEE8021BRIDGEPORTMMRPTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgePortMmrpEnabledStatus", Integer, ReadWrite, refuses()},
            {2, "ieee8021BridgePortMmrpFailedRegistrations", Counter64, ReadOnly},
            {3, "ieee8021BridgePortMmrpLastPduOrigin", OctetString, ReadOnly},
            {4, "ieee8021BridgePortRestrictedGroupRegistration", Integer, ReadWrite, refuses()},
        },
};

TABLE(ieee8021BridgeILanIfTable, IEEE8021BRIDGEILANIFTABLE, 1, 6, 1, 1);

constexpr Table<InterfaceKey> ieee8021BridgeILanIfTable{
    .id = IEEE8021BRIDGEILANIFTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeILanIfRowStatus", Integer, ReadWrite, refuses(active, destroy)},
        },
};

TABLE(ieee8021BridgeDot1dPortTable, IEEE8021BRIDGEDOT1DPORTTABLE, 1, 7, 1, 1);

constexpr Table<PortKey> ieee8021BridgeDot1dPortTable{
    .id = IEEE8021BRIDGEDOT1DPORTTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021BridgeDot1dPortRowStatus", Integer, ReadWrite, refuses(active, destroy)},
        },
};

MODULE_END(62, ieee8021BridgeBaseTable, ieee8021BridgeBasePortTable, ieee8021BridgeTpPortTable,
           ieee8021BridgePortPriorityTable, ieee8021BridgeUserPriorityRegenTable, ieee8021BridgeTrafficClassTable,
           ieee8021BridgePortOutboundAccessPriorityTable, ieee8021BridgePortDecodingTable,
           ieee8021BridgePortEncodingTable, ieee8021BridgeServiceAccessPriorityTable, ieee8021BridgePortMrpTable,
           ieee8021BridgePortMmrpTable, ieee8021BridgeILanIfTable, ieee8021BridgeDot1dPortTable);

}  // namespace switchmib::MODULE
