// The words of command lines: patterns that lines are matched against, and what a line has in their places.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sw {

enum class PlaceType { literal, choice, number, octets, address, prefix, word, text };

// What a line has in one place of its pattern.
struct Argument {
    PlaceType type = PlaceType::literal;
    bool present = false;            // false where an optional place is absent
    std::string_view text{};         // in the line, without the letters before the place
    std::uint32_t number = 0;        // of a number; a negative one as two's complement
    std::uint32_t address_type = 0;  // 1 IPv4, 2 IPv6, 0 none
    std::size_t length = 0;          // of a MAC address, octets or an address: how many octets there are
    std::array<unsigned char, 16> octets{};
    std::uint32_t bits = 0;  // of a prefix

    // As it is in an index: a number; octets; of an address type, length, octets, of a prefix its length too. Empty
    // where it is absent.
    std::vector<std::uint32_t> index() const;
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
//     {64..12288}       a number in that range
//     {mac}             a MAC address, its octets separated by '-' or ':'
//     {octets}          up to 16 octets, written in the same way
//     {ipv4}            an address of that type; {ipv6}; {address} is of either
//     {ipv4/bits}       with a slash and a prefix length; {ipv6/bits}; {address/bits}, where "0/0" and "/0" are the
//                       prefix of no address
//     {text}            the rest of the line, not empty, with all its blanks; only as the last place
//
// Letters before a brace are part of the word: vlan{1..4094}, 0x{word}. In a table's show command a number, MAC address,
// octets, address or prefix is compared with the key (see Table): {int:2} names the part of the key, {int+1024} what is
// added to it.
class Pattern {
public:
    struct Place {
        PlaceType type;
        std::vector<std::string> words{};  // of a literal or choice
        std::string letters{};             // before the brace
        std::int64_t low = 0;              // of a number, of the number of octets, or of an address's type
        std::int64_t high = 0;
        std::size_t optional = 0;  // that many places from this one on may be absent together
        std::size_t part = 0;      // of the key, from 1 on; 0: the one that follows
        std::uint32_t added = 0;   // to the number in the key
    };

    // Throws std::invalid_argument for a pattern that is malformed: patterns are written in code.
    explicit Pattern(std::string text);

    struct Match {
        bool whole = false;         // the line fits from end to end, and `arguments` is complete
        std::size_t fitted = 0;     // words of the pattern that the line fits, from its start
        std::string_view misfit{};  // the line's first word that does not fit; empty when the line ends too early
        Arguments arguments{};
    };
    Match match(std::string_view line) const;
    // The same into a result that is used again, whose arguments keep their memory.
    void match(std::string_view line, Match& match) const;

    const std::string& text() const { return text_; }
    const std::vector<Place>& places() const { return places_; }
    // It has a place for any word or text, so that lines of more exact patterns fit it too.
    bool is_loose() const;

private:
    static Place parse(std::string_view word);
    static bool accept(const Place& place, std::string_view word, Argument& argument);

    std::string text_;
    std::vector<Place> places_;
    std::string beginning_;        // the literal words that it begins with, one blank between
    std::size_t begins_with_ = 0;  // so many
};

// The text with control characters and backslashes as "\x0a" and "\\", so that it stays on one line of a log.
std::string escape(std::string_view text);
bool has_control_character(std::string_view text);

}  // namespace sw
