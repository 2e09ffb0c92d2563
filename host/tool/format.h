// How the tool prints values, texts and numbers of the protocol.
#pragma once

#include "agent/engine.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// "INTEGER", "STRING", "Counter32"...; "type 0x47" for a tag that nobody knows.
std::string type_name(std::uint8_t tag);
// "noError", "wrongValue"...; "error 99" outside the protocol's range.
std::string status_name(int status);
// The text in double quotes, with control characters, quotes and backslashes escaped, so that it stays on one line.
std::string quoted(std::string_view text);
// "00 1f a0"
std::string hex(const std::uint8_t* octets, std::size_t count);
// True for a text that can be shown as it is: no octet outside printable ASCII.
bool printable(const std::uint8_t* octets, std::size_t count);

// `TYPE: value`, OIDs by name; an octet string in quotes, or in hex when it is not printable.
std::string format_value(const services::Registry& registry, const agent::Value& value);
// `name = TYPE: value`
std::string format_varbind(const services::Registry& registry, const agent::Varbind& varbind);

}  // namespace tool
