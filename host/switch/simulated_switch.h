// A switch without hardware: 24 copper ports (the last four combo), 2 fiber ports, transceivers, VLANs, VLAN interfaces
// and tunnels, IP addresses, neighbours, routes and multicast routes in two VRFs, IGMP and MLD snooping, multicast
// routers and VLANs, and counters that move with time. It answers show requests from its tables, and configuration lines
// change what they say.
#pragma once

#include "services/services.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace sw {

constexpr std::size_t kMostPorts = 90;
constexpr std::size_t kMostRows = 100'000;

// Rows that there are at least, beyond what the switch comes with anyway: for measurements on large tables. The switch
// refuses more than the ranges allow with std::invalid_argument.
struct Size {
    std::size_t ports = 0;       // 0 to 90; those from 27 on are copper ports
    std::size_t vlans = 0;       // 0 to 4094
    std::size_t routes = 0;      // 0 to 100,000: IPv4 and IPv6 ones in the default VRF
    std::size_t neighbours = 0;  // 0 to 100,000: IPv4 and IPv6 ones in the default VRF
    std::size_t fdb = 0;         // 0 to 100,000: addresses learned in the forwarding database
    std::size_t groups = 0;      // 0 to 100,000: learned by IGMP and as many by MLD, each with a source and a host
};

struct Options {
    // Time since the switch started, never falling. None: real time, of a switch that had been running for 12 days
    // when it was constructed.
    std::function<std::chrono::milliseconds()> clock;
    // Takes a line for every request that was refused, with the reason; a row that does not exist is not refused.
    // Control characters are escaped. None: the lines are dropped.
    std::function<void(const std::string&)> log;
    Size size{};
};

class SimulatedSwitch : public services::Backend {
public:
    // Throws std::invalid_argument for a size that is out of range.
    explicit SimulatedSwitch(const Options& options = {});
    ~SimulatedSwitch() override;

    bool show(services::ShowRequest& request) override;
    bool configure(const services::ConfigRequest& request) override;
    std::optional<std::string> interface_name(std::uint32_t ifindex) override;

    // Time since it started.
    std::chrono::milliseconds up_time() const;

    // Name and magic number of every object that it serves.
    std::vector<std::pair<std::string, int>> served() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace sw
