#include "tool/arguments.h"

#include "tool/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>
#include <limits>
#include <numeric>
#include <optional>
#include <set>

namespace tool {
namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

std::optional<std::int64_t> integer_in(std::string_view text, std::int64_t lowest, std::int64_t highest) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end || number < lowest || number > highest) return std::nullopt;
    return number;
}

// Octets written as pairs of hex digits; blanks, colons and hyphens may be between them.
std::optional<std::vector<std::uint8_t>> octets_from_hex(std::string_view text) {
    std::vector<std::uint8_t> octets;
    while (!text.empty()) {
        if (std::string_view(" :-").find(text.front()) != std::string_view::npos) {
            text.remove_prefix(1);
            continue;
        }
        std::uint8_t octet = 0;
        const std::string_view pair = text.substr(0, 2);
        const auto [stop, error] = std::from_chars(pair.data(), pair.data() + pair.size(), octet, 16);
        if (error != std::errc{} || pair.size() != 2 || stop != pair.data() + 2) return std::nullopt;
        octets.push_back(octet);
        text.remove_prefix(2);
    }
    return octets;
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

std::string type_letters() {
    return "i (INTEGER), u (Gauge32), c (Counter32), t (TimeTicks), s (text), x (hex octets), o (OID), a (IpAddress)";
}

agent::Value parse_ip_address(std::string_view text) {
    agent::Value value{agent::kIpAddress, {}};
    for (const std::string_view part : split(text, '.')) {
        const auto octet = integer_in(part, 0, 255);
        if (!octet) break;
        value.octets.push_back(static_cast<std::uint8_t>(*octet));
    }
    if (value.octets.size() != 4 || std::count(text.begin(), text.end(), '.') != 3)
        throw UsageError(fmt::format("'{}' is not an IPv4 address", text));
    return value;
}

Answer parse_answer(std::string_view name, std::string_view text) {
    if (text == "refused") return {true, {}};
    if (name == "config") {
        if (text == "ok") return {};
        throw UsageError(fmt::format("config={}: a configuration line is answered with ok or refused", text));
    }
    if (text.starts_with("text:")) {
        text.remove_prefix(5);
        return {false, {text.begin(), text.end()}};
    }
    if (text.starts_with("hex:")) {
        auto octets = octets_from_hex(text.substr(4));
        if (octets) return {false, std::move(*octets)};
    } else if (const auto number = integer_in(text, std::numeric_limits<std::int64_t>::min(),
                                              std::numeric_limits<std::int64_t>::max())) {
        // A number that 32 bits hold is what most columns are made of; only a Counter64 needs more.
        const bool small =
            *number >= std::numeric_limits<std::int32_t>::min() && *number <= std::numeric_limits<std::uint32_t>::max();
        const auto low = static_cast<std::uint32_t>(*number);
        Answer answer;
        answer.octets.resize(small ? sizeof low : sizeof *number);
        std::memcpy(answer.octets.data(), small ? static_cast<const void*>(&low) : &*number, answer.octets.size());
        return answer;
    }
    throw UsageError(fmt::format("{}={}: an answer is an integer, text:..., hex:... or refused", name, text));
}

// The letter of a type that a SET can have; 0 for every other.
char letter_of(std::uint8_t tag) {
    switch (tag) {
        case agent::kInteger: return 'i';
        case agent::kGauge32: return 'u';
        case agent::kCounter32: return 'c';
        case agent::kTimeTicks: return 't';
        case agent::kOctetString: return 's';
        case agent::kObjectId: return 'o';
        case agent::kIpAddress: return 'a';
        default: return 0;
    }
}

}  // namespace

std::string suggestion(const std::vector<std::string>& names, std::string_view name) {
    const std::string wanted = lower(name);
    std::set<std::pair<std::size_t, std::string>> near;
    for (const std::string& candidate : names) {
        const std::string known = lower(candidate);
        const std::size_t distance = edit_distance(wanted, known);
        if (distance <= std::max<std::size_t>(2, wanted.size() / 4) ||
            (wanted.size() >= 3 && known.find(wanted) != std::string::npos))
            near.emplace(distance, candidate);
    }
    std::string text;
    std::size_t count = 0;
    for (const auto& [distance, candidate] : near) {
        if (count == 3) break;
        text += fmt::format("{}'{}'", count++ == 0 ? ", did you mean " : " or ", candidate);
    }
    return text.empty() ? text : text + "?";
}

services::Oid parse_oid(const services::Registry& registry, std::string_view text) {
    std::string reason;
    if (auto parsed = registry.parse(text, &reason)) return *parsed;
    std::string_view name = text.substr(0, text.find_first_of(".["));
    if (const std::size_t colons = name.find("::"); colons != std::string_view::npos) name.remove_prefix(colons + 2);
    const bool numeric = name.empty() || std::isdigit(static_cast<unsigned char>(name.front())) != 0;
    throw UsageError(numeric || registry.knows(name) ? reason : reason + suggestion(registry.names(), name));
}

agent::Value parse_value(const services::Registry& registry, std::string_view type, std::string_view text) {
    const char letter = type.size() == 1 ? type.front() : '\0';
    switch (letter) {
        case 'i':
            if (const auto number = integer_in(text, std::numeric_limits<std::int32_t>::min(),
                                               std::numeric_limits<std::int32_t>::max()))
                return agent::Value::integer(static_cast<std::int32_t>(*number));
            throw UsageError(fmt::format("'{}' is not an INTEGER (-2147483648 to 2147483647)", text));
        case 'u':
        case 'c':
        case 't':
            if (const auto number = integer_in(text, 0, std::numeric_limits<std::uint32_t>::max()))
                return agent::Value::unsigned32(letter == 'u'   ? agent::kGauge32
                                                : letter == 'c' ? agent::kCounter32
                                                                : agent::kTimeTicks,
                                                static_cast<std::uint32_t>(*number));
            throw UsageError(fmt::format("'{}' is not an unsigned number (0 to 4294967295)", text));
        case 's': return agent::Value::octet_string({text.begin(), text.end()});
        case 'x':
            if (auto octets = octets_from_hex(text)) return agent::Value::octet_string(std::move(*octets));
            throw UsageError(fmt::format("'{}' is not a sequence of octets in hex", text));
        case 'o': return agent::Value::object_id(parse_oid(registry, text));
        case 'a': return parse_ip_address(text);
        default: throw UsageError(fmt::format("unknown type '{}', it is one of {}", type, type_letters()));
    }
}

agent::Value parse_value(const services::Registry& registry, const services::Object& object, std::string_view text) {
    char letter = letter_of(object.entry.type);
    if (letter == 0)
        throw UsageError(
            fmt::format("no SET can have the type {}, say another one before the value", type_name(object.entry.type)));
    if (letter == 's' && text.starts_with("hex:")) {
        letter = 'x';
        text.remove_prefix(4);
    } else if (letter == 's' && text.starts_with("text:")) {
        text.remove_prefix(5);
    }
    return parse_value(registry, {&letter, 1}, text);
}

void parse_script(std::string_view text, Script& script) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0)
        throw UsageError(fmt::format("'{}' is not of the form NAME=answer,answer...", text));
    const std::string_view name = text.substr(0, equals);
    auto& answers = script[std::string(name)];
    for (const std::string_view answer : split(text.substr(equals + 1), ','))
        answers.push_back(parse_answer(name, answer));
}

}  // namespace tool
