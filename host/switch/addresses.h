// IP addresses of interfaces, and the networks that interfaces are in by them.
#pragma once

#include "switch/interfaces.h"
#include "switch/vrfs.h"

#include <map>

namespace sw {

// Addresses and prefixes are as in an index: type, length, octets, and of a prefix its length.
inline Value octets(const Index& address) { return octets_of(address.data() + 2, address[1]); }
bool covers(const Index& prefix, const Index& address);
bool has_host_bits(const Index& prefix);

constexpr std::uint32_t kIpv4 = 1, kIpv6 = 2;  // types of addresses

class Addresses : public Area {
public:
    explicit Addresses(Switch&);
    void describe(Description&) override;
    void interface_removed(std::uint32_t ifindex) override;

    // How many addresses there are in each network: by VRF, ifIndex, prefix.
    const std::map<Index, std::size_t>& networks() const { return networks_; }
    bool is_own(std::uint32_t vrf, const Index& address) const { return addresses_.contains(join({{vrf}, address})); }
    // Whether an interface is in a network that has the address.
    bool is_connected(std::uint32_t vrf, std::uint32_t ifindex, const Index& address) const;

private:
    struct Address {
        std::uint32_t ifindex;
        Index prefix;
    };
    using Entries = std::map<Index, Address>;

    void add(std::uint32_t ifindex, const Index& address, std::uint32_t bits);
    Entries::iterator remove(Entries::iterator);
    void set(std::uint32_t ifindex, const Index& address);
    void unset(std::uint32_t ifindex, const Index& address);
    void unset(const Index& address);  // on whatever interface

    Interfaces& interfaces_;
    Vrfs& vrfs_;
    Entries addresses_;  // by VRF, address
    std::map<Index, std::size_t> networks_;
};

}  // namespace sw
