// IP addresses: their table, the table of the prefixes of their networks, and the lines that give an interface an address
// and take it away.
#include "switch/addresses.h"

#include "switch/vlan_interfaces.h"

#include <algorithm>

namespace sw {
namespace {

// The lines do not have a prefix length.
constexpr std::uint32_t kIpv4Bits = 24, kIpv6Bits = 64;
constexpr std::uint32_t kForever = 0xffffffff;  // of a lifetime in seconds

bool bit(const Index& address, std::uint32_t n) { return address[2 + n / 8] & 0x80u >> n % 8; }

Index network_of(Index address, std::uint32_t bits) {
    for (std::uint32_t n = bits; n < 8 * address[1]; ++n) address[2 + n / 8] &= ~(0x80u >> n % 8);
    address.push_back(bits);
    return address;
}

bool is_host(const Index& address) {
    if (address[0] == kIpv4) return address[2] != 0 && address[2] != 127 && address[2] < 224;
    return address[2] != 0 && address[2] != 0xff;
}

}  // namespace

bool covers(const Index& prefix, const Index& address) {
    if (prefix[0] != address[0]) return false;
    for (std::uint32_t n = 0; n < prefix.back(); ++n)
        if (bit(prefix, n) != bit(address, n)) return false;
    return true;
}

bool has_host_bits(const Index& prefix) {
    for (std::uint32_t n = prefix.back(); n < 8 * prefix[1]; ++n)
        if (bit(prefix, n)) return true;
    return false;
}

Addresses::Addresses(Switch& its_switch)
    : Area(its_switch), interfaces_(its_switch.area<Interfaces>()), vrfs_(its_switch.area<Vrfs>()) {
    its_switch.area<VlanInterfaces>();
    const auto ipv6 = [](oid subnet) {
        return Index{kIpv6, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, subnet, 0, 0, 0, 0, 0, 0, 0, 1};
    };
    add(kVlanIfIndexBase + 1, {kIpv4, 4, 192, 0, 2, 1}, kIpv4Bits);
    add(kVlanIfIndexBase + 10, {kIpv4, 4, 10, 0, 10, 1}, kIpv4Bits);
    add(kVlanIfIndexBase + 30, {kIpv4, 4, 10, 0, 110, 1}, kIpv4Bits);
    for (const oid vid : {1u, 10u, 30u}) add(kVlanIfIndexBase + vid, ipv6(vid), kIpv6Bits);
    // With room for as many neighbours as may be asked for.
    if (its_switch.size().neighbours != 0) add(kVlanIfIndexBase + 1, {kIpv4, 4, 100, 64, 0, 1}, 10);
}

void Addresses::add(std::uint32_t ifindex, const Index& address, std::uint32_t bits) {
    const std::uint32_t vrf = vrfs_.of(ifindex);
    const Index prefix = network_of(address, bits);
    addresses_[join({{vrf}, address})] = {ifindex, prefix};
    if (++networks_[join({{vrf, ifindex}, prefix})] == 1) switch_.announce(&Area::network_made, vrf, ifindex, prefix);
}

Addresses::Entries::iterator Addresses::remove(Entries::iterator entry) {
    const std::uint32_t vrf = entry->first[0];
    const auto [ifindex, prefix] = entry->second;
    const auto next = addresses_.erase(entry);
    const auto network = networks_.find(join({{vrf, ifindex}, prefix}));
    if (--network->second == 0) {
        networks_.erase(network);
        switch_.announce(&Area::network_removed, vrf, ifindex, prefix);
    }
    return next;
}

void Addresses::interface_removed(std::uint32_t ifindex) {
    for (auto entry = addresses_.begin(); entry != addresses_.end();)
        entry = entry->second.ifindex == ifindex ? remove(entry) : std::next(entry);
}

bool Addresses::is_connected(std::uint32_t vrf, std::uint32_t ifindex, const Index& address) const {
    return std::any_of(
        networks_.lower_bound({vrf, ifindex}), networks_.lower_bound({vrf, ifindex + 1}),
        [&](const auto& network) { return covers(Index(network.first.begin() + 2, network.first.end()), address); });
}

void Addresses::set(std::uint32_t ifindex, const Index& address) {
    const bool takes = ifindex > kTunnelIfIndexBase && ifindex <= kVlanIfIndexBase + kLastVlan;
    require(takes && interfaces_.find(ifindex) != nullptr, "there is no such IP interface");
    require(is_host(address), "the address is not one of a host");
    const std::uint32_t vrf = vrfs_.of(ifindex);
    require(!is_own(vrf, address), "there is such an address");
    const std::uint32_t bits = address[0] == kIpv4 ? kIpv4Bits : kIpv6Bits;
    const Index prefix = network_of(address, bits);
    for (const auto& [row, count] : networks_) {
        const Index other(row.begin() + 2, row.end());
        require(row[0] != vrf || row[1] == ifindex || (!covers(other, address) && !covers(prefix, other)),
                "another interface is in that network");
    }
    add(ifindex, address, bits);
}

void Addresses::unset(std::uint32_t ifindex, const Index& address) {
    const auto entry = addresses_.find(join({{vrfs_.of(ifindex)}, address}));
    require(entry != addresses_.end() && entry->second.ifindex == ifindex, "the interface does not have that address");
    remove(entry);
}

void Addresses::unset(const Index& address) {
    const auto entry = std::find_if(addresses_.begin(), addresses_.end(), [&](const auto& each) {
        return std::equal(each.first.begin() + 1, each.first.end(), address.begin(), address.end());
    });
    require(entry != addresses_.end(), "there is no such address");
    remove(entry);
}

void Addresses::describe(Description& d) {
    const auto its_octets = [](const auto&, const Index& row) { return octets_of(&row[3], row[2]); };
    const auto prefix = [](const Address& address) {
        return object_id(join({{1, 3, 6, 1, 2, 1, 4, 32, 1, 5, address.ifindex}, address.prefix}));
    };
    const auto status = [this](const Address& address) { return interfaces_.is_up(address.ifindex) ? 1 : 4; };
    d.table({.name = "ipAddressTable",
             .show = "show ipaddress {int} [{address}] [vrf {word}]",
             .key = {kSplitAddress},
             .rows = rows_of(addresses_, {{1, "ipAddressAddrType", from_index(1)},
                                          {2, "ipAddressAddr", its_octets},
                                          {3, "ipAddressIfIndex", &Address::ifindex},
                                          {4, "ipAddressType", 1},  // unicast
                                          {5, "ipAddressPrefix", prefix},
                                          {6, "ipAddressOrigin", 2},       // manual
                                          {7, "ipAddressStatus", status},  // preferred, inaccessible
                                          {10, "ipAddressRowStatus", 1}}),
             .scope = vrfs_.scope()});

    const auto is_ipv6 = [](const auto&, const Index& row) { return row[2] == kIpv6; };
    const auto seconds = [](std::uint32_t ipv6) {
        return [ipv6](const auto&, const Index& row) { return row[2] == kIpv6 ? ipv6 : kForever; };
    };
    d.table({.name = "ipAddressPrefixTable",
             .show = "show ipaddress prefix {int} {int} [{address/bits}] [vrf {word}]",
             .key = {kInteger, kPrefix},
             .rows = rows_of(networks_,
                             {{1, "ipAddressPrefixIfIndex", from_index(1)},
                              {2, "ipAddressPrefixType", from_index(2)},
                              {3, "ipAddressPrefixPrefix",
                               [](const auto&, const Index& row) { return octets_of(&row[4], row[3]); }},
                              {4, "ipAddressPrefixLength", [](const auto&, const Index& row) { return row.back(); }},
                              {5, "ipAddressPrefixOrigin", 2},
                              {6, "ipAddressPrefixOnLinkFlag", true},
                              {7, "ipAddressPrefixAutonomousFlag", is_ipv6},
                              {8, "ipAddressPrefixAdvPreferredLifetime", seconds(604'800)},
                              {9, "ipAddressPrefixAdvValidLifetime", seconds(2'592'000)}}),
             .scope = vrfs_.scope()});

    const Lines<Addresses> global = d.lines(*this);
    global.line("ipaddresstable ip {int} {ipv4}",
                [this](const Arguments& said) { set(said[0].number, said[1].index()); });
    global.line("no ipaddresstable ip {int} {ipv4}",
                [this](const Arguments& said) { return unset(said[0].number, said[1].index()); });
    global.line("ipv6 address {ipv6}", [] { refuse("an address is set in its interface's mode"); });
    global.line("no ipv6 address {ipv6}", [this](const Arguments& said) { return unset(said[0].index()); });
    const Lines<Interface> interface =
        interfaces_.lines(d, kTunnelIfIndexBase + 1, kVlanIfIndexBase + kLastVlan, "IP interface");
    interface.line("ipv6 address {ipv6}", [this](Interface&, const Arguments& said, const Entered& entered) {
        set(entered.object, said[0].index());
    });
    interface.line("no ipv6 address {ipv6}", [this](Interface&, const Arguments& said, const Entered& entered) {
        return unset(entered.object, said[0].index());
    });
}

void add_addresses(Switch& areas) { areas.area<Addresses>(); }

}  // namespace sw
