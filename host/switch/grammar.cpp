#include "switch/grammar.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
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

// A number as printf writes it: no sign but a minus, no leading zeros.
std::optional<std::int64_t> parse_number(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || (text.size() > 1 && text[text[0] == '-'] == '0'))
        return {};
    return number;
}

// Takes the text as an address of the given type; false where it is none.
bool parse_address(std::string_view text, std::uint32_t type, Argument& argument) {
    char terminated[INET6_ADDRSTRLEN];
    if (text.size() >= sizeof terminated) return false;
    terminated[text.copy(terminated, text.size())] = '\0';
    if (inet_pton(type == 1 ? AF_INET : AF_INET6, terminated, argument.octets.data()) != 1) return false;
    argument.address_type = type;
    argument.length = type == 1 ? 4 : 16;
    return true;
}

// Two hexadecimal digits an octet, with '-' or ':' between them.
bool parse_octets(std::string_view text, Argument& argument) {
    for (std::size_t at = 0; at < text.size(); at += 3) {
        const bool separated = at + 2 == text.size() || text[at + 2] == text[2];
        if (argument.length == argument.octets.size() || at + 2 > text.size() || !separated) return false;
        const char* digits = text.data() + at;
        const auto [end, error] = std::from_chars(digits, digits + 2, argument.octets[argument.length++], 16);
        if (error != std::errc() || end != digits + 2) return false;
    }
    return argument.length < 2 || text[2] == '-' || text[2] == ':';
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
        if (!places_.empty() && places_.back().type == PlaceType::text) throw malformed("{text} is not its last place");
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
        if (first.optional == 1 && first.type == PlaceType::literal) first.type = PlaceType::choice;
        opened = kNowhere;
    }
    if (opened != kNowhere) throw malformed("unbalanced brackets");
    for (const Place& place : places_) {
        if (place.type != PlaceType::literal || place.optional != 0) break;
        beginning_ += (begins_with_++ == 0 ? "" : " ") + place.words.front();
    }
}

Pattern::Place Pattern::parse(std::string_view word) {
    const auto malformed = [&] { return std::invalid_argument(fmt::format("malformed place '{}'", word)); };
    const std::size_t brace = word.find('{');
    if (brace == word.npos) {
        std::vector<std::string> words = split(word, "|");
        return {.type = words.size() == 1 ? PlaceType::literal : PlaceType::choice, .words = std::move(words)};
    }
    if (word.back() != '}') throw malformed();
    Place place{.type = PlaceType::number, .letters = std::string(word.substr(0, brace))};
    std::string_view name = word.substr(brace + 1, word.size() - brace - 2);
    const auto tagged = [&](char separator) -> std::uint32_t {
        const std::size_t at = name.find(separator);
        if (at == name.npos) return 0;
        const auto number = parse_number(name.substr(at + 1));
        if (!number || *number < 1) throw malformed();
        name = name.substr(0, at);
        return static_cast<std::uint32_t>(*number);
    };
    place.added = tagged('+');
    place.part = tagged(':');
    const auto bounded = [&place](PlaceType type, std::int64_t low, std::int64_t high) {
        place.type = type;
        place.low = low;
        place.high = high;
        return place;
    };
    if (name == "word") return bounded(PlaceType::word, 0, 0);
    if (name == "text") return bounded(PlaceType::text, 0, 0);
    if (name == "mac") return bounded(PlaceType::octets, 6, 6);
    if (name == "octets") return bounded(PlaceType::octets, 1, 16);
    const std::string_view family = name.substr(0, name.find('/'));
    if (name == family || name.substr(family.size()) == "/bits") {
        const PlaceType type = name == family ? PlaceType::address : PlaceType::prefix;
        if (family == "ipv4") return bounded(type, 1, 1);
        if (family == "ipv6") return bounded(type, 2, 2);
        if (family == "address") return bounded(type, 1, 2);
    }
    if (name == "int")
        return bounded(PlaceType::number, std::numeric_limits<std::int32_t>::min(),
                       std::numeric_limits<std::uint32_t>::max());
    const std::vector<std::string> bounds = split(name, "..");
    const auto low = parse_number(bounds.front()), high = parse_number(bounds.back());
    if (bounds.size() != 2 || !low || !high) throw malformed();
    return bounded(PlaceType::number, *low, *high);
}

bool Pattern::accept(const Place& place, std::string_view word, Argument& argument) {
    if (word.substr(0, place.letters.size()) != place.letters) return false;
    word.remove_prefix(place.letters.size());
    argument.type = place.type;
    argument.present = true;
    argument.text = word;
    switch (place.type) {
        case PlaceType::literal:
        case PlaceType::choice: return std::find(place.words.begin(), place.words.end(), word) != place.words.end();
        case PlaceType::number: {
            const auto number = parse_number(word);
            if (!number || *number < place.low || *number > place.high) return false;
            argument.number = static_cast<std::uint32_t>(*number);
            return true;
        }
        case PlaceType::octets:
            return parse_octets(word, argument) && static_cast<std::int64_t>(argument.length) >= place.low &&
                   static_cast<std::int64_t>(argument.length) <= place.high;
        case PlaceType::address:
            for (std::int64_t type = place.low; type <= place.high; ++type)
                if (parse_address(word, static_cast<std::uint32_t>(type), argument)) return true;
            return false;
        case PlaceType::prefix: {
            const std::size_t slash = word.find('/');
            if (slash == word.npos) return false;
            if ((word == "0/0" || word == "/0") && place.low != place.high) return true;
            const Place of_address{.type = PlaceType::address, .low = place.low, .high = place.high};
            const auto bits = parse_number(word.substr(slash + 1));
            if (!accept(of_address, word.substr(0, slash), argument)) return false;
            if (!bits || *bits < 0 || *bits > 8 * static_cast<std::int64_t>(argument.length)) return false;
            argument.type = PlaceType::prefix;
            argument.text = word;
            argument.bits = static_cast<std::uint32_t>(*bits);
            return true;
        }
        case PlaceType::word:
        case PlaceType::text: return !word.empty();
    }
    return false;
}

Pattern::Match Pattern::match(std::string_view line) const {
    Match result;
    match(line, result);
    return result;
}

void Pattern::match(std::string_view line, Match& match) const {
    match.whole = false;
    match.fitted = 0;
    match.misfit = {};
    match.arguments.clear();
    auto place = places_.begin();
    // Most lines begin as commands are written.
    const std::size_t end_of_beginning = beginning_.size();
    if (line.starts_with(beginning_) && (line.size() == end_of_beginning || line[end_of_beginning] == ' ')) {
        line.remove_prefix(end_of_beginning);
        place += static_cast<std::ptrdiff_t>(begins_with_);
        match.fitted = begins_with_;
    }
    while (place != places_.end()) {
        // One place, or those of a pair of brackets.
        const auto end = place + static_cast<std::ptrdiff_t>(std::max<std::size_t>(place->optional, 1));
        const std::size_t before = match.arguments.size();
        std::string_view rest = line;
        auto at = place;
        for (; at != end; ++at) {
            std::string_view word;
            if (at->type == PlaceType::text) {
                // One blank separates the text from the word before; all that follows is the text.
                word = rest.substr(std::min<std::size_t>(at == places_.begin() ? 0 : 1, rest.size()));
                rest = {};
            } else {
                word = next_word(rest);
            }
            if (at->type == PlaceType::literal) {
                if (word != at->words.front()) break;
                continue;
            }
            if (!accept(*at, word, match.arguments.emplace_back())) break;
        }
        if (at == end) {
            line = rest;
            match.fitted += static_cast<std::size_t>(end - place);
        } else if (place->optional != 0) {
            match.arguments.resize(before);
            for (at = place; at != end; ++at)
                if (at->type != PlaceType::literal) match.arguments.push_back({.type = at->type});
        } else {
            match.misfit = next_word(line);
            return;
        }
        place = end;
    }
    match.misfit = next_word(line);
    match.whole = match.misfit.empty();
}

bool Pattern::is_loose() const {
    return std::any_of(places_.begin(), places_.end(), [](const Place& place) {
        return place.type == PlaceType::word || place.type == PlaceType::text;
    });
}

std::vector<std::uint32_t> Argument::index() const {
    if (!present) return {};
    if (type == PlaceType::number) return {number};
    std::vector<std::uint32_t> ids;
    if (type != PlaceType::octets) ids = {address_type, static_cast<std::uint32_t>(length)};
    ids.insert(ids.end(), octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(length));
    if (type == PlaceType::prefix) ids.push_back(bits);
    return ids;
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
