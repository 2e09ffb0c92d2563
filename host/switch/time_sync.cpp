// The clock that the switch synchronises with gPTP: itself or a grandmaster beyond the uplink, whichever is better; the
// ports' roles, and the messages that they count.
#include "switch/ports.h"

#include <fmt/format.h>

#include <compare>

namespace sw {
namespace {

constexpr std::uint32_t kDisabled = 3, kMaster = 6, kSlave = 9;  // roles of a port
constexpr std::uint32_t kGps = 32, kOscillator = 160;            // sources of time
constexpr std::int32_t kUtcOffset = 37;                          // seconds
constexpr std::uint32_t kSyncs = 8;                              // a second
constexpr std::int32_t kLogSyncInterval = -3;                    // so many

// What clocks are compared by, in that order; the least is the best.
struct Clock {
    std::uint32_t priority1, clock_class, accuracy, variance, priority2;
    std::array<unsigned char, 8> identity;
    auto operator<=>(const Clock&) const = default;
};
constexpr Clock kGrandmaster{100, 6, 0x21, 0x4e5d, 248, {0x02, 0x47, 0x4d, 0xff, 0xfe, 0x00, 0x00, 0x01}};

// For how long a port has been what it is.
struct PortClock {
    Stopwatch capable{};  // its neighbour answers
    Stopwatch master{};
    Stopwatch slave{};
};

// Times are counted in 2^-16 ns; their objects have a word of it each.
constexpr std::int64_t scaled(std::int64_t nanoseconds) { return nanoseconds * 65536; }
constexpr std::int64_t kSyncTimeout = scaled(3 * 1'000'000'000LL / kSyncs), kDelayThreshold = scaled(800);
std::int32_t high(std::int64_t time) { return time < 0 ? -1 : 0; }
std::uint32_t middle(std::int64_t time) { return static_cast<std::uint32_t>(time >> 32); }
std::uint32_t low(std::int64_t time) { return static_cast<std::uint32_t>(time); }

class TimeSync : public Area {
public:
    explicit TimeSync(Switch& its_switch)
        : Area(its_switch), ports_(its_switch.area<Ports>()), by_port_(ports_.each<PortClock>()) {
        follows_ = is_better();
        settle();
    }
    void describe(Description&) override;
    void port_changed(std::uint32_t) override { settle(); }
    void interface_went(std::uint32_t, bool) override { settle(); }

private:
    bool is_enabled(std::uint32_t ifindex) const { return !ports_.all().at(ifindex).half_duplex(); }
    // Every other device does not know of gPTP.
    bool is_capable(std::uint32_t ifindex) const {
        return ports_.interfaces().is_up(ifindex) && is_enabled(ifindex) && ifindex % 2 == 1;
    }
    bool is_better() const { return is_capable(kUplink) && kGrandmaster < own_; }
    const Clock& grandmaster() const { return follows_ ? kGrandmaster : own_; }
    std::int64_t offset() const { return follows_ ? scaled(uptime().count() / 125 % 41 - 20) : 0; }
    void settle();
    void add_clock(Description&);
    void add_port_clocks(Description&);

    Ports& ports_;
    Clock own_{246, 248, 254, 17258, 248, {0x02, 0x53, 0x57, 0xff, 0xfe, 0x10, 0x00, 0x00}};
    bool follows_ = false;  // the grandmaster beyond the uplink
    std::uint32_t changes_ = 0;
    Duration changed_{};
    std::map<std::uint32_t, PortClock> by_port_;  // by ifIndex
};

void TimeSync::settle() {
    if (is_better() != follows_) {
        follows_ = !follows_;
        ++changes_;
        changed_ = uptime();
    }
    for (auto& [ifindex, port] : by_port_) {
        const bool capable = is_capable(ifindex), slave = follows_ && ifindex == kUplink;
        port.capable.run(capable, uptime());
        port.slave.run(capable && slave, uptime());
        port.master.run(capable && !slave, uptime());
    }
}

void TimeSync::add_clock(Description& d) {
    const auto grandmaster_has = [this](auto fact) { return [this, fact] { return grandmaster().*fact; }; };
    const auto while_following = [this](std::uint32_t value, std::uint32_t otherwise = 0) {
        return [this, value, otherwise] { return follows_ ? value : otherwise; };
    };
    const auto is_following = [this] { return follows_; };
    d.scalars("ieee8021AsTimeSyncMibGlobals", "show snmp ieee8021as-time-sync-default",
              {{1, "ieee8021AsDefaultDSClockIdentity", own_.identity},
               {2, "ieee8021AsDefaultDSNumberPorts", [this] { return by_port_.size(); }},
               {3, "ieee8021AsDefaultDSClockClass", own_.clock_class},
               {4, "ieee8021AsDefaultDSClockAccuracy", own_.accuracy},
               {5, "ieee8021AsDefaultDSOffsetScaledLogVariance", own_.variance},
               {6, "ieee8021AsDefaultDSPriority1", &own_.priority1},
               {7, "ieee8021AsDefaultDSPriority2", &own_.priority2},
               {8, "ieee8021AsDefaultDSGmCapable", true},
               {9, "ieee8021AsDefaultDSCurrentUTCOffset", kUtcOffset},
               {11, "ieee8021AsDefaultDSLeap59", false},
               {12, "ieee8021AsDefaultDSLeap61", false},
               {13, "ieee8021AsDefaultDSTimeTraceable", false},
               {14, "ieee8021AsDefaultDSFrequencyTraceable", false},
               {15, "ieee8021AsDefaultDSTimeSource", kOscillator},
               {16, "ieee8021AsCurrentDSStepsRemoved", while_following(1)},
               {17, "ieee8021AsCurrentDSOffsetFromMasterHs", [this] { return high(offset()); }},
               {18, "ieee8021AsCurrentDSOffsetFromMasterMs", [this] { return middle(offset()); }},
               {19, "ieee8021AsCurrentDSOffsetFromMasterLs", [this] { return low(offset()); }},
               {20, "ieee8021AsCurrentDSLastGmPhaseChangeHs", 0},
               {21, "ieee8021AsCurrentDSLastGmPhaseChangeMs", 0},
               {22, "ieee8021AsCurrentDSLastGmPhaseChangeLs", 0},
               {23, "ieee8021AsCurrentDSLastGmFreqChangeMs", 0},
               {24, "ieee8021AsCurrentDSLastGmFreqChangeLs", 0},
               {25, "ieee8021AsCurrentDSGmTimebaseIndicator", &changes_},
               {26, "ieee8021AsCurrentDSGmChangeCount", &changes_},
               {27, "ieee8021AsCurrentDSTimeOfLastGmChangeEvent", &changed_},
               {28, "ieee8021AsCurrentDSTimeOfLastGmFreqChangeEvent", &changed_},
               {29, "ieee8021AsCurrentDSTimeOfLastGmPhaseChangeEvent", &changed_},
               {30, "ieee8021AsParentDSParentClockIdentity", grandmaster_has(&Clock::identity)},
               {31, "ieee8021AsParentDSParentPortNumber", while_following(1)},
               {32, "ieee8021AsParentDSCumlativeRateRatio", while_following(1'200'000)},
               {33, "ieee8021AsParentDSGrandmasterIdentity", grandmaster_has(&Clock::identity)},
               {35, "ieee8021AsParentDSGrandmasterClockAccuracy", grandmaster_has(&Clock::accuracy)},
               {36, "ieee8021AsParentDSGrandmasterOffsetScaledLogVariance", grandmaster_has(&Clock::variance)},
               {37, "ieee8021AsParentDSGrandmasterPriority1", grandmaster_has(&Clock::priority1)},
               {38, "ieee8021AsParentDSGrandmasterPriority2", grandmaster_has(&Clock::priority2)},
               {39, "ieee8021AsTimePropertiesDSCurrentUtcOffset", kUtcOffset},
               {41, "ieee8021AsTimePropertiesDSLeap59", false},
               {42, "ieee8021AsTimePropertiesDSLeap61", false},
               {43, "ieee8021AsTimePropertiesDSTimeTraceable", is_following},
               {44, "ieee8021AsTimePropertiesDSFrequencyTraceable", is_following},
               {45, "ieee8021AsTimePropertiesDSTimeSource", while_following(kGps, kOscillator)}});
    const std::pair<const char*, std::uint32_t Clock::*> priorities[] = {{"priority1", &Clock::priority1},
                                                                         {"priority2", &Clock::priority2}};
    for (const auto& [name, priority] : priorities)
        d.lines(*this).line(fmt::format("gptp priority {} {{0..255}}", name),
                            [this, priority = priority](const Arguments& arguments) {
                                own_.*priority = arguments[0].number;
                                settle();
                            });
}

void TimeSync::add_port_clocks(Description& d) {
    const auto number = [](const PortClock&, const Index& row) { return row[0] - kPortIfIndexBase; };
    const auto capable = [](const PortClock& port) { return port.capable.runs; };
    const auto delay = [](const PortClock& port, const Index& row) {
        return port.capable.runs ? low(scaled(180 + row[0] % 7 * 31)) : 0;
    };
    d.table({.name = "ieee8021AsPortDSIfTable",
             .show = "show snmp ieee8021as-port-ds-if {int}",
             .rows = rows_of(by_port_, {{1, "ieee8021AsBridgeBasePort", number},
                                        {2, "ieee8021AsPortDSAsIfIndex", from_index()},
                                        {3, "ieee8021AsPortDSClockIdentity", own_.identity},
                                        {4, "ieee8021AsPortDSPortNumber", number},
                                        {5, "ieee8021AsPortDSPortRole",
                                         [](const PortClock& port) {
                                             return port.slave.runs ? kSlave : port.master.runs ? kMaster : kDisabled;
                                         }},
                                        {6, "ieee8021AsPortDSPttPortEnabled",
                                         [this](const PortClock&, const Index& row) { return is_enabled(row[0]); }},
                                        {7, "ieee8021AsPortDSIsMeasuringDelay", capable},
                                        {8, "ieee8021AsPortDSAsCapable", capable},
                                        {9, "ieee8021AsPortDSNeighborPropDelayHs", 0},
                                        {10, "ieee8021AsPortDSNeighborPropDelayMs", 0},
                                        {11, "ieee8021AsPortDSNeighborPropDelayLs", delay},
                                        {12, "ieee8021AsPortDSNeighborPropDelayThreshHs", high(kDelayThreshold)},
                                        {13, "ieee8021AsPortDSNeighborPropDelayThreshMs", middle(kDelayThreshold)},
                                        {14, "ieee8021AsPortDSNeighborPropDelayThreshLs", low(kDelayThreshold)},
                                        {15, "ieee8021AsPortDSDelayAsymmetryHs", 0},
                                        {16, "ieee8021AsPortDSDelayAsymmetryMs", 0},
                                        {17, "ieee8021AsPortDSDelayAsymmetryLs", 0},
                                        {18, "ieee8021AsPortDSNeighborRateRatio",
                                         [](const PortClock& port, const Index& row) {
                                             return port.capable.runs ? 1'000'000 + 37'000 * (row[0] % 11) : 0;
                                         }},
                                        {19, "ieee8021AsPortDSInitialLogAnnounceInterval", 0},
                                        {20, "ieee8021AsPortDSCurrentLogAnnounceInterval", 0},
                                        {21, "ieee8021AsPortDSAnnounceReceiptTimeout", 3},
                                        {22, "ieee8021AsPortDSInitialLogSyncInterval", kLogSyncInterval},
                                        {23, "ieee8021AsPortDSCurrentLogSyncInterval", kLogSyncInterval},
                                        {24, "ieee8021AsPortDSSyncReceiptTimeout", 3},
                                        {25, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalHs", high(kSyncTimeout)},
                                        {26, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalMs", middle(kSyncTimeout)},
                                        {27, "ieee8021AsPortDSSyncReceiptTimeoutTimeIntervalLs", low(kSyncTimeout)},
                                        {28, "ieee8021AsPortDSInitialLogPdelayReqInterval", 0},
                                        {29, "ieee8021AsPortDSCurrentLogPdelayReqInterval", 0},
                                        {30, "ieee8021AsPortDSAllowedLostResponses", 3},
                                        {31, "ieee8021AsPortDSVersionNumber", 2}})});
    // Messages at so many a second while the port is something.
    const auto messages = [this](Stopwatch PortClock::*while_it_is, std::uint32_t rate = 1) {
        return [this, while_it_is, rate](const PortClock& port) {
            return (port.*while_it_is).total(uptime()).count() * rate / 1000;
        };
    };
    const auto delays = messages(&PortClock::capable);
    const auto syncs_in = messages(&PortClock::slave, kSyncs), syncs_out = messages(&PortClock::master, kSyncs);
    d.table({.name = "ieee8021AsPortStatIfTable",
             .show = "show snmp ieee8021as-port-stat-if {int}",
             .rows = rows_of(by_port_, {{1, "ieee8021AsPortStatRxSyncCount", syncs_in},
                                        {2, "ieee8021AsPortStatRxFollowUpCount", syncs_in},
                                        {3, "ieee8021AsPortStatRxPdelayRequest", delays},
                                        {4, "ieee8021AsPortStatRxPdelayResponse", delays},
                                        {5, "ieee8021AsPortStatRxPdelayResponseFollowUp", delays},
                                        {6, "ieee8021AsPortStatRxAnnounce", messages(&PortClock::slave)},
                                        {7, "ieee8021AsPortStatRxPTPPacketDiscard", 0},
                                        {8, "ieee8021AsPortStatRxSyncReceiptTimeouts", 0},
                                        {9, "ieee8021AsPortStatAnnounceReceiptTimeouts", 0},
                                        {10, "ieee8021AsPortStatPdelayAllowedLostResponsesExceeded", 0},
                                        {11, "ieee8021AsPortStatTxSyncCount", syncs_out},
                                        {12, "ieee8021AsPortStatTxFollowUpCount", syncs_out},
                                        {13, "ieee8021AsPortStatTxPdelayRequest", delays},
                                        {14, "ieee8021AsPortStatTxPdelayResponse", delays},
                                        {15, "ieee8021AsPortStatTxPdelayResponseFollowUp", delays},
                                        {16, "ieee8021AsPortStatTxAnnounce", messages(&PortClock::master)}})});
}

void TimeSync::describe(Description& d) {
    add_clock(d);
    add_port_clocks(d);
}

}  // namespace

void add_time_sync(Switch& areas) { areas.area<TimeSync>(); }

}  // namespace sw
