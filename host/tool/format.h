// How the tool prints values, texts and numbers of the protocol, as text and as JSON.
#pragma once

#include "agent/engine.h"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

constexpr std::size_t kWidth = 100;  // columns of a terminal that what is printed should fit

// "1 object", "2 objects"
std::string counted(std::size_t number, std::string_view noun);
// An OID by number, with words for this build's enterprise numbers, which are settings: "1.3.6.1.4.1.<vendor>.10".
std::string portable(const services::Oid& oid);
// "INTEGER", "STRING", "Counter32"...; "type 0x47" for an unknown tag.
std::string type_name(std::uint8_t tag);
// "noError", "wrongValue"...; "error 99" outside the protocol's range.
std::string status_name(int status);
// The text in double quotes, with control characters, quotes and backslashes escaped, so that it stays on one line.
std::string in_quotes(std::string_view text);
// "00 1f a0"
std::string hex(const std::uint8_t* octets, std::size_t count);
// True for a text that can be shown as it is: no octet outside printable ASCII.
bool printable(const std::uint8_t* octets, std::size_t count);

// `TYPE: value`, OIDs by name; an octet string in quotes, or in hex when it is not printable. With a syntax that says
// more: `INTEGER: up(1)`, MAC and IP addresses, and the members of a list, `STRING: 1-4,7`.
std::string format_value(const services::Registry& registry, const agent::Value& value,
                         const services::Syntax* syntax = nullptr);
// `name = TYPE: value`
std::string format_varbind(const services::Registry& registry, const agent::Varbind& varbind);

using Json = nlohmann::ordered_json;

// One line without its end. Octets that are no UTF-8 come out as the replacement character.
std::string json_line(const Json& object);
// An index or key in its parts: a number for an integer field, a text for every other.
Json json_index(const services::Group& group, const std::vector<std::string>& parts);
// An object's name, module, table and column or scalar group, index kinds and magic.
Json json_object(const services::Object& object);
// An instance's OID, its object as above, its index, type and value. An octet string that is not printable has "octets"
// in hex in place of "value". What the object's syntax makes of the value is its "text".
Json json_varbind(const services::Registry& registry, const agent::Varbind& varbind);

}  // namespace tool
