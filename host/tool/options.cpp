#include "tool/options.h"

#include "tool/arguments.h"

#include <fmt/format.h>
#include <asio/ip/address.hpp>

#include <charconv>

namespace tool {

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
