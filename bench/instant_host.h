// A host that answers at once, for benchmarks: what it costs is what the library and the floor both pay.
#pragma once

#include "framework/host.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace instant {

struct Registered {
    const VariableEntry* entries;
    std::size_t count;
    std::vector<oid> module_oid;
};
std::vector<Registered>& registered();

// What a GETNEXT does to the key; false at the table's end. A benchmark puts its rows here.
using Advance = bool(unsigned char* key);
bool same_row(unsigned char* key);  // leaves it as it is
inline Advance* advance = same_row;

// Moves a number in a key on, up to `last`.
bool count_up(unsigned char* number, std::uint32_t last);

// What lookups are answered with, by their size: every port's VLAN mode, a VLAN's ports, a port's VLANs.
inline unsigned char port_mode[4] = {2};
inline unsigned char port_list[12];
inline unsigned char vlan_list[512];

// The files in /proc are the same on every machine; these are the settings among them.
inline constexpr const char* kForwarding = "/proc/sys/net/ipv6/conf/all/forwarding";
inline constexpr const char* kHopLimit = "/proc/sys/net/ipv6/conf/default/hop_limit";

}  // namespace instant
