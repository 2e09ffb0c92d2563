#include "tool/options.h"

#include "tool/arguments.h"

#include <fmt/format.h>
#include <asio/ip/address.hpp>

#include <charconv>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <variant>

namespace tool {
namespace {

using Target = std::variant<std::string*, std::optional<std::string>*, bool*>;

std::map<std::string, Target> targets(Options& options) {
    return {
        {"library", &options.library},
        {"listen", &options.listen},
        {"community", &options.community},
        {"write-community", &options.write_community},
        {"vrf", &options.vrf},
        {"snmp-context", &options.snmp_context},
        {"verbose", &options.verbose},
        {"freeze", &options.freeze},
    };
}

void assign(const Target& target, const nlohmann::json& value, const std::string& where) {
    if (bool* const* flag = std::get_if<bool*>(&target)) {
        if (!value.is_boolean())
            throw UsageError(fmt::format("{} is a {}, not true or false", where, value.type_name()));
        **flag = value.get<bool>();
        return;
    }
    if (!value.is_string()) throw UsageError(fmt::format("{} is a {}, not a string", where, value.type_name()));
    if (std::string* const* text = std::get_if<std::string*>(&target))
        **text = value.get<std::string>();
    else
        *std::get<std::optional<std::string>*>(target) = value.get<std::string>();
}

}  // namespace

void read_config(const std::string& path, Options& options, const std::function<bool(const std::string&)>& given) {
    Options overridden;  // takes what the command line has said otherwise, so that it is checked all the same
    const auto keys = targets(options);
    const auto unused_keys = targets(overridden);
    std::ifstream file(path);
    if (!file) throw UsageError(fmt::format("cannot read the configuration file {}", path));
    nlohmann::json document;
    try {
        document = nlohmann::json::parse(file);
    } catch (const nlohmann::json::exception& error) {
        throw UsageError(fmt::format("{} is not JSON: {}", path, error.what()));
    } catch (const std::ios_base::failure&) {  // a directory
        throw UsageError(fmt::format("cannot read the configuration file {}", path));
    }
    if (!document.is_object()) throw UsageError(fmt::format("{}: not a JSON object of options", path));
    for (const auto& [key, value] : document.items()) {
        const auto found = keys.find(key);
        if (found == keys.end()) {
            std::string known;
            for (const auto& entry : keys) known += (known.empty() ? "" : ", ") + entry.first;
            throw UsageError(fmt::format("{}: unknown key '{}', known are {}", path, key, known));
        }
        assign(given(key) ? unused_keys.at(key) : found->second, value, fmt::format("{}: '{}'", path, key));
    }
}

HostPort parse_listen(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos) throw UsageError(fmt::format("listen address '{}' has no port", text));
    std::string host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    std::error_code error;
    asio::ip::make_address(host, error);
    if (error) throw UsageError(fmt::format("listen address '{}': '{}' is not an IP address", text, host));
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data() + colon + 1, end, port);
    if (status != std::errc{} || stop != end)
        throw UsageError(
            fmt::format("listen address '{}': '{}' is not a port (0 to 65535)", text, text.substr(colon + 1)));
    return {host, port};
}

}  // namespace tool
