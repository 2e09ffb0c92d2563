// Port and VLAN lists.
#include "services/services.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

constexpr std::size_t kPortOctets = 12;
constexpr std::size_t kVlanOctets = 512;

template <std::size_t size, class Operation>
void combine(const void* a, const void* b, void* result, Operation operation) {
    const auto* left = static_cast<const unsigned char*>(a);
    const auto* right = static_cast<const unsigned char*>(b);
    auto* out = static_cast<unsigned char*>(result);
    for (std::size_t i = 0; i < size; ++i) out[i] = static_cast<unsigned char>(operation(left[i], right[i]));
}

}  // namespace

extern "C" {

void PORTLIST_copy(const void* from, void* to) { std::memmove(to, from, kPortOctets); }

void PORTLIST_and(const void* a, const void* b, void* result) { combine<kPortOctets>(a, b, result, std::bit_and<>()); }

void PORTLIST_xor(const void* a, const void* b, void* result) { combine<kPortOctets>(a, b, result, std::bit_xor<>()); }

void PORTLIST_clear_all(void* list) { std::memset(list, 0, kPortOctets); }

int PORTLIST_chk_port_exist(const void* list, int port) {
    if (port < 1 || port > static_cast<int>(kPortOctets * 8)) return 0;
    const unsigned octet = static_cast<const unsigned char*>(list)[(port - 1) / 8];
    return (octet & (0x80u >> (port - 1) % 8)) != 0;
}

int PORTLIST_chk_empty(const void* list) {
    const auto* octets = static_cast<const unsigned char*>(list);
    return std::all_of(octets, octets + kPortOctets, [](unsigned char octet) { return octet == 0; });
}

void VLANLIST_and(const void* a, const void* b, void* result) { combine<kVlanOctets>(a, b, result, std::bit_and<>()); }

void VLANLIST_xor(const void* a, const void* b, void* result) { combine<kVlanOctets>(a, b, result, std::bit_xor<>()); }

}  // extern "C"
