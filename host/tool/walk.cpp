#include "tool/walk.h"

#include "tool/format.h"

#include <fmt/format.h>

#include <algorithm>

namespace tool {

bool walk(agent::Engine& engine, const services::Registry& registry, const std::optional<services::Oid>& root,
          std::FILE* out) {
    const services::Oid start = root.value_or(services::Oid{0, 0});
    const auto under_root = [&](const services::Oid& name) {
        return !root || (name.size() >= start.size() && std::equal(start.begin(), start.end(), name.begin()));
    };
    std::size_t count = 0;
    const auto print = [&](const agent::Varbind& varbind) {
        fmt::print(out, "{}\n", format_varbind(registry, varbind));
        ++count;
    };

    services::Oid at = start;
    while (true) {
        const agent::Varbind found = engine.next(at);
        if (found.value.is_exception() || !under_root(found.name)) break;
        if (found.name <= at) {
            std::fflush(out);
            fmt::print(stderr, "mibhost: the walk does not go on: {} follows {}\n", registry.format(found.name),
                       registry.format(at));
            return false;
        }
        print(found);
        at = found.name;
    }
    if (count == 0 && root)
        if (const agent::Varbind instance = engine.get(start); !instance.value.is_exception()) print(instance);
    fmt::print(out, "{} variable{}\n", count, count == 1 ? "" : "s");
    return true;
}

}  // namespace tool
