// The words of command lines: patterns that lines are matched against, and what stands in their places.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sw {

// What a line has in one place of its pattern.
struct Argument {
    std::string text;          // empty where an optional word is absent
    std::uint32_t number = 0;  // of a number place; a negative one as two's complement
    // Of an address: its type (1 IPv4, 2 IPv6), its length and its octets, of a prefix its bits behind them: the
    // sub-identifiers that it is in an index. Empty where it is absent.
    std::vector<std::uint32_t> address;
    bool is_number = false;
};
using Arguments = std::vector<Argument>;

// A line as a list of words between blanks:
//
//     shutdown          that word
//     full|half|auto    one of these words, an argument
//     [copper|fiber]    the same, but the word may be absent
//     [vrf {word}]      several places that may be absent together
//     {word}            any word, an argument
//     {int}             a 32-bit number as "%d" or "%u" prints it, an argument
//     {64..12288}       a number in that range; vlan{1..4094} with those letters in front of it
//     {ipv4}            an address of that type; {ipv6}; {address} is of either
//     {ipv4/bits}       with a slash and a prefix length; {ipv6/bits}, {address/bits}
//     {text}            the rest of the line, not empty, blanks and all; only as the last place
class Pattern {
public:
    // Throws std::invalid_argument for a pattern that is none: patterns are written in code.
    explicit Pattern(std::string text);

    struct Match {
        bool whole = false;      // the line fits from end to end, and `arguments` is complete
        std::size_t fitted = 0;  // words of the pattern that the line fits, from its start
        std::string misfit;      // the line's first word that doesn't fit; empty when the line ends too early
        Arguments arguments;
    };
    Match match(std::string_view line) const;
    const std::string& text() const { return text_; }

private:
    enum class Type { literal, choice, number, address, prefix, word, text };
    struct Place {
        Type type;
        std::vector<std::string> words{};  // of a literal or choice; of a number the letters in front
        std::int64_t low = 0;              // of a number, or of an address's type
        std::int64_t high = 0;
        std::size_t optional = 0;  // that many places from this one on may be absent together
    };
    static Place parse(std::string_view word);
    static bool accept(const Place& place, std::string_view word, Argument& argument);

    std::string text_;
    std::vector<Place> places_;
};

// The text with control characters and backslashes as "\x0a" and "\\", so that it stays on one line of a log.
std::string escape(std::string_view text);
bool has_control_character(std::string_view text);

}  // namespace sw
