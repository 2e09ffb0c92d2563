// The bridge and its ports: what they are and can do, priorities, and the timers of multiple registration.
#include "switch/ports.h"

#include <fmt/format.h>

#include <algorithm>

namespace sw {
namespace {

constexpr std::uint32_t kLastPort = kPortIfIndexBase + 90;
constexpr std::uint32_t kPriorities = 8;

// What is set for a port.
struct BridgePort {
    std::uint32_t priority = 0;  // of frames without a tag
    std::uint32_t join = 20;     // timers, hundredths of a second
    std::uint32_t leave = 60;
    std::uint32_t leave_all = 1000;
};

class Bridge : public Area {
public:
    explicit Bridge(Switch& its_switch)
        : Area(its_switch), ports_(its_switch.area<Ports>()), by_port_(ports_.each<BridgePort>()) {}
    void describe(Description&) override;
    void interface_went(std::uint32_t ifindex, bool) override {
        if (!by_port_.contains(ifindex)) return;
        ++changes_;
        changed_ = uptime();
    }

private:
    void add_priorities(Description&);
    void add_timers(Description&);

    Ports& ports_;
    std::map<std::uint32_t, BridgePort> by_port_;  // by ifIndex
    std::uint32_t changes_ = 0;                    // of the topology
    Duration changed_{};
};

void Bridge::describe(Description& d) {
    // Spanning tree: this bridge is the root.
    const Value root = Value("\x80\x00", 2) + Value(kOwnMac.begin(), kOwnMac.end());
    d.scalars("dot1dBridgeGlobals", "",
              {{1, "dot1dBaseBridgeAddress", kOwnMac},
               {2, "dot1dBaseNumPorts", [this] { return ports_.all().size(); }},
               {3, "dot1dBaseType", 2},                  // transparent only
               {4, "dot1dStpProtocolSpecification", 3},  // IEEE 802.1D
               {5, "dot1dStpPriority", 0x8000},
               {6, "dot1dStpTimeSinceTopologyChange", [this] { return uptime() - changed_; }},
               {7, "dot1dStpTopChanges", &changes_},
               {8, "dot1dStpDesignatedRoot", root},
               {9, "dot1dStpRootCost", 0},
               {10, "dot1dStpRootPort", 0},
               {11, "dot1dStpMaxAge", 2000},
               {12, "dot1dStpHelloTime", 200},
               {13, "dot1dStpHoldTime", 100},
               {14, "dot1dStpForwardDelay", 1500},
               {15, "dot1dStpBridgeMaxAge", 2000},
               {16, "dot1dStpBridgeHelloTime", 200},
               {17, "dot1dStpBridgeForwardDelay", 1500},
               {18, "dot1dTpLearnedEntryDiscards", 0}});
    // The command has the port's ifIndex, and 0 for the first row.
    d.table({.name = "dot1dBasePortTable",
             .show = "show snmp bridge-port interface {word}",
             .rows = rows_of(ports_.all(), {{1, "dot1dBasePort", &Port::number},
                                            {2, "dot1dBasePortIfIndex", from_index()},
                                            {3, "dot1dBasePortCircuit", object_id({0, 0})},
                                            {4, "dot1dBasePortDelayExceededDiscards", 0},
                                            {5, "dot1dBasePortMtuExceededDiscards", 0}})
                         .within(kPortIfIndexBase + 1, kLastPort, kPortIfIndexBase),
             .agrees = [](const Index& row, const Arguments& arguments) {
                 return arguments[0].text == std::to_string(row[0] == 0 ? 0 : row[0] + kPortIfIndexBase);
             }});
    d.table({.name = "dot1dPortCapabilitiesTable",
             .show = "show port-capabilities [{int}]",
             // Tags, accepted frame types, ingress filtering
             .rows = rows_of(ports_.all(), {{1, "dot1dPortCapabilities", Value("\xe0")}})
                         .within(kPortIfIndexBase + 1, kLastPort, kPortIfIndexBase)});
    add_priorities(d);
    add_timers(d);
}

void Bridge::add_priorities(Description& d) {
    constexpr std::uint64_t kClass = 16384;
    // The number of traffic classes is asked for without a command.
    d.table({.name = "dot1dPortPriorityTable",
             .show = "[show qos interface cos {word}]",
             .rows = rows_of(by_port_, {{1, "dot1dPortDefaultUserPriority", &BridgePort::priority},
                                        {2, "dot1dPortNumTrafficClasses", kPriorities}}),
             .agrees =
                 [](const Index& row, const Arguments& arguments) {
                     return !arguments[0].present || arguments[0].text == std::to_string(row[0]);
                 },
             .request_class = kClass});
    // A priority stays as it is.
    struct Kept {};
    const FindRow<Kept> from = [this](const Index& index) -> std::optional<std::pair<Index, Kept>> {
        for (auto port = lower_bound(by_port_, {index[0]}); port != by_port_.end(); ++port)
            for (std::uint32_t priority = 0; priority < kPriorities; ++priority)
                if (Index row{port->first, priority}; row >= index) return std::pair{std::move(row), Kept()};
        return {};
    };
    d.table({.name = "dot1dUserPriorityRegenTable",
             .show = "show qos cos regen {int} {int}",
             .key = {kInteger, kInteger},
             .rows = rows_from(from, {{2, "dot1dRegenUserPriority", from_index(1)}}),
             .request_class = kClass});
    ports_.lines(d).of(by_port_).number("mls qos cos {0..7}", &BridgePort::priority);
}

void Bridge::add_timers(Description& d) {
    d.table({.name = "ieee8021BridgePortMrpTable",
             .show = "show snmp mrp timer {int}",
             .rows = rows_of(by_port_, {{1, "ieee8021BridgePortMrpJoinTime", &BridgePort::join},
                                        {2, "ieee8021BridgePortMrpLeaveTime", &BridgePort::leave},
                                        {3, "ieee8021BridgePortMrpLeaveAllTime", &BridgePort::leave_all}})});
    const std::pair<const char*, std::uint32_t BridgePort::*> timers[] = {
        {"join", &BridgePort::join}, {"leave", &BridgePort::leave}, {"leave-all", &BridgePort::leave_all}};
    for (const auto& [name, timer] : timers)
        d.lines(*this).line(fmt::format("mrp_snmp timer {} {{1..100000}} ifindex {{int}}", name),
                            [this, timer = timer](const Arguments& arguments) {
                                const auto port = by_port_.find(arguments[1].number);
                                require(port != by_port_.end(), "there is no such port");
                                port->second.*timer = arguments[0].number;
                            });
}

}  // namespace

void add_bridge(Switch& areas) { areas.area<Bridge>(); }

}  // namespace sw
