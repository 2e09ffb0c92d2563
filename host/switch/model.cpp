#include "switch/model.h"

#include <fmt/format.h>

#include <algorithm>

namespace sw {
namespace {

constexpr std::uint32_t kPorts = 26;
constexpr std::uint32_t kFirstCombo = 21;
constexpr std::uint32_t kFirstFiber = 25;

// Ports 13 to 16 are hybrid, 17 and 18 hybrid without tags, the last two trunks, the others access ports.
PortMode mode_of(std::uint32_t n) {
    if (n >= kFirstFiber) return PortMode::trunk;
    if (n > 12 && n <= 16) return PortMode::hybrid;
    return n == 17 || n == 18 ? PortMode::untagged_hybrid : PortMode::access;
}

// Port n as it leaves the factory, with the cables that happen to be plugged in.
Port make_port(std::uint32_t n) {
    Port port;
    port.ifindex = kPortIfIndexBase + n;
    port.mode = mode_of(n);
    const bool plugged = n % 4 != 0 && n != kPorts;
    if (n >= kFirstFiber) {
        port.flags = Port::kSpeedFixed | (n == kPorts ? Port::kFlowControlFixed : Port::kCanBreakOut);
        port.max_mbps = 10000;
        port.media_type = 3;
        port.fiber = {.cable = plugged, .speed = 4, .duplex = 1};
        return port;
    }
    if (n >= kFirstCombo) {
        port.flags = Port::kCombo;
        port.media_type = 2;
        port.fiber.cable = n == kFirstCombo + 1;
        port.fiber.duplex = 1;
    }
    port.copper.cable = plugged && !port.fiber.cable;
    return port;
}

}  // namespace

Model::Model(std::function<Duration()> clock, std::size_t vlan_count) : uptime(std::move(clock)) {
    for (std::uint32_t n = 1; n <= kPorts; ++n) {
        Port& port = ports[kPortIfIndexBase + n] = make_port(n);
        Interface& interface = interfaces[port.ifindex];
        interface.ifindex = port.ifindex;
        interface.name = fmt::format("port{}", n);
        interface.port = &port;
        interface.enabled = n != 20;
        settle(interface);
    }
    make_vlans(*this, vlan_count);
    for (const std::uint32_t vid : {1u, 10u}) vlan_interface(vid);
    // What was there from the start has changed at no time.
    interfaces_changed = Duration();
    for (auto& [ifindex, interface] : interfaces) interface.created = interface.last_change = Duration();
}

Interface* Model::find(const std::string& name) {
    const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                    [&](const auto& entry) { return entry.second.name == name; });
    return found == interfaces.end() ? nullptr : &found->second;
}

Interface& Model::vlan_interface(std::uint32_t vid) {
    const auto [entry, made] = interfaces.try_emplace(kVlanIfIndexBase + vid);
    Interface& interface = entry->second;
    if (!made) return interface;
    interface.ifindex = entry->first;
    interface.name = fmt::format("vlan{}", vid);
    interface.created = interfaces_changed = uptime();
    settle(interface);
    return interface;
}

bool Model::remove_vlan_interface(std::uint32_t vid) {
    const auto entry = interfaces.find(kVlanIfIndexBase + vid);
    if (entry == interfaces.end()) return false;
    if (entered == &entry->second) entered = nullptr;
    interfaces.erase(entry);
    interfaces_changed = uptime();
    return true;
}

void Model::settle_vlan(std::uint32_t vid) {
    const auto interface = interfaces.find(kVlanIfIndexBase + vid);
    if (interface != interfaces.end()) settle(interface->second);
}

void Model::settle(Interface& interface) {
    const bool up =
        interface.enabled && (interface.port != nullptr ? interface.port->link().cable
                                                        : vlans.contains(interface.ifindex - kVlanIfIndexBase));
    if (up == interface.up) return;
    const Duration now = uptime();
    interface.up_before = interface.up_time(now);
    interface.last_change = now;
    interface.up = up;
}

void add_setting(Model& model, CommandLine& lines, const char* pattern, Setting set) {
    lines.add(Mode::interface, pattern, [&model, set = std::move(set)](const Arguments& arguments) {
        Outcome outcome = set(*model.entered, arguments);
        if (outcome.is_accepted()) model.settle(*model.entered);
        return outcome;
    });
}

void add_port_setting(Model& model, CommandLine& lines, const char* pattern, PortSetting set) {
    add_setting(model, lines, pattern, [set = std::move(set)](Interface& interface, const Arguments& arguments) {
        if (interface.port == nullptr) return refused(interface.name + " is no switch port");
        return set(*interface.port, arguments);
    });
}

}  // namespace sw
