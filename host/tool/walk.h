// `mibhost walk`: every instance under an OID, in this process.
#pragma once

#include "agent/engine.h"

#include <cstdio>
#include <optional>

namespace tool {

// Prints one line a varbind from `root` (everything without one), then the count. False, with a message on stderr, when
// an OID does not increase.
bool walk(agent::Engine& engine, const services::Registry& registry, const std::optional<services::Oid>& root,
          std::FILE* out);

}  // namespace tool
