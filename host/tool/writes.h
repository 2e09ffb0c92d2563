// What an object takes and refuses, found by trying: its types, lengths and values, and what each one sends.
#pragma once

#include "tool/format.h"
#include "tool/probe.h"

#include <nlohmann/json.hpp>
#include <vector>

namespace tool {

// A line as the contract has it: its mode, text and caller, and the phase where that is not ACTION.
Json line_json(const SentLine& line);

struct Written {
    Json takes;                 // types, and sizes of an octet string; null: the object hands out no write method
    std::vector<Json> entries;  // "write" and "refusal"
};
// The first row is tried with everything, the other ones with what the first one takes.
Written writes(Probe& probe, const services::Object& object, const std::vector<services::Oid>& rows);

}  // namespace tool
