// `mibhost walk`: every instance under an OID, in this process.
#pragma once

#include "agent/engine.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>

namespace tool {

// Passes `found` every instance under `root` (everything without one) in the order of a GETNEXT walk; the instance
// itself when the root is one. Returns how many; throws std::runtime_error when an OID does not increase.
std::size_t walk(agent::Engine& engine, const services::Registry& registry, const std::optional<services::Oid>& root,
                 const std::function<void(const agent::Varbind&)>& found);

}  // namespace tool
