// The words of the command line: OIDs, values and scripted answers.
#pragma once

#include "agent/engine.h"

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The command line is wrong; the message names it. Ends the tool with exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// ", did you mean 'swPortSpeed' or 'swPortSpeedX'?" with the nearest of some names; empty when none is near.
std::string suggestion(const std::vector<std::string>& names, std::string_view wanted);

// An OID as Registry::parse takes it. Throws UsageError, with the names that may have been meant when it is unknown.
services::Oid parse_oid(const services::Registry& registry, std::string_view text);

// A value by type letter: i INTEGER, u Gauge32, c Counter32, t TimeTicks, s text, x hex octets, o OID, a IpAddress.
agent::Value parse_value(const services::Registry& registry, std::string_view type, std::string_view text);
// A value of the type that the object is registered with; an octet string is a text, `text:...` or
// `hex:...`. Throws UsageError.
agent::Value parse_value(const services::Registry& registry, const services::Object& object, std::string_view text);

// What a scripted backend answers to one request.
struct Answer {
    bool refused = false;
    std::vector<std::uint8_t> octets;  // the value of a show request; unused for a configuration line
};

// Answers by name of the show request, or by `NAME.MAGIC` for one column or item; "config" is for configuration lines.
using Script = std::map<std::string, std::vector<Answer>, std::less<>>;

// Adds `NAME=answer,answer...`: an integer, `text:...`, `hex:...` or `refused`; for `config`, `ok` or `refused`.
void parse_script(std::string_view text, Script& script);

}  // namespace tool
