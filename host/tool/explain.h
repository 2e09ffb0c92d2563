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

// `get|next OID...` or `set OID=VALUE...` or `set OID TYPE VALUE...`, each with `NAME=answers` among the OIDs. Throws
// UsageError.
Explained parse_explained(const services::Registry& registry, const std::vector<std::string>& words);

struct Explanation {
    // A phase of a SET for one varbind (from 0 on; -1 is the read before the phases), or the read of one varbind.
    struct Step {
        int phase;
        std::size_t varbind;
        int error;  // of a phase
        std::vector<Event> events;
    };
    Explained::Kind kind;
    std::vector<agent::Varbind> varbinds;
    std::vector<Step> steps;
    std::vector<agent::Varbind> answers;  // of a GET or GETNEXT, one a varbind
    agent::SetResult result;              // of a SET
    std::vector<std::string> unused;      // scripted names that no request had
};

// Runs the request against `backend`, which keeps what a SET changes. Owns services().backend and log meanwhile.
Explanation explain(const Explained& request, agent::Engine& engine, const services::Registry& registry,
                    services::Backend& backend);

// "RESERVE1"..., "READ" for the read before the phases.
std::string phase_name(int phase);

// The explanation line by line: for people, at most 100 columns wide where the texts allow it, as JSON, and the
// configuration lines alone.
std::vector<std::string> as_text(const Explanation& explanation, const services::Registry& registry);
std::vector<std::string> as_json(const Explanation& explanation, const services::Registry& registry);
std::vector<std::string> as_lines(const Explanation& explanation);

// "wrongValue (10) for varbind 1, swPortSpeed[swPortIndex 5121]"
std::string outcome(const Explanation& explanation, const services::Registry& registry);

}  // namespace tool
