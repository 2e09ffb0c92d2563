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
extern Advance* advance;

// Moves a number in a key on, up to `last`.
bool count_up(unsigned char* number, std::uint32_t last);

// What lookups are answered with, as far as it reaches: every port's VLAN mode (4 octets) and a VLAN's ports (12).
inline unsigned char port_mode[4] = {2};
inline unsigned char port_list[12];

}  // namespace instant
