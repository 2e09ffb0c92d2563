// Modules whose tables come twice, for IGMP and for MLD. What differs between the two is a type that holds it, everything
// else is a template over that type; names are put together when the module is compiled:
//
//     struct Igmp { static constexpr int type = 1; static constexpr FixedString prefix{"mgmdIgmpSnp"}; ... };
//     name_of<P, "State">                mgmdIgmpSnpState
#pragma once

#include "framework/module.h"

#include <algorithm>
#include <cstddef>

namespace switchmib {

// A text as a template argument.
template <std::size_t size>
struct FixedString {
    char text[size];
    constexpr FixedString(const char (&literal)[size]) { std::copy_n(literal, size, text); }
};

template <std::size_t front, std::size_t back>
consteval FixedString<front + back - 1> operator+(const FixedString<front>& a, const FixedString<back>& b) {
    char text[front + back - 1] = {};
    std::copy_n(a.text, front - 1, text);
    std::copy_n(b.text, back, text + front - 1);
    return text;
}

template <class P, FixedString suffix>
constexpr auto full_name = P::prefix + suffix;
template <class P, FixedString suffix>
constexpr const char* name_of = full_name<P, suffix>.text;

}  // namespace switchmib
