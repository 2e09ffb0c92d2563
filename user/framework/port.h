// What a switch port can do, for the writers of its settings.
#pragma once

#include "framework/command.h"
#include "framework/host.h"

#include <cstddef>
#include <cstdint>

namespace switchmib {

enum class PortItem : int { type = 1, medium = 2 };

// Flags of a port's type
inline constexpr std::uint32_t kComboPort = 2;  // two media; commands name the medium
inline constexpr std::uint32_t kSpeedFixed = 16 | 32 | 64;
inline constexpr std::uint32_t kFlowControlFixed = 128;
inline constexpr std::uint32_t kCanBreakOut = 1u << 28;

// Active media
inline constexpr std::uint32_t kCopper = 1;
inline constexpr std::uint32_t kFiber = 2;

// A refused lookup counts as what its cell holds, which starts as 0.
inline std::uint32_t port_info(std::uint32_t ifindex, PortItem item, int line = __builtin_LINE()) {
    std::uint32_t value = 0;
    std::size_t length = 0;
    uib_sh_show_request(2, Command("show swport type-medium %d", ifindex), &value, sizeof value, &length, nullptr, 0,
                        static_cast<int>(item), 1, 0, "_get_port_info", line);
    return value;
}

// What configuration lines say after a setting of one medium: a port that has just one is not asked for it.
inline const char* medium_word(std::uint32_t type, std::uint32_t medium) {
    if (!(type & kComboPort)) return "";
    return medium == kCopper ? " copper" : " fiber";
}

}  // namespace switchmib
