// Tunnels of IPv6 over IPv4: their interfaces, their ends, and the lines that make, set and remove them.
#include "switch/interfaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace sw {
namespace {

constexpr std::uint32_t kLastTunnel = 127;

// Encapsulation methods
constexpr std::uint32_t kOther = 1;
constexpr std::uint32_t k6to4 = 11;
constexpr std::uint32_t kIpv6OverIpv4 = 12;
constexpr std::uint32_t kIsatap = 13;

struct Tunnel {
    using Address = std::array<unsigned char, 4>;
    Address source{}, destination{};  // zeros: none
    std::uint32_t method = kOther;

    // It can carry something: 6to4 and ISATAP find the other end by each packet's address.
    bool is_complete() const {
        const bool finds_end = method == k6to4 || method == kIsatap;
        return source != Address() && (finds_end || (method == kIpv6OverIpv4 && destination != Address()));
    }
};

class Tunnels : public Area {
public:
    explicit Tunnels(Switch&);
    void describe(Description&) override;
    void interface_removed(std::uint32_t ifindex) override { tunnels_.erase(ifindex); }

private:
    void make(std::uint32_t number, const Tunnel& tunnel);
    void settle(std::uint32_t ifindex);
    Rows config_rows() const;
    void check_creation(const Arguments& said) const;
    void check_destruction(const Arguments& said) const;

    Interfaces& interfaces_;
    std::map<std::uint32_t, Tunnel> tunnels_;  // by ifIndex
};

Tunnels::Tunnels(Switch& its_switch) : Area(its_switch), interfaces_(its_switch.area<Interfaces>()) {
    make(1, {{192, 0, 2, 1}, {203, 0, 113, 9}, kIpv6OverIpv4});
    make(2, {{192, 0, 2, 1}, {}, k6to4});
}

void Tunnels::make(std::uint32_t number, const Tunnel& tunnel) {
    const std::uint32_t ifindex = kTunnelIfIndexBase + number;
    if (!tunnels_.emplace(ifindex, tunnel).second) return;
    const std::string name = fmt::format("tunnel{}", number);
    interfaces_.make(ifindex, {.name = name, .description = "IPv6 over IPv4 " + name, .type = 131});
    settle(ifindex);
}

void Tunnels::settle(std::uint32_t ifindex) { interfaces_.link(ifindex, tunnels_.at(ifindex).is_complete(), 100); }

// By source and destination, each with type and length, method and number.
Index config_index(std::uint32_t ifindex, const Tunnel& tunnel) {
    Index index{1, 4};
    index.insert(index.end(), tunnel.source.begin(), tunnel.source.end());
    index.insert(index.end(), {1, 4});
    index.insert(index.end(), tunnel.destination.begin(), tunnel.destination.end());
    index.insert(index.end(), {tunnel.method, ifindex - kTunnelIfIndexBase});
    return index;
}

Rows Tunnels::config_rows() const {
    const FindRow<Tunnel> from = [this](const Index& index) {
        std::optional<std::pair<Index, Tunnel>> first;
        for (const auto& [ifindex, tunnel] : tunnels_) {
            Index row = config_index(ifindex, tunnel);
            if (row >= index && (!first || row < first->first)) first.emplace(std::move(row), tunnel);
        }
        return first;
    };
    const auto id = [](const Tunnel&, const Index& index) { return index.back(); };
    return rows_from<Tunnel>(from,
                             {{1, "tunnelInetConfigAddressType", 1},
                              {2, "tunnelInetConfigLocalAddress", &Tunnel::source},
                              {3, "tunnelInetConfigRemoteAddress", &Tunnel::destination},
                              {4, "tunnelInetConfigEncapsMethod", &Tunnel::method},
                              {5, "tunnelInetConfigID", id},
                              {6, "tunnelInetConfigIfIndex",
                               [](const Tunnel&, const Index& index) { return kTunnelIfIndexBase + index.back(); }},
                              {7, "tunnelInetConfigStatus", 1},         // active
                              {8, "tunnelInetConfigStorageType", 3}});  // nonVolatile
}

// Both lines name a row of the table: source, destination, method and number.
void Tunnels::check_creation(const Arguments& said) const {
    require(!tunnels_.contains(kTunnelIfIndexBase + said[3].number), "there is such a tunnel already");
    const Index ends = join({said[0].index(), said[1].index(), {said[2].number}});
    for (const auto& [ifindex, tunnel] : tunnels_) {
        Index other = config_index(ifindex, tunnel);
        other.pop_back();
        require(other != ends, "there is a tunnel with these ends");
    }
}

void Tunnels::check_destruction(const Arguments& said) const {
    const auto tunnel = tunnels_.find(kTunnelIfIndexBase + said[3].number);
    const Index row = join({said[0].index(), said[1].index(), {said[2].number, said[3].number}});
    require(tunnel != tunnels_.end() && config_index(tunnel->first, tunnel->second) == row, "there is no such tunnel");
}

void Tunnels::describe(Description& d) {
    d.table({.name = "tunnelIfTable",
             .show = "show snmp tunnel if {int}",
             .rows = rows_of(tunnels_, {{1, "tunnelIfLocalAddress", &Tunnel::source},
                                        {2, "tunnelIfRemoteAddress", &Tunnel::destination},
                                        {3, "tunnelIfEncapsMethod", &Tunnel::method},
                                        {4, "tunnelIfHopLimit", 64},
                                        {5, "tunnelIfSecurity", 1},  // none
                                        {6, "tunnelIfTOS", 0},
                                        {7, "tunnelIfFlowLabel", -1},   // none
                                        {8, "tunnelIfAddressType", 1},  // IPv4
                                        {9, "tunnelIfLocalInetAddress", &Tunnel::source},
                                        {10, "tunnelIfRemoteInetAddress", &Tunnel::destination},
                                        {11, "tunnelIfEncapsLimit", -1}})});  // none
    d.table({.name = "tunnelInetConfigTable",
             .show = "show snmp tunnel inetconfig {address} {address} {int} {int}",
             .key = {kAddress, kAddress, kInteger, kInteger},
             .rows = config_rows()});

    const Lines<Tunnels> global = d.lines(*this);
    const std::string numbered = fmt::format("tunnel {{1..{}}}", kLastTunnel);
    global.line("interface " + numbered, [this](const Arguments& said) {
        make(said[0].number, {});
        return Entered{kInterface, kTunnelIfIndexBase + said[0].number};
    });
    global.line("no interface " + numbered, [this](const Arguments& said) {
        require(interfaces_.remove(kTunnelIfIndexBase + said[0].number), "there is no such interface");
    });

    const Lines<Tunnels> executive = d.lines(*this, kExecutive);
    executive.line(fmt::format("show interface tunnel{{1..{}}}", kLastTunnel), [this](const Arguments& said) {
        require(tunnels_.contains(kTunnelIfIndexBase + said[0].number), "there is no such interface");
    });
    const std::string row = fmt::format("{{ipv4}} {{ipv4}} {{{}..{}}} {{1..{}}}", kOther, kIsatap, kLastTunnel);
    executive.line("snmp check tunnel create " + row, [this](const Arguments& said) { check_creation(said); });
    executive.line("snmp check tunnel destroy " + row, [this](const Arguments& said) { check_destruction(said); });

    const Lines<Tunnel> tunnel =
        interfaces_.lines(d, kTunnelIfIndexBase + 1, kTunnelIfIndexBase + kLastTunnel, "tunnel")
            .of(tunnels_, [this](const Entered& entered) { settle(entered.object); });
    const auto end = [&tunnel](const std::string& name, Tunnel::Address Tunnel::*which) {
        tunnel.line("tunnel " + name + " {ipv4}", [which](Tunnel& t, const Arguments& said) {
            require(said[0].octets[0] / 16 != 14, "the address is not one of a host");
            std::copy_n(said[0].octets.begin(), (t.*which).size(), (t.*which).begin());
        });
        tunnel.set("no tunnel " + name, which, Tunnel::Address());
    };
    end("source", &Tunnel::source);
    end("destination", &Tunnel::destination);
    tunnel.set("no tunnel mode", &Tunnel::method, kOther);
    tunnel.set("tunnel mode ipv6ip", &Tunnel::method, kIpv6OverIpv4);
    tunnel.set("tunnel mode ipv6ip 6to4", &Tunnel::method, k6to4);
    tunnel.set("tunnel mode ipv6ip isatap", &Tunnel::method, kIsatap);
}

}  // namespace

void add_tunnels(Switch& areas) { areas.area<Tunnels>(); }

}  // namespace sw
