// What the command line and a configuration file set.
#pragma once

#include "switch/simulated_switch.h"
#include "tool/list.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

enum class Command { serve, list, contract, explain, walk, manual, completion };

struct Options {
    Command command = Command::serve;
    std::string library;
    std::string texts;  // what smidump -f mosy prints of MIB texts; empty: none
    // requests: serve, explain and walk
    std::optional<std::string> vrf;
    std::optional<std::string> snmp_context;
    sw::Size size;
    bool freeze = false;  // the simulated switch's clock does not move
    // serve
    std::string listen = "127.0.0.1:1161";
    std::string community = "public";
    std::optional<std::string> write_community;  // none: no write access
    std::size_t max_varbinds = 128;              // of a request
    std::size_t max_bulk_varbinds = 512;         // of the response to a GETBULK
    unsigned log_rate = 20;                      // lines a second for requests that are refused or dropped
    bool verbose = false;
    bool log_json = false;
    // output of list, contract, explain and walk
    bool json = false;
    bool lines = false;  // explain: the configuration lines alone
    ListForm form = ListForm::text;
    // words
    std::vector<std::string> patterns;   // list and contract
    std::vector<std::string> explained;  // explain
    std::optional<std::string> root;     // walk
};

struct HostPort {
    std::string host;
    std::uint16_t port;
};

// "127.0.0.1:1161", "[::1]:1161". Throws UsageError naming what is wrong.
HostPort parse_listen(const std::string& text);

}  // namespace tool
