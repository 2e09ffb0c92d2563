// IEEE8021-AS-MIB: the clock that the switch synchronises with gPTP, and the clock's ports. The two priorities of the
// clock can be set; what else is writable refuses.
#define MODULE ieee8021AsTimeSyncMib
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kIeee8021, 20);

// --- The clock's data sets -------------------------------------------------------------------------------------------

// Any number goes to the backend.
Error write_priority(Set& set, int which) {
    std::uint32_t priority;
    TRY(set.unsigned32(priority));
    return set.acting() ? set.global({"gptp priority priority%d %d", which, priority}) : noError;
}
Error write_ieee8021AsDefaultDSPriority1(Set& set) { return write_priority(set, 1); }
Error write_ieee8021AsDefaultDSPriority2(Set& set) { return write_priority(set, 2); }

constexpr Scalars ieee8021AsTimeSyncMibGlobals{
    .name = "ieee8021AsTimeSyncMibGlobals",
    .text = "show snmp ieee8021as-time-sync-default",
    .scalars =
        {
            {{1, 1, 1}, "ieee8021AsDefaultDSClockIdentity", OctetString, ReadOnly},
            {{1, 1, 2}, "ieee8021AsDefaultDSNumberPorts", Unsigned32, ReadOnly},
            {{1, 1, 3}, "ieee8021AsDefaultDSClockClass", Integer, ReadOnly},
            {{1, 1, 4}, "ieee8021AsDefaultDSClockAccuracy", Integer, ReadOnly},
            {{1, 1, 5}, "ieee8021AsDefaultDSOffsetScaledLogVariance", Unsigned32, ReadOnly},
            {{1, 1, 6},
             "ieee8021AsDefaultDSPriority1",
             Unsigned32,
             ReadWrite,
             WRITER(write_ieee8021AsDefaultDSPriority1)},
            {{1, 1, 7},
             "ieee8021AsDefaultDSPriority2",
             Unsigned32,
             ReadWrite,
             WRITER(write_ieee8021AsDefaultDSPriority2)},
            {{1, 1, 8}, "ieee8021AsDefaultDSGmCapable", Integer, ReadOnly},
            {{1, 1, 9}, "ieee8021AsDefaultDSCurrentUTCOffset", Integer, ReadOnly},
            {{1, 1, 10}, "ieee8021AsDefaultDSCurrentUTCOffsetValid", Integer, ReadOnly, never},
            {{1, 1, 11}, "ieee8021AsDefaultDSLeap59", Integer, ReadOnly},
            {{1, 1, 12}, "ieee8021AsDefaultDSLeap61", Integer, ReadOnly},
            {{1, 1, 13}, "ieee8021AsDefaultDSTimeTraceable", Integer, ReadOnly},
            {{1, 1, 14}, "ieee8021AsDefaultDSFrequencyTraceable", Integer, ReadOnly},
            {{1, 1, 15}, "ieee8021AsDefaultDSTimeSource", Integer, ReadOnly},
            {{1, 2, 1}, "ieee8021AsCurrentDSStepsRemoved", Integer, ReadOnly},
            {{1, 2, 2}, "ieee8021AsCurrentDSOffsetFromMasterHs", Integer, ReadOnly},
            {{1, 2, 3}, "ieee8021AsCurrentDSOffsetFromMasterMs", Integer, ReadOnly},
            {{1, 2, 4}, "ieee8021AsCurrentDSOffsetFromMasterLs", Integer, ReadOnly},
            {{1, 2, 5}, "ieee8021AsCurrentDSLastGmPhaseChangeHs", Integer, ReadOnly},
            {{1, 2, 6}, "ieee8021AsCurrentDSLastGmPhaseChangeMs", Unsigned32, ReadOnly},
            {{1, 2, 7}, "ieee8021AsCurrentDSLastGmPhaseChangeLs", Unsigned32, ReadOnly},
            {{1, 2, 8}, "ieee8021AsCurrentDSLastGmFreqChangeMs", Integer, ReadOnly},
            {{1, 2, 9}, "ieee8021AsCurrentDSLastGmFreqChangeLs", Unsigned32, ReadOnly},
            {{1, 2, 10}, "ieee8021AsCurrentDSGmTimebaseIndicator", Unsigned32, ReadOnly},
            {{1, 2, 11}, "ieee8021AsCurrentDSGmChangeCount", Counter32, ReadOnly},
            {{1, 2, 12}, "ieee8021AsCurrentDSTimeOfLastGmChangeEvent", TimeTicks, ReadOnly},
            {{1, 2, 13}, "ieee8021AsCurrentDSTimeOfLastGmFreqChangeEvent", TimeTicks, ReadOnly},
            {{1, 2, 14}, "ieee8021AsCurrentDSTimeOfLastGmPhaseChangeEvent", TimeTicks, ReadOnly},
            {{1, 3, 1}, "ieee8021AsParentDSParentClockIdentity", OctetString, ReadOnly},
            {{1, 3, 2}, "ieee8021AsParentDSParentPortNumber", Unsigned32, ReadOnly},
            {{1, 3, 3}, "ieee8021AsParentDSCumlativeRateRatio", Integer, ReadOnly},
            {{1, 3, 4}, "ieee8021AsParentDSGrandmasterIdentity", OctetString, ReadOnly},
            {{1, 3, 5}, "ieee8021AsParentDSGrandmasterClockClass", Integer, ReadOnly, never},
            {{1, 3, 6}, "ieee8021AsParentDSGrandmasterClockAccuracy", Integer, ReadOnly},
            {{1, 3, 7}, "ieee8021AsParentDSGrandmasterOffsetScaledLogVariance", Unsigned32, ReadOnly},
            {{1, 3, 8}, "ieee8021AsParentDSGrandmasterPriority1", Unsigned32, ReadWrite},
            {{1, 3, 9}, "ieee8021AsParentDSGrandmasterPriority2", Unsigned32, ReadWrite},
            {{1, 4, 1}, "ieee8021AsTimePropertiesDSCurrentUtcOffset", Integer, ReadOnly},
            {{1, 4, 2}, "ieee8021AsTimePropertiesDSCurrentUtcOffsetValid", Integer, ReadOnly, never},
            {{1, 4, 3}, "ieee8021AsTimePropertiesDSLeap59", Integer, ReadOnly},
            {{1, 4, 4}, "ieee8021AsTimePropertiesDSLeap61", Integer, ReadOnly},
            {{1, 4, 5}, "ieee8021AsTimePropertiesDSTimeTraceable", Integer, ReadOnly},
            {{1, 4, 6}, "ieee8021AsTimePropertiesDSFrequencyTraceable", Integer, ReadOnly},
            {{1, 4, 7}, "ieee8021AsTimePropertiesDSTimeSource", Integer, ReadOnly},
            {{1, 7, 1, 1}, "ieee8021AsAcceptableMasterTableDSMaxTableSize", Unsigned32, ReadOnly, never},
            {{1, 7, 1, 2}, "ieee8021AsAcceptableMasterTableDSActualTableSize", Unsigned32, ReadWrite, never},
        },
};

// --- ieee8021AsPortDSIfTable -----------------------------------------------------------------------------------------

TABLE(ieee8021AsPortDSIfTable, IEEE8021ASPORTDSIFTABLE, 1, 5, 1);

constexpr Table<InterfaceKey> ieee8021AsPortDSIfTable{
    .id = IEEE8021ASPORTDSIFTABLE,
    .command = "show snmp ieee8021as-port-ds-if %d",
    .columns =
        {
            {1, "ieee8021AsBridgeBasePort", Unsigned32, ReadOnly},
            {2, "ieee8021AsPortDSAsIfIndex", Integer, ReadOnly},
            {3, "ieee8021AsPortDSClockIdentity", OctetString, ReadOnly},
            {4, "ieee8021AsPortDSPortNumber", Unsigned32, ReadOnly},
            {5, "ieee8021AsPortDSPortRole", Integer, ReadOnly},
            {6, "ieee8021AsPortDSPttPortEnabled", Integer, ReadWrite, refuses(1, 2)},
            {7, "ieee8021AsPortDSIsMeasuringDelay", Integer, ReadOnly},
            {8, "ieee8021AsPortDSAsCapable", Integer, ReadOnly},
            {9, "ieee8021AsPortDSNeighborPropDelayHs", Unsigned32, ReadOnly},
            {10, "ieee8021AsPortDSNeighborPropDelayMs", Unsigned32, ReadOnly},
            {11, "ieee8021AsPortDSNeighborPropDelayLs", Unsigned32, ReadOnly},
            {12, "ieee8021AsPortDSNeighborPropDelayThreshHs", Unsigned32, ReadWrite, refuses()},
            {13, "ieee8021AsPortDSNeighborPropDelayThreshMs", Unsigned32, ReadWrite, refuses()},
            {14, "ieee8021AsPortDSNeighborPropDelayThreshLs", Unsigned32, ReadWrite, refuses()},
            {15, "ieee8021AsPortDSDelayAsymmetryHs", Integer, ReadWrite, refuses()},
            {16, "ieee8021AsPortDSDelayAsymmetryMs", Unsigned32, ReadWrite, refuses()},
            {17, "ieee8021AsPortDSDelayAsymmetryLs", Unsigned32, ReadWrite, refuses()},
            {18, "ieee8021AsPortDSNeighborRateRatio", Integer, ReadOnly},
            {19, "ieee8021AsPortDSInitialLogAnnounceInterval", Integer, ReadWrite},
            {20, "ieee8021AsPortDSCurrentLogAnnounceInterval", Integer, ReadOnly},
            {21, "ieee8021AsPortDSAnnounceReceiptTimeout", Unsigned32, ReadWrite, refuses()},
            {22, "ieee8021AsPortDSInitialLogSyncInterval", Integer, ReadWrite},
            {23, "ieee8021AsPortDSCurrentLogSyncInterval", Integer, ReadOnly},
            {24, "ieee8021AsPortDSSyncReceiptTimeout", Unsigned32, ReadWrite, refuses()},
            {25, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalHs", Unsigned32, ReadOnly},
            {26, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalMs", Unsigned32, ReadOnly},
            {27, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalLs", Unsigned32, ReadOnly},
            {28, "ieee8021AsPortDSInitialLogPdelayReqInterval", Integer, ReadWrite},
            {29, "ieee8021AsPortDSCurrentLogPdelayReqInterval", Integer, ReadOnly},
            {30, "ieee8021AsPortDSAllowedLostResponses", Unsigned32, ReadWrite, refuses()},
            {31, "ieee8021AsPortDSVersionNumber", Unsigned32, ReadOnly},
            {32, "ieee8021AsPortDSNupMs", Unsigned32, ReadWrite, never},
            {33, "ieee8021AsPortDSNupLs", Unsigned32, ReadWrite, never},
            {34, "ieee8021AsPortDSNdownMs", Unsigned32, ReadWrite, never},
            {35, "ieee8021AsPortDSNdownLs", Unsigned32, ReadWrite, never},
            {36, "ieee8021AsPortDSAcceptableMasterTableEnabled", Integer, ReadWrite, never},
        },
};

// --- ieee8021AsPortStatIfTable ---------------------------------------------------------------------------------------

TABLE(ieee8021AsPortStatIfTable, IEEE8021ASPORTSTATIFTABLE, 1, 6, 1);

constexpr Table<InterfaceKey> ieee8021AsPortStatIfTable{
    .id = IEEE8021ASPORTSTATIFTABLE,
    .command = "show snmp ieee8021as-port-stat-if %d",
    .columns =
        {
            {1, "ieee8021AsPortStatRxSyncCount", Counter32, ReadOnly},
            {2, "ieee8021AsPortStatRxFollowUpCount", Counter32, ReadOnly},
            {3, "ieee8021AsPortStatRxPdelayRequest", Counter32, ReadOnly},
            {4, "ieee8021AsPortStatRxPdelayResponse", Counter32, ReadOnly},
            {5, "ieee8021AsPortStatRxPdelayResponseFollowUp", Counter32, ReadOnly},
            {6, "ieee8021AsPortStatRxAnnounce", Counter32, ReadOnly},
            {7, "ieee8021AsPortStatRxPTPPacketDiscard", Counter32, ReadOnly},
            {8, "ieee8021AsPortStatRxSyncReceiptTimeouts", Counter32, ReadOnly},
            {9, "ieee8021AsPortStatAnnounceReceiptTimeouts", Counter32, ReadOnly},
            {10, "ieee8021AsPortStatPdelayAllowedLostResponsesExceeded", Counter32, ReadOnly},
            {11, "ieee8021AsPortStatTxSyncCount", Counter32, ReadOnly},
            {12, "ieee8021AsPortStatTxFollowUpCount", Counter32, ReadOnly},
            {13, "ieee8021AsPortStatTxPdelayRequest", Counter32, ReadOnly},
            {14, "ieee8021AsPortStatTxPdelayResponse", Counter32, ReadOnly},
            {15, "ieee8021AsPortStatTxPdelayResponseFollowUp", Counter32, ReadOnly},
            {16, "ieee8021AsPortStatTxAnnounce", Counter32, ReadOnly},
        },
};

// --- ieee8021AsAcceptableMasterTableDSMasterTable --------------------------------------------------------------------

TABLE(ieee8021AsAcceptableMasterTableDSMasterTable, IEEE8021ASACCEPTABLEMASTERTABLEDSMASTERTABLE, 1, 7, 2, 1, 1);

struct MasterKey {
    std::uint32_t master;
    static constexpr Kind index[] = {Kind::integer};
};

constexpr Table<MasterKey> ieee8021AsAcceptableMasterTableDSMasterTable{
    .id = IEEE8021ASACCEPTABLEMASTERTABLEDSMASTERTABLE,
    .answers = false,
    .columns =
        {
            {1, "ieee8021AsAcceptableMasterTableDSMasterId", Unsigned32, ReadOnly},
            {2, "ieee8021AsAcceptableMasterClockIdentity", OctetString, ReadWrite, refuses({.length = 4})},
            {3, "ieee8021AsAcceptableMasterPortNumber", Unsigned32, ReadWrite, refuses()},
            {4, "ieee8021AsAcceptableMasterAlternatePriority1", Unsigned32, ReadWrite, refuses()},
            {5, "ieee8021AsAcceptableMasterRowStatus", Integer, ReadWrite, refuses()},
        },
};

MODULE_END(104, ieee8021AsTimeSyncMibGlobals, ieee8021AsPortDSIfTable, ieee8021AsPortStatIfTable,
           ieee8021AsAcceptableMasterTableDSMasterTable);

}  // namespace switchmib::MODULE
