#include "switch/simulated_switch.h"

#include "switch/area.h"
#include "switch/areas.h"
#include "switch/interfaces.h"

#include <fmt/format.h>

#include <stdexcept>

namespace sw {

#define DECLARE_AREA(name) void add_##name(Switch&);
SWITCH_AREAS(DECLARE_AREA)

namespace {

#define ADD_AREA(name) add_##name,
constexpr void (*kAreas[])(Switch&) = {SWITCH_AREAS(ADD_AREA)};

// A switch that has been running for a while: its counters are not zero at the start.
constexpr Duration kRunningFor = std::chrono::hours(12 * 24 + 5);

std::function<Duration()> clock_of(const Options& options) {
    if (options.clock) return options.clock;
    return [start = std::chrono::steady_clock::now()] {
        return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - start) + kRunningFor;
    };
}

const Size& checked(const Size& size) {
    const auto check = [](const char* what, std::size_t count, std::size_t most) {
        if (count > most) throw std::invalid_argument(fmt::format("{} {}: at most {} are possible", count, what, most));
    };
    check("ports", size.ports, kMostPorts);
    check("VLANs", size.vlans, kLastVlan);
    check("routes", size.routes, kMostRows);
    check("neighbours", size.neighbours, kMostRows);
    check("FDB entries", size.fdb, kMostRows);
    check("groups", size.groups, kMostRows);
    return size;
}

}  // namespace

struct SimulatedSwitch::State {
    explicit State(const Options& options)
        : areas(clock_of(options), checked(options.size)), store(options.log), lines(options.log) {
        for (const auto add : kAreas) add(areas);
        Description description(store, lines);
        for (const auto& area : areas.areas()) area->describe(description);
        areas.start();
    }

    Switch areas;
    TableStore store;
    CommandLine lines;
};

SimulatedSwitch::SimulatedSwitch(const Options& options) : state_(std::make_unique<State>(options)) {}
SimulatedSwitch::~SimulatedSwitch() = default;

bool SimulatedSwitch::show(services::ShowRequest& request) { return state_->store.show(request); }

bool SimulatedSwitch::configure(const services::ConfigRequest& request) { return state_->lines.run(request); }

std::optional<std::string> SimulatedSwitch::interface_name(std::uint32_t ifindex) {
    const Interface* interface = state_->areas.area<Interfaces>().find(ifindex);
    if (interface == nullptr) return {};
    return interface->name;
}

std::chrono::milliseconds SimulatedSwitch::up_time() const { return state_->areas.uptime(); }

std::vector<std::pair<std::string, int>> SimulatedSwitch::served() const {
    std::vector<std::pair<std::string, int>> objects;
    for (const TableStore::Served& served : state_->store.served()) objects.emplace_back(served.name, served.magic);
    return objects;
}

}  // namespace sw
