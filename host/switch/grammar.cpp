#include "switch/grammar.h"

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

// A number in its one usual spelling: no sign but a minus, no leading zeros.
std::optional<std::int64_t> parse_number(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || std::to_string(number) != text) return {};
    return number;
}

bool is_control(char character) { return static_cast<unsigned char>(character) < 0x20 || character == 0x7f; }

}  // namespace

Pattern::Pattern(std::string text) : text_(std::move(text)) {
    std::string_view line = text_;
    for (std::string_view word; !(word = next_word(line)).empty();) {
        if (!places_.empty() && places_.back().type == Type::text)
            throw std::invalid_argument(fmt::format("pattern '{}': {{text}} is not its last place", text_));
        places_.push_back(parse(word));
    }
}

Pattern::Place Pattern::parse(std::string_view word) {
    const auto malformed = [&] { return std::invalid_argument(fmt::format("malformed place '{}'", word)); };
    if (word.front() == '[') {
        if (word.size() < 3 || word.back() != ']') throw malformed();
        return {.type = Type::choice, .optional = true, .words = split(word.substr(1, word.size() - 2), "|")};
    }
    const std::size_t brace = word.find('{');
    if (brace == word.npos) {
        std::vector<std::string> words = split(word, "|");
        return {.type = words.size() == 1 ? Type::literal : Type::choice, .words = std::move(words)};
    }
    if (word.back() != '}') throw malformed();
    const std::string_view name = word.substr(brace + 1, word.size() - brace - 2);
    if (name == "word") return {.type = Type::word};
    if (name == "text") return {.type = Type::text};
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
            return true;
        }
        case Type::word:
        case Type::text: return !word.empty();
    }
    return false;
}

Pattern::Match Pattern::match(std::string_view line) const {
    Match match;
    for (const Place& place : places_) {
        std::string_view rest = line;
        std::string_view word = next_word(rest);
        if (place.type == Type::text) {
            // One blank separates the text from the word before; all behind it is the text.
            word = line.substr(std::min<std::size_t>(match.fitted == 0 ? 0 : 1, line.size()));
            rest = {};
        }
        Argument argument;
        if (accept(place, word, argument)) {
            line = rest;
            ++match.fitted;
        } else if (place.optional) {
            argument = {};
        } else {
            match.misfit = word;
            return match;
        }
        if (place.type != Type::literal) match.arguments.push_back(std::move(argument));
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
