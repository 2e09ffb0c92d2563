#include "tool/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace tool {
namespace {

template <typename Number>
Number number_in(const agent::Value& value) {
    Number number;
    std::memcpy(&number, value.octets.data(), sizeof number);
    return number;
}

// Octets that a number or address of this type has; 0 where any count will do.
std::size_t fixed_size(std::uint8_t tag) {
    switch (tag) {
        case agent::kInteger:
        case agent::kIpAddress:
        case agent::kCounter32:
        case agent::kGauge32:
        case agent::kTimeTicks: return 4;
        case agent::kCounter64: return 8;
        default: return 0;
    }
}

std::string uptime(std::uint32_t hundredths) {
    const std::uint32_t seconds = hundredths / 100;
    const std::uint32_t days = seconds / 86400;
    const std::string clock =
        fmt::format("{}:{:02}:{:02}.{:02}", seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, hundredths % 100);
    return days == 0 ? clock : fmt::format("{} day{}, {}", days, days == 1 ? "" : "s", clock);
}

std::string content(const services::Registry& registry, const agent::Value& value) {
    const auto& octets = value.octets;
    switch (value.tag) {
        case agent::kInteger: return std::to_string(number_in<std::int32_t>(value));
        case agent::kCounter32:
        case agent::kGauge32: return std::to_string(number_in<std::uint32_t>(value));
        case agent::kTimeTicks: {
            const auto ticks = number_in<std::uint32_t>(value);
            return fmt::format("({}) {}", ticks, uptime(ticks));
        }
        case agent::kCounter64: return std::to_string(number_in<std::uint64_t>(value));
        case agent::kIpAddress: return fmt::format("{}.{}.{}.{}", octets[0], octets[1], octets[2], octets[3]);
        case agent::kOctetString:
            if (printable(octets.data(), octets.size()))
                return quoted({reinterpret_cast<const char*>(octets.data()), octets.size()});
            break;
        case agent::kObjectId:
            if (octets.size() % sizeof(oid) == 0) {
                services::Oid target(octets.size() / sizeof(oid));
                if (!target.empty()) std::memcpy(target.data(), octets.data(), octets.size());
                return registry.format(target);
            }
            break;
        default: break;
    }
    return hex(octets.data(), octets.size());
}

}  // namespace

std::string type_name(std::uint8_t tag) {
    switch (tag) {
        case agent::kInteger: return "INTEGER";
        case agent::kOctetString: return "STRING";
        case agent::kNull: return "NULL";
        case agent::kObjectId: return "OID";
        case agent::kIpAddress: return "IpAddress";
        case agent::kCounter32: return "Counter32";
        case agent::kGauge32: return "Gauge32";
        case agent::kTimeTicks: return "Timeticks";
        case agent::kOpaque: return "Opaque";
        case agent::kCounter64: return "Counter64";
        case agent::kNoSuchObject: return "noSuchObject";
        case agent::kNoSuchInstance: return "noSuchInstance";
        case agent::kEndOfMibView: return "endOfMibView";
        default: return fmt::format("type {:#04x}", tag);
    }
}

std::string status_name(int status) {
    static constexpr std::array kNames = {
        "noError",
        "tooBig",
        "noSuchName",
        "badValue",
        "readOnly",
        "genErr",
        "noAccess",
        "wrongType",
        "wrongLength",
        "wrongEncoding",
        "wrongValue",
        "noCreation",
        "inconsistentValue",
        "resourceUnavailable",
        "commitFailed",
        "undoFailed",
        "authorizationError",
        "notWritable",
        "inconsistentName",
    };
    if (status < 0 || status >= static_cast<int>(kNames.size())) return fmt::format("error {}", status);
    return kNames[static_cast<std::size_t>(status)];
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result += {'\\', c};
        else if (octet < 0x20 || octet > 0x7e)
            result += fmt::format("\\x{:02x}", octet);
        else
            result += c;
    }
    return result + '"';
}

std::string hex(const std::uint8_t* octets, std::size_t count) {
    return fmt::format("{:02x}", fmt::join(octets, octets + count, " "));
}

bool printable(const std::uint8_t* octets, std::size_t count) {
    return std::all_of(octets, octets + count, [](std::uint8_t octet) { return octet >= 0x20 && octet <= 0x7e; });
}

std::string format_value(const services::Registry& registry, const agent::Value& value) {
    if (value.is_exception() || value.tag == agent::kNull) return type_name(value.tag);
    const std::size_t size = fixed_size(value.tag);
    if (size != 0 && value.octets.size() != size)
        return fmt::format("{}: wrong size, {} octets: {}", type_name(value.tag), value.octets.size(),
                           hex(value.octets.data(), value.octets.size()));
    const bool as_hex = value.tag == agent::kOctetString && !printable(value.octets.data(), value.octets.size());
    return fmt::format("{}{}: {}", as_hex ? "Hex-" : "", type_name(value.tag), content(registry, value));
}

std::string format_varbind(const services::Registry& registry, const agent::Varbind& varbind) {
    return fmt::format("{} = {}", registry.format(varbind.name), format_value(registry, varbind.value));
}

}  // namespace tool
