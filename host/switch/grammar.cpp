#include "switch/grammar.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>

namespace sw {
namespace {

// Takes the next word off the line; empty at its end.
std::string_view next_word(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

std::vector<std::string> split(std::string_view words, std::string_view separator) {
    std::vector<std::string> parts;
    for (std::size_t end; (end = words.find(separator)) != words.npos; words.remove_prefix(end + separator.size()))
        parts.emplace_back(words.substr(0, end));
    parts.emplace_back(words);
    return parts;
}

// A number in its one usual spelling: no sign but a minus, no leading zeros.
std::optional<std::int64_t> parse_number(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || std::to_string(number) != text) return {};
    return number;
}

// The text as an address of the given type; empty where it is none.
std::vector<std::uint32_t> parse_address(const std::string& text, std::uint32_t type) {
    unsigned char octets[16];
    const std::uint32_t length = type == 1 ? 4 : 16;
    if (inet_pton(type == 1 ? AF_INET : AF_INET6, text.c_str(), octets) != 1) return {};
    std::vector<std::uint32_t> address{type, length};
    address.insert(address.end(), octets, octets + length);
    return address;
}

bool is_control(char character) { return static_cast<unsigned char>(character) < 0x20 || character == 0x7f; }

}  // namespace

Pattern::Pattern(std::string text) : text_(std::move(text)) {
    const auto malformed = [&](const char* why) {
        return std::invalid_argument(fmt::format("pattern '{}': {}", text_, why));
    };
    std::string_view line = text_;
    constexpr std::size_t kNowhere = std::string::npos;
    std::size_t opened = kNowhere;  // the first place in brackets
    for (std::string_view word; !(word = next_word(line)).empty();) {
        if (!places_.empty() && places_.back().type == Type::text) throw malformed("{text} is not its last place");
        if (word.front() == '[') {
            if (opened != kNowhere) throw malformed("brackets in brackets");
            opened = places_.size();
            word.remove_prefix(1);
        }
        const bool closes = !word.empty() && word.back() == ']';
        if (closes) word.remove_suffix(1);
        if (word.empty() || (closes && opened == kNowhere)) throw malformed("unbalanced brackets");
        places_.push_back(parse(word));
        if (!closes) continue;
        Place& first = places_[opened];
        first.optional = places_.size() - opened;
        // Alone in its brackets, a word is an argument: whether it is there is what the line says.
        if (first.optional == 1 && first.type == Type::literal) first.type = Type::choice;
        opened = kNowhere;
    }
    if (opened != kNowhere) throw malformed("unbalanced brackets");
}

Pattern::Place Pattern::parse(std::string_view word) {
    const auto malformed = [&] { return std::invalid_argument(fmt::format("malformed place '{}'", word)); };
    const std::size_t brace = word.find('{');
    if (brace == word.npos) {
        std::vector<std::string> words = split(word, "|");
        return {.type = words.size() == 1 ? Type::literal : Type::choice, .words = std::move(words)};
    }
    if (word.back() != '}') throw malformed();
    const std::string_view name = word.substr(brace + 1, word.size() - brace - 2);
    if (name == "word") return {.type = Type::word};
    if (name == "text") return {.type = Type::text};
    const std::string_view family = name.substr(0, name.find('/'));
    if (name == family || name.substr(family.size()) == "/bits") {
        const Type type = name == family ? Type::address : Type::prefix;
        if (family == "ipv4") return {.type = type, .low = 1, .high = 1};
        if (family == "ipv6") return {.type = type, .low = 2, .high = 2};
        if (family == "address") return {.type = type, .low = 1, .high = 2};
    }
    Place place{.type = Type::number, .words = {std::string(word.substr(0, brace))}};
    if (name == "int") {
        place.low = std::numeric_limits<std::int32_t>::min();
        place.high = std::numeric_limits<std::uint32_t>::max();
        return place;
    }
    const std::vector<std::string> bounds = split(name, "..");
    const auto low = parse_number(bounds.front()), high = parse_number(bounds.back());
    if (bounds.size() != 2 || !low || !high) throw malformed();
    place.low = *low;
    place.high = *high;
    return place;
}

bool Pattern::accept(const Place& place, std::string_view word, Argument& argument) {
    argument.text = word;
    switch (place.type) {
        case Type::literal:
        case Type::choice: return std::find(place.words.begin(), place.words.end(), word) != place.words.end();
        case Type::number: {
            const std::string& letters = place.words.front();
            if (word.substr(0, letters.size()) != letters) return false;
            const auto number = parse_number(word.substr(letters.size()));
            if (!number || *number < place.low || *number > place.high) return false;
            argument.number = static_cast<std::uint32_t>(*number);
            argument.is_number = true;
            return true;
        }
        case Type::address:
            for (std::int64_t type = place.low; type <= place.high && argument.address.empty(); ++type)
                argument.address = parse_address(argument.text, static_cast<std::uint32_t>(type));
            return !argument.address.empty();
        case Type::prefix: {
            const std::size_t slash = word.find('/');
            if (slash == word.npos) return false;
            const Place of_address{.type = Type::address, .low = place.low, .high = place.high};
            const auto bits = parse_number(word.substr(slash + 1));
            if (!accept(of_address, word.substr(0, slash), argument)) return false;
            if (!bits || *bits < 0 || *bits > 8 * std::int64_t{argument.address[1]}) return false;
            argument.address.push_back(static_cast<std::uint32_t>(*bits));
            argument.text = word;
            return true;
        }
        case Type::word:
        case Type::text: return !word.empty();
    }
    return false;
}

Pattern::Match Pattern::match(std::string_view line) const {
    Match match;
    for (auto place = places_.begin(); place != places_.end();) {
        // One place, or those of a pair of brackets.
        const auto end = place + static_cast<std::ptrdiff_t>(std::max<std::size_t>(place->optional, 1));
        std::string_view rest = line;
        Arguments arguments;
        auto at = place;
        for (; at != end; ++at) {
            std::string_view word;
            if (at->type == Type::text) {
                // One blank separates the text from the word before; all behind it is the text.
                word = rest.substr(std::min<std::size_t>(at == places_.begin() ? 0 : 1, rest.size()));
                rest = {};
            } else {
                word = next_word(rest);
            }
            Argument argument;
            if (!accept(*at, word, argument)) break;
            if (at->type != Type::literal) arguments.push_back(std::move(argument));
        }
        if (at == end) {
            line = rest;
            match.fitted += static_cast<std::size_t>(end - place);
        } else if (place->optional != 0) {
            arguments.assign(static_cast<std::size_t>(std::count_if(
                                 place, end, [](const Place& absent) { return absent.type != Type::literal; })),
                             {});
        } else {
            match.misfit = next_word(line);
            return match;
        }
        std::move(arguments.begin(), arguments.end(), std::back_inserter(match.arguments));
        place = end;
    }
    match.misfit = next_word(line);
    match.whole = match.misfit.empty();
    return match;
}

std::string escape(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        if (is_control(character))
            escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(character));
        else if (character == '\\')
            escaped += "\\\\";
        else
            escaped += character;
    }
    return escaped;
}

bool has_control_character(std::string_view text) { return std::any_of(text.begin(), text.end(), is_control); }

}  // namespace sw
