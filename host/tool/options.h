// The tool's options, from the command line and, for `mibhost serve`, from a JSON file.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tool {

struct Options {
    std::string library;
    std::string listen = "127.0.0.1:1161";
    std::string community = "public";
    std::optional<std::string> write_community;  // none: no write access
    std::optional<std::string> vrf;
    std::optional<std::string> snmp_context;
    bool verbose = false;
    bool freeze = false;  // the simulated switch's clock stands
};

// Reads a JSON object whose keys are the names of the long options ("write-community"). A key for which `given` holds
// stood on the command line, which wins. Throws UsageError naming the file and the key for an unknown key or a wrong
// type, and for a file that cannot be read or is no JSON object.
void read_config(const std::string& path, Options& options, const std::function<bool(const std::string&)>& given);

struct HostPort {
    std::string host;
    std::uint16_t port;
};

// "127.0.0.1:1161", "[::1]:1161". Throws UsageError naming what is wrong.
HostPort parse_listen(const std::string& text);

}  // namespace tool
