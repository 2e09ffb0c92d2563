#include "switch/simulated_switch.h"

#include "switch/command_line.h"
#include "switch/model.h"
#include "switch/table_store.h"

namespace sw {
namespace {

// A switch that has been running for a while: its counters have something to show at once.
constexpr Duration kRunningFor = std::chrono::hours(12 * 24 + 5);

std::function<Duration()> clock_of(const Options& options) {
    if (options.clock) return options.clock;
    return [start = std::chrono::steady_clock::now()] {
        return std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now() - start) + kRunningFor;
    };
}

}  // namespace

struct SimulatedSwitch::State {
    explicit State(const Options& options)
        : model(clock_of(options), options.size.vlans), store(options.log), lines(options.log) {
        make_routes(model, options.size.routes);
        make_groups(model, options.size.groups);
        for (const auto add : {add_interfaces, add_ports, add_vlans, add_routes, add_snooping})
            add(model, store, lines);
    }

    Model model;
    TableStore store;
    CommandLine lines;
};

SimulatedSwitch::SimulatedSwitch(Options options) : state_(std::make_unique<State>(options)) {}
SimulatedSwitch::~SimulatedSwitch() = default;

bool SimulatedSwitch::show(services::ShowRequest& request) { return state_->store.show(request); }

bool SimulatedSwitch::configure(const services::ConfigRequest& request) { return state_->lines.run(request); }

std::optional<std::string> SimulatedSwitch::interface_name(std::uint32_t ifindex) {
    const auto interface = state_->model.interfaces.find(ifindex);
    if (interface == state_->model.interfaces.end()) return {};
    return interface->second.name;
}

}  // namespace sw
