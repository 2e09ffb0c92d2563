#include "tool/arguments.h"

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

// Octets written as pairs of hex digits; blanks, colons and hyphens may stand between them.
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

// ", did you mean 'swPortSpeed' or ...?", or nothing when no name is near.
std::string suggestion(const services::Registry& registry, std::string_view name) {
    const std::string wanted = lower(name);
    std::set<std::pair<std::size_t, std::string>> near;
    const auto consider = [&](const std::string& candidate) {
        if (candidate.empty()) return;
        const std::string known = lower(candidate);
        const std::size_t distance = edit_distance(wanted, known);
        if (distance <= std::max<std::size_t>(2, wanted.size() / 4) ||
            (wanted.size() >= 3 && known.find(wanted) != std::string::npos))
            near.emplace(distance, candidate);
    };
    for (const services::Object& object : registry.objects()) {
        consider(object.module);
        consider(object.name);
    }
    std::string text;
    std::size_t count = 0;
    for (const auto& [distance, candidate] : near) {
        if (count == 3) break;
        text += fmt::format("{}'{}'", count++ == 0 ? ", did you mean " : " or ", candidate);
    }
    return text.empty() ? text : text + "?";
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

}  // namespace

services::Oid parse_oid(const services::Registry& registry, std::string_view text) {
    if (auto parsed = registry.parse(text)) return *parsed;
    const std::string_view name = text.substr(0, text.find('.'));
    const bool numeric = text.empty() || name.empty() || std::isdigit(static_cast<unsigned char>(name.front())) != 0;
    if (!numeric && !registry.parse(name))
        throw UsageError(fmt::format("unknown name '{}'{}", name, suggestion(registry, name)));
    std::string_view numbers = numeric ? text : text.substr(name.size() + 1);
    if (numbers.starts_with('.') && numeric) numbers.remove_prefix(1);
    for (const std::string_view part : split(numbers, '.'))
        if (!integer_in(part, 0, std::numeric_limits<std::uint32_t>::max()))
            throw UsageError(
                fmt::format("'{}': '{}' is not a sub-identifier (a number from 0 to 4294967295)", text, part));
    throw UsageError(fmt::format("'{}' has more than {} sub-identifiers", text, services::kMaxSubIds));
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
