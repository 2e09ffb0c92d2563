#include "tool/walk.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {

std::size_t walk(agent::Engine& engine, const services::Registry& registry, const std::optional<services::Oid>& root,
                 const std::function<void(const agent::Varbind&)>& found) {
    const services::Oid start = root.value_or(services::Oid{0, 0});
    const auto under_root = [&](const services::Oid& name) {
        return !root || (name.size() >= start.size() && std::equal(start.begin(), start.end(), name.begin()));
    };
    std::size_t count = 0;
    services::Oid at = start;
    while (true) {
        const agent::Varbind next = engine.next(at);
        if (next.value.is_exception() || !under_root(next.name)) break;
        if (next.name <= at)
            throw std::runtime_error(fmt::format("the walk does not go on: {} comes after {}",
                                                 registry.format(next.name), registry.format(at)));
        found(next);
        ++count;
        at = next.name;
    }
    if (count == 0 && root) {
        if (const agent::Varbind instance = engine.get(start); !instance.value.is_exception()) {
            found(instance);
            ++count;
        }
    }
    return count;
}

}  // namespace tool
