// Values as the library takes them, and what they are made of.
#pragma once

#include "framework/host.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace sw {

using Duration = std::chrono::milliseconds;  // since the switch started, unless stated otherwise

// A row's index: the sub-identifiers after the column. Rows are in the order of these.
using Index = std::vector<oid>;
Index join(std::initializer_list<Index> parts);

// The octets of a number in machine order, of a text, of an OBJECT IDENTIFIER.
using Value = std::string;

Value number(std::uint32_t value);  // INTEGER, Gauge32, Counter32, TimeTicks
Value counter64(std::uint64_t value);
Value object_id(const Index& ids);
inline Value truth(bool value) { return number(value ? 1 : 2); }  // also up and down, enabled and disabled
// Hundredths of a second, as TimeTicks count them.
inline Value ticks(Duration time) { return number(static_cast<std::uint32_t>(time.count() / 10)); }
// The octets from sub-identifiers, such as those of an address.
Value octets_of(const oid* first, std::size_t count);

using Mac = std::array<unsigned char, 6>;

// A set of ports by their numbers, 1 to 96, as tables show it: port 1 is the first octet's highest bit.
struct PortList {
    std::array<unsigned char, 12> octets{};

    bool has(std::uint32_t port) const { return octets[(port - 1) / 8] & mask(port); }
    void set(std::uint32_t port, bool member) {
        unsigned char& octet = octets[(port - 1) / 8];
        octet = static_cast<unsigned char>(member ? octet | mask(port) : octet & ~mask(port));
    }

private:
    static unsigned mask(std::uint32_t port) { return 0x80u >> (port - 1) % 8; }
};

// Whether something is so, and for how long it has been altogether.
struct Stopwatch {
    bool runs = false;
    Duration since{};  // when it last began or ended
    Duration before{};

    Duration total(Duration now) const { return before + (runs ? now - since : Duration()); }
    void run(bool is_so, Duration now) {
        if (is_so == runs) return;
        *this = {is_so, now, total(now)};
    }
};

// A fact as a value. bool: a TruthValue (1 or 2); a number or an enumerator: 4 octets, a longer one wrapped as
// Counter32 is; Duration: TimeTicks; a text: its octets; an absent optional: no value.
template <class Fact>
std::optional<Value> value_of(const Fact& fact) {
    if constexpr (std::is_same_v<Fact, bool>)
        return truth(fact);
    else if constexpr (std::is_integral_v<Fact> || std::is_enum_v<Fact>)
        return number(static_cast<std::uint32_t>(fact));
    else if constexpr (std::is_same_v<Fact, Duration>)
        return ticks(fact);
    else if constexpr (std::is_convertible_v<Fact, std::string_view>)
        return Value(std::string_view(fact));
    else if constexpr (std::is_same_v<Fact, PortList>)
        return Value(fact.octets.begin(), fact.octets.end());
    else if constexpr (requires { fact.has_value(); }) {
        if (!fact) return {};
        return value_of(*fact);
    } else
        return Value(fact.begin(), fact.end());  // an array of octets
}

}  // namespace sw
