#include "tool/format.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>

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
    return days == 0 ? clock : fmt::format("{}, {}", counted(days, "day"), clock);
}

std::string hex_of(const agent::Value& value) { return hex(value.octets.data(), value.octets.size()); }

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
                return in_quotes({reinterpret_cast<const char*>(octets.data()), octets.size()});
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
    return hex_of(value);
}

bool has_wrong_size(const agent::Value& value) {
    const std::size_t size = fixed_size(value.tag);
    return size != 0 && value.octets.size() != size;
}

bool is_printable(const agent::Value& value) { return printable(value.octets.data(), value.octets.size()); }

// The numbers of the bits that are set, of which the first is the most significant bit of the first octet: "1-4,7".
std::string members(const std::vector<std::uint8_t>& octets) {
    const auto has = [&](std::size_t bit) {
        return bit < 8 * octets.size() && (octets[bit / 8] & (0x80u >> bit % 8)) != 0;
    };
    std::string text;
    for (std::size_t bit = 0; bit < 8 * octets.size(); ++bit) {
        if (!has(bit)) continue;
        const std::size_t first = bit;
        while (has(bit + 1)) ++bit;
        text += fmt::format("{}{}", text.empty() ? "" : ",", first + 1);
        if (bit != first) text += fmt::format("-{}", bit + 1);
    }
    return text.empty() ? "none" : text;
}

std::optional<std::string> address(const std::vector<std::uint8_t>& octets) {
    const int family = octets.size() == 4 ? AF_INET : octets.size() == 16 ? AF_INET6 : AF_UNSPEC;
    char text[INET6_ADDRSTRLEN];
    if (family == AF_UNSPEC || inet_ntop(family, octets.data(), text, sizeof text) == nullptr) return std::nullopt;
    return text;
}

// What a syntax makes of a value; none where it says no more than the type.
std::optional<std::string> text_by(const services::Syntax* syntax, const agent::Value& value) {
    constexpr std::size_t kMacAddress = 6, kPortList = 12;
    if (syntax == nullptr || has_wrong_size(value)) return std::nullopt;
    const auto& octets = value.octets;
    const std::string& type = syntax->type;
    if (value.tag == agent::kInteger) {
        const auto number = number_in<std::int32_t>(value);
        if (const auto name = syntax->names.find(number); name != syntax->names.end())
            return fmt::format("{}({})", name->second, number);
    }
    if (value.tag != agent::kOctetString) return std::nullopt;
    if (type == "MacAddress" && octets.size() == kMacAddress) return fmt::format("{:02x}", fmt::join(octets, ":"));
    if (type == "InetAddress") return address(octets);
    // One that is written has its ports further back.
    const bool read_mvr_list = type == "MvrPortList" && octets.size() <= kPortList;
    if (type == "PortList" || type == "CorvinVlanList" || read_mvr_list) return members(octets);
    return std::nullopt;
}

void add_value(Json& json, const services::Registry& registry, const agent::Value& value) {
    if (value.tag == agent::kNull || value.is_exception()) return;
    const bool known = !has_wrong_size(value);
    switch (value.tag) {
        case agent::kInteger:
            if (known) json["value"] = number_in<std::int32_t>(value);
            break;
        case agent::kCounter32:
        case agent::kGauge32:
        case agent::kTimeTicks:
            if (known) json["value"] = number_in<std::uint32_t>(value);
            break;
        case agent::kCounter64:
            if (known) json["value"] = number_in<std::uint64_t>(value);
            break;
        case agent::kOctetString:
            if (is_printable(value)) json["value"] = std::string(value.octets.begin(), value.octets.end());
            break;
        case agent::kObjectId:
        case agent::kIpAddress:
            if (known) json["value"] = content(registry, value);
            break;
        default: break;
    }
    if (!json.contains("value")) json["octets"] = hex_of(value);
}

}  // namespace

std::string counted(std::size_t number, std::string_view noun) {
    return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

std::string portable(const services::Oid& oid) {
    const std::string numbers = services::to_string(oid) + '.';
    const std::string enterprises = "1.3.6.1.4.1.";
    const struct {
        std::uint32_t number;
        const char* arc;
        const char* word;
    } settings[] = {{SWITCHMIB_VENDOR_ENTERPRISE, ".10.1.100.", "<vendor>"},
                    {SWITCHMIB_SECOND_ENTERPRISE, ".10.120.100.", "<second>"}};
    for (const auto& [number, arc, word] : settings) {
        const std::string root = enterprises + std::to_string(number);
        if (numbers.starts_with(root + arc))
            return enterprises + word + numbers.substr(root.size(), numbers.size() - root.size() - 1);
    }
    return services::to_string(oid);
}

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

std::string in_quotes(std::string_view text) {
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

std::string format_value(const services::Registry& registry, const agent::Value& value,
                         const services::Syntax* syntax) {
    if (value.is_exception() || value.tag == agent::kNull) return type_name(value.tag);
    if (has_wrong_size(value))
        return fmt::format("{}: wrong size, {}: {}", type_name(value.tag), counted(value.octets.size(), "octet"),
                           hex_of(value));
    if (const auto text = text_by(syntax, value)) return fmt::format("{}: {}", type_name(value.tag), *text);
    const bool as_hex = value.tag == agent::kOctetString && !is_printable(value);
    return fmt::format("{}{}: {}", as_hex ? "Hex-" : "", type_name(value.tag), content(registry, value));
}

std::string format_varbind(const services::Registry& registry, const agent::Varbind& varbind) {
    const services::Object* const object = registry.find(varbind.name);
    return fmt::format("{} = {}", registry.format(varbind.name),
                       format_value(registry, varbind.value, object != nullptr ? object->syntax : nullptr));
}

std::string json_line(const Json& object) { return object.dump(-1, ' ', false, Json::error_handler_t::replace); }

Json json_index(const services::Group& group, const std::vector<std::string>& parts) {
    constexpr std::uint8_t kIntegerKind = 2;
    Json index = Json::array();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (group.fields[i].kind == kIntegerKind)
            index.push_back(std::stoul(parts[i]));
        else
            index.push_back(parts[i]);
    }
    return index;
}

Json json_object(const services::Object& object) {
    Json json;
    if (!object.name.empty()) json["name"] = object.name;
    json["module"] = object.module;
    if (const services::Group* const group = object.group) {
        const services::Oid oid = object.oid();
        if (group->is_table) {
            json["table"] = group->name;
            json["column"] = oid.back();
            json["kinds"] = Json::array();
            for (const services::IndexField& field : group->fields) json["kinds"].push_back(field.kind);
        } else {
            json["group"] = group->name;
            json["scalar"] =
                services::to_string({oid.begin() + static_cast<std::ptrdiff_t>(group->oid.size()), oid.end()});
        }
    }
    json["magic"] = object.entry.magic;
    return json;
}

Json json_varbind(const services::Registry& registry, const agent::Varbind& varbind) {
    Json json{{"oid", services::to_string(varbind.name)}};
    const services::Object* const object = registry.find(varbind.name);
    if (object != nullptr) {
        json.update(json_object(*object));
        const std::size_t length = object->entry.namelen;
        const services::Group* const group = object->group;
        if (group != nullptr && group->is_table && varbind.name.size() > length)
            if (const auto parts =
                    services::index_parts(group->fields, varbind.name.data() + length, varbind.name.size() - length))
                json["index"] = json_index(*group, *parts);
    }
    if (varbind.value.tag != agent::kNull) json["type"] = type_name(varbind.value.tag);
    add_value(json, registry, varbind.value);
    if (object != nullptr)
        if (const auto text = text_by(object->syntax, varbind.value)) json["text"] = *text;
    return json;
}

}  // namespace tool
