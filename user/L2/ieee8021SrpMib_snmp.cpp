// IEEE8021-SRP-MIB: the Multiple Stream Registration Protocol of the bridge and its ports, and the registered streams.
#define MODULE ieee8021SrpMib
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kIeee8021, 19);

struct ComponentKey {
    std::uint32_t component;
    static constexpr Kind index[] = {Kind::integer};
};

// --- ieee8021SrpBridgeBaseTable --------------------------------------------------------------------------------------

TABLE(ieee8021SrpBridgeBaseTable, IEEE8021SRPBRIDGEBASETABLE, 1, 1, 1, 1);

// Goes out in the backend's current mode, which takes it wherever it is: no line enters a mode before.
Error write_switch(const Set& set, Lines lines) {
    std::int32_t status;
    ComponentKey row;
    const char* line;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.choose(lines, status, line));
    return set.acting() ? set.sub(line) : noError;
}
Error write_ieee8021SrpBridgeBaseMsrpEnabledStatus(Set& set) {
    return write_switch(set, {{1, "msrp global"}, {2, "no msrp global"}});
}
Error write_ieee8021SrpBridgeBaseMsrpTalkerPruning(Set& set) {
    return write_switch(set, {{1, "msrp talker-pruning"}, {2, "no msrp talker-pruning"}});
}

Error write_ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize(Set& set) {
    std::uint32_t octets;
    ComponentKey row;
    TRY(set.unsigned32(octets));
    TRY(set.row(row));
    return set.acting() ? set.global({"msrp latency-frame-size %d", octets}) : noError;
}

constexpr Table<ComponentKey> ieee8021SrpBridgeBaseTable{
    .id = IEEE8021SRPBRIDGEBASETABLE,
    .command = {"show snmp ieee8021srp-bridge", "show snmp ieee8021srp-bridge %d"},
    .columns =
        {
            {1, "ieee8021SrpBridgeBaseMsrpEnabledStatus", Integer, ReadWrite,
             WRITER(write_ieee8021SrpBridgeBaseMsrpEnabledStatus)},
            {2, "ieee8021SrpBridgeBaseMsrpTalkerPruning", Integer, ReadWrite,
             WRITER(write_ieee8021SrpBridgeBaseMsrpTalkerPruning)},
            {3, "ieee8021SrpBridgeBaseMsrpMaxFanInPorts", Unsigned32, ReadWrite, never},
            {4, "ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", Unsigned32, ReadWrite,
             WRITER(write_ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize)},
        },
};

// --- ieee8021SrpBridgePortTable --------------------------------------------------------------------------------------

TABLE(ieee8021SrpBridgePortTable, IEEE8021SRPBRIDGEPORTTABLE, 1, 1, 2, 1);

// Kept on purpose: a write whose interface line is refused succeeds, and sends nothing more.
Error port_line(const Set& set, const InterfaceName& port, const Command& line) {
    if (!set.acting() || set.enter(port) != noError) return noError;
    return set.sub(line);
}

Error write_ieee8021SrpBridgePortMsrpEnabledStatus(Set& set) {
    std::int32_t status;
    InterfaceKey row;
    InterfaceName port;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, port));
    TRY(set.range(status, 1, 2));
    return port_line(set, port, {"%smsrp enable", status == 1 ? "" : "no "});
}

Error write_ieee8021SrpBridgePortSrPvid(Set& set) {
    std::uint32_t vid;
    InterfaceKey row;
    InterfaceName port;
    TRY(set.unsigned32(vid));
    TRY(set.row(row));
    TRY(set.interface_name(row.ifindex, port));
    return port_line(set, port, {"msrp sr-pvid %d", vid});
}

constexpr Table<InterfaceKey> ieee8021SrpBridgePortTable{
    .id = IEEE8021SRPBRIDGEPORTTABLE,
    .command = {"show snmp ieee8021srp-bridge interface", "show snmp ieee8021srp-bridge interface %d"},
    .columns =
        {
            {1, "ieee8021SrpBridgePortMsrpEnabledStatus", Integer, ReadWrite,
             WRITER(write_ieee8021SrpBridgePortMsrpEnabledStatus)},
            {2, "ieee8021SrpBridgePortMsrpFailedRegistrations", Counter64, ReadOnly, never},
            {3, "ieee8021SrpBridgePortMsrpLastPduOrigin", OctetString, ReadOnly, never},
            {4, "ieee8021SrpBridgePortSrPvid", Unsigned32, ReadWrite, WRITER(write_ieee8021SrpBridgePortSrPvid)},
        },
};

// --- ieee8021SrpLatencyTable -----------------------------------------------------------------------------------------

TABLE(ieee8021SrpLatencyTable, IEEE8021SRPLATENCYTABLE, 1, 2, 1, 1);

struct LatencyKey {
    std::uint32_t component, port, traffic_class;
    static constexpr Kind index[] = {Kind::integer, Kind::integer, Kind::integer};
};

constexpr Table<LatencyKey> ieee8021SrpLatencyTable{
    .id = IEEE8021SRPLATENCYTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021SrpTrafficClass", Unsigned32, ReadOnly},
            {2, "ieee8021SrpPortTcLatency", Unsigned32, ReadOnly},
        },
};

// --- ieee8021SrpStreamTable ------------------------------------------------------------------------------------------

TABLE(ieee8021SrpStreamTable, IEEE8021SRPSTREAMTABLE, 1, 3, 1, 1);

using StreamId = Octets<8>;  // the talker's MAC address and a number of its own

struct StreamKey {
    std::uint32_t component;
    StreamId id;
    std::uint32_t port;
    static constexpr Kind index[] = {Kind::integer, Kind::fixed_string(sizeof(StreamId)), Kind::integer};
};

constexpr Table<StreamKey> ieee8021SrpStreamTable{
    .id = IEEE8021SRPSTREAMTABLE,
    .command = {"show snmp ieee8021srp-stream 0 00:00:00:00:00:00:00:00 0",
                [](const StreamKey& row) {
                    const unsigned char* o = row.id.octets;
                    return Command("show snmp ieee8021srp-stream %d %02x:%02x:%02x:%02x:%02x:%02x:%02x:%02x %d",
                                   row.component, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], row.port);
                },
                &StreamKey::component},
    .columns =
        {
            {1, "ieee8021SrpStreamId", OctetString, ReadOnly},
            {2, "ieee8021SrpStreamDestinationAddress", OctetString, ReadOnly},
            {3, "ieee8021SrpStreamVlanId", Unsigned32, ReadOnly},
            {4, "ieee8021SrpStreamTspecMaxFrameSize", Unsigned32, ReadOnly},
            {5, "ieee8021SrpStreamTspecMaxIntervalFrames", Unsigned32, ReadOnly},
            {6, "ieee8021SrpStreamDataFramePriority", Integer, ReadOnly, never},
            {7, "ieee8021SrpStreamRank", Integer, ReadOnly},
        },
};

// --- ieee8021SrpReservationsTable ------------------------------------------------------------------------------------

TABLE(ieee8021SrpReservationsTable, IEEE8021SRPRESERVATIONSTABLE, 1, 4, 1, 1);

struct ReservationKey {
    StreamId id;
    std::uint32_t direction, component, port;
    static constexpr Kind index[] = {Kind::fixed_string(sizeof(StreamId)), Kind::integer, Kind::integer, Kind::integer};
};

constexpr Table<ReservationKey> ieee8021SrpReservationsTable{
    .id = IEEE8021SRPRESERVATIONSTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021SrpReservationStreamId", OctetString, ReadOnly},
            {2, "ieee8021SrpReservationDirection", Integer, ReadOnly},
            {3, "ieee8021SrpReservationDeclarationType", Integer, ReadOnly},
            {4, "ieee8021SrpReservationAccumulatedLatency", Unsigned32, ReadOnly},
            {5, "ieee8021SrpReservationFailureBridgeId", OctetString, ReadOnly},
            {6, "ieee8021SrpReservationFailureCode", Integer, ReadOnly},
            {7, "ieee8021SrpReservationDroppedStreamFrames", Counter64, ReadOnly},
            {8, "ieee8021SrpReservationStreamAge", Unsigned32, ReadOnly},
        },
};

MODULE_END(25, ieee8021SrpBridgeBaseTable, ieee8021SrpBridgePortTable, ieee8021SrpLatencyTable, ieee8021SrpStreamTable,
           ieee8021SrpReservationsTable);

}  // namespace switchmib::MODULE
