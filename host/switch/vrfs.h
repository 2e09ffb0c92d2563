// The VRFs that there are.
#pragma once

#include "switch/area.h"

#include <map>
#include <string>

namespace sw {

constexpr std::uint32_t kDefaultVrf = 0;

struct Vrf {
    std::uint32_t number;  // as rows of several VRFs have it before their index
};

class Vrfs : public Area {
public:
    using Area::Area;
    void describe(Description&) override;

    void interface_removed(std::uint32_t ifindex) override { bound_.erase(ifindex); }

    // The number of the VRF that an interface is in.
    std::uint32_t of(std::uint32_t ifindex) const {
        const auto bound = bound_.find(ifindex);
        return bound != bound_.end() ? bound->second : kDefaultVrf;
    }
    // The number of the one that a command names, the default one for an absent word; none: there is no such VRF.
    std::optional<std::uint32_t> find(std::string_view name) const;
    // For a table of several VRFs, whose rows have the VRF's number before their index, and whose command ends in
    // "[vrf {word}]": Table::scope. An unknown VRF has no rows.
    std::function<std::optional<Index>(const Arguments&)> scope() const;
    // Lines of global mode, for the default VRF, and of a VRF's own mode.
    Lines<Vrf> lines(Description&);

private:
    std::map<std::string, Vrf, std::less<>> vrfs_{{"", {kDefaultVrf}}, {"red", {1}}};
    // Interfaces that are in another VRF than the default one, by ifIndex.
    std::map<std::uint32_t, std::uint32_t> bound_{{kTunnelIfIndexBase + 2, 1}, {kVlanIfIndexBase + 30, 1}};
};

}  // namespace sw
