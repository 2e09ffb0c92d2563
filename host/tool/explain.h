// `mibhost explain`: what the library would ask of the backend for one request, and what it would answer.
#pragma once

#include "agent/engine.h"
#include "tool/arguments.h"
#include "tool/trace.h"

#include <string>
#include <vector>

namespace tool {

struct Explained {
    enum class Kind { get, next, set } kind;
    std::vector<agent::Varbind> varbinds;  // with values for a SET only
    Script script;
};

// `get|next OID...` or `set OID TYPE VALUE...`, each with `NAME=answers` among the OIDs. Throws UsageError.
Explained parse_explained(const services::Registry& registry, const std::vector<std::string>& words);

// Runs the request against `backend`, which should be a throw-away one, and tells every step. Owns services().backend
// and log meanwhile.
void explain(const Explained& request, agent::Engine& engine, const services::Registry& registry,
             services::Backend& backend, const LineSink& out);

}  // namespace tool
