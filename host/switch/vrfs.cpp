// VRFs: their names and the line that enters one.
#include "switch/vrfs.h"

#include <algorithm>
#include <limits>

namespace sw {

std::optional<std::uint32_t> Vrfs::find(std::string_view name) const {
    const auto vrf = vrfs_.find(name);
    if (vrf == vrfs_.end()) return {};
    return vrf->second.number;
}

std::function<std::optional<Index>(const Arguments&)> Vrfs::scope() const {
    return [this](const Arguments& said) {
        return Index{find(said.back().text).value_or(std::numeric_limits<std::uint32_t>::max())};
    };
}

Lines<Vrf> Vrfs::lines(Description& d) {
    return d.lines<Vrf>({kGlobal, kVrf}, [this](const Entered& entered) -> Vrf& {
        const std::uint32_t number = entered.mode == kVrf ? entered.object : kDefaultVrf;
        const auto is_it = [number](const auto& each) { return each.second.number == number; };
        return std::find_if(vrfs_.begin(), vrfs_.end(), is_it)->second;
    });
}

void Vrfs::describe(Description& d) {
    d.lines(*this).line("vrf context {word}", [this](const Arguments& arguments) {
        const auto number = find(arguments[0].text);
        require(number.has_value(), "there is no such VRF");
        return Entered{kVrf, *number};
    });
}

void add_vrfs(Switch& areas) { areas.area<Vrfs>(); }

}  // namespace sw
