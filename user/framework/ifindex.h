// The numbering of interfaces.
#pragma once

#include <cstdint>

namespace switchmib {

inline constexpr std::uint32_t kTunnelIfIndexBase = 896;  // tunnel n is interface n + this
inline constexpr std::uint32_t kVlanIfIndexBase = 1024;   // the interface of VLAN n is n + this
inline constexpr std::uint32_t kLastVlanIfIndex = 5118;
inline constexpr std::uint32_t kPortIfIndexBase = 5120;  // bridge port n is interface n + this
inline constexpr std::uint32_t kLastPort = 90;           // the highest number that a port may have
inline constexpr std::uint32_t kLastPortIfIndex = kPortIfIndexBase + kLastPort;

constexpr bool is_vlan_interface(std::uint32_t ifindex) {
    return ifindex > kVlanIfIndexBase && ifindex <= kLastVlanIfIndex;
}

}  // namespace switchmib
