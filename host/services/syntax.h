// What MIB texts say of the values of objects: named numbers and types, as `smidump -f mosy` prints them.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace services {

struct Syntax {
    std::string type;                           // "INTEGER", "OctetString", or a textual convention: "MacAddress"
    std::map<std::int32_t, std::string> names;  // of its numbers
};
using Syntaxes = std::map<std::string, Syntax, std::less<>>;  // by object

// Reads a file that `smidump -f mosy` printed, of any number of modules. Throws std::runtime_error naming the file, and
// the line that is none of smidump's.
Syntaxes read_syntaxes(const std::string& path);

}  // namespace services
