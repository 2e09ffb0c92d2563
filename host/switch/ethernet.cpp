// Ethernet statistics of the ports, and their pause modes. Errors are a part of those that the interfaces count.
#include "switch/ports.h"

namespace sw {
namespace {

// What goes on at a port.
struct Activity {
    Stopwatch half_duplex{};
    Stopwatch sends_pauses{};
    Stopwatch receives_pauses{};
};

struct Counts {
    std::uint64_t alignment, fcs, too_long, mac_receive, symbol;                       // of frames in
    std::uint64_t single, multiple, deferred, late, excessive, carrier, mac_transmit;  // of frames out
    std::uint64_t pauses_in, pauses_out;
};

class Ethernet : public Area {
public:
    explicit Ethernet(Switch&);
    void describe(Description&) override;
    void port_changed(std::uint32_t ifindex) override { observe(ifindex); }
    void interface_went(std::uint32_t ifindex, bool) override { observe(ifindex); }

private:
    void observe(std::uint32_t ifindex);
    Counts counts(std::uint32_t ifindex, const Activity& activity) const;

    Ports& ports_;
    std::map<std::uint32_t, Activity> activities_;  // by ifIndex
};

// 1 none, 2 send, 3 receive, 4 both
std::uint32_t pause_mode(bool sends, bool receives) { return 1 + (sends ? 1 : 0) + (receives ? 2 : 0); }

Ethernet::Ethernet(Switch& its_switch)
    : Area(its_switch), ports_(its_switch.area<Ports>()), activities_(ports_.each<Activity>()) {
    for (const auto& entry : activities_) observe(entry.first);
}

void Ethernet::observe(std::uint32_t ifindex) {
    const auto entry = activities_.find(ifindex);
    if (entry == activities_.end()) return;
    const Port& port = ports_.all().at(ifindex);
    const bool up = ports_.interfaces().is_up(ifindex);
    const bool full = up && !port.half_duplex();
    entry->second.half_duplex.run(up && !full, uptime());
    entry->second.sends_pauses.run(full && port.link().flow_control_send, uptime());
    entry->second.receives_pauses.run(full && port.link().flow_control_receive, uptime());
}

Counts Ethernet::counts(std::uint32_t ifindex, const Activity& activity) const {
    const auto during = [&](const Stopwatch& time) { return traffic(ifindex, time.total(uptime())); };
    const Traffic all = during(ports_.interfaces().find(ifindex)->up);
    const Direction half = during(activity.half_duplex).out;
    return {.alignment = all.in.errors / 8,
            .fcs = all.in.errors / 2,
            .too_long = all.in.errors / 5,
            .mac_receive = all.in.errors / 20,
            .symbol = all.in.errors / 3,
            .single = half.unicast / 90,
            .multiple = half.unicast / 500,
            .deferred = half.unicast / 60,
            .late = half.errors / 6,
            .excessive = half.errors / 12,
            .carrier = all.out.errors / 4,
            .mac_transmit = all.out.errors / 2,
            .pauses_in = during(activity.receives_pauses).out.unicast / 7000,
            .pauses_out = during(activity.sends_pauses).in.unicast / 9000};
}

void Ethernet::describe(Description& d) {
    const auto counter = [this](std::uint64_t Counts::*what) {
        return [this, what](const Activity& activity, const Index& row) { return counts(row[0], activity).*what; };
    };
    const auto port = [this](auto fact) {
        return [this, fact](const Activity&, const Index& row) { return fact(ports_.all().at(row[0])); };
    };
    const auto duplex = [this](const Activity& activity, const Index& row) {
        constexpr int kUnknown = 1, kHalf = 2, kFull = 3;
        if (!ports_.interfaces().is_up(row[0])) return kUnknown;
        return activity.half_duplex.runs ? kHalf : kFull;
    };
    d.table({.name = "dot3StatsTable",
             .show = "show interface_uib dot3Stats {int}",
             .rows = rows_of(activities_, {{1, "dot3StatsIndex", from_index()},
                                           {2, "dot3StatsAlignmentErrors", counter(&Counts::alignment)},
                                           {3, "dot3StatsFCSErrors", counter(&Counts::fcs)},
                                           {4, "dot3StatsSingleCollisionFrames", counter(&Counts::single)},
                                           {5, "dot3StatsMultipleCollisionFrames", counter(&Counts::multiple)},
                                           {6, "dot3StatsSQETestErrors", 0},
                                           {7, "dot3StatsDeferredTransmissions", counter(&Counts::deferred)},
                                           {8, "dot3StatsLateCollisions", counter(&Counts::late)},
                                           {9, "dot3StatsExcessiveCollisions", counter(&Counts::excessive)},
                                           {10, "dot3StatsInternalMacTransmitErrors", counter(&Counts::mac_transmit)},
                                           {11, "dot3StatsCarrierSenseErrors", counter(&Counts::carrier)},
                                           {12, "dot3StatsFrameTooLongs", counter(&Counts::too_long)},
                                           {13, "dot3StatsInternalMacReceiveErrors", counter(&Counts::mac_receive)},
                                           {14, "dot3StatsEtherChipSet", object_id({0, 0})},
                                           {15, "dot3StatsSymbolErrors", counter(&Counts::symbol)},
                                           {16, "dot3StatsDuplexStatus", duplex},
                                           {17, "dot3StatsRateControlAbility", false},
                                           {18, "dot3StatsRateControlStatus", 1}})});  // off
    d.table({.name = "dot3HCStatsTable",
             .show = "show interface_uib dot3HCStats {int}",
             .rows = rows_of(activities_,
                             {{1, "dot3HCStatsAlignmentErrors", wide(counter(&Counts::alignment))},
                              {2, "dot3HCStatsFCSErrors", wide(counter(&Counts::fcs))},
                              {3, "dot3HCStatsInternalMacTransmitErrors", wide(counter(&Counts::mac_transmit))},
                              {4, "dot3HCStatsFrameTooLongs", wide(counter(&Counts::too_long))},
                              {5, "dot3HCStatsInternalMacReceiveErrors", wide(counter(&Counts::mac_receive))},
                              {6, "dot3HCStatsSymbolErrors", wide(counter(&Counts::symbol))}})});
    const auto admin_mode = [](const Port& p) {
        return pause_mode(p.link().flow_control_send, p.link().flow_control_receive);
    };
    const auto oper_mode = [](const Activity& a) { return pause_mode(a.sends_pauses.runs, a.receives_pauses.runs); };
    d.table({.name = "dot3PauseTable",
             .show = "show interface_uib dot3Pause {int}",
             .rows = rows_of(activities_, {{1, "dot3PauseAdminMode", port(admin_mode)},
                                           {2, "dot3PauseOperMode", oper_mode},
                                           {3, "dot3InPauseFrames", counter(&Counts::pauses_in)},
                                           {4, "dot3OutPauseFrames", counter(&Counts::pauses_out)},
                                           {5, "dot3HCInPauseFrames", wide(counter(&Counts::pauses_in))},
                                           {6, "dot3HCOutPauseFrames", wide(counter(&Counts::pauses_out))}})});
}

}  // namespace

void add_ethernet(Switch& areas) { areas.area<Ethernet>(); }

}  // namespace sw
