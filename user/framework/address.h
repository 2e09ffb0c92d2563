// Addresses as texts, and what a request is about besides its OID, for the commands that carry them.
#pragma once

#include "framework/command.h"
#include "framework/host.h"
#include "framework/index.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace switchmib {

enum AddressType : std::uint32_t { kNoAddress = 0, kIpv4 = 1, kIpv6 = 2 };

struct AddressText {
    char text[46] = {};
};

// False when the host cannot convert the address; the text is then whatever it was.
template <std::size_t size>
bool to_text(const InetAddress& address, char (&text)[size]) {
    return UIB_SNMP_Inet_Addr_To_Str(&address, text, size) == 0;
}
inline bool to_text(const InetAddress& address, AddressText& text) { return to_text(address, text.text); }

// An address as commands have it: a blank for one that cannot be converted, and `none` for one without a type.
inline const char* address_word(const InetAddress& address, AddressText& text) {
    return to_text(address, text) ? text.text : " ";
}
inline const char* address_word(const InetAddress& address, AddressText& text, const char* none) {
    if (!to_text(address, text)) return " ";
    return address.type == kNoAddress ? none : text.text;
}

constexpr bool is_ip(std::uint32_t type) { return type == kIpv4 || type == kIpv6; }

// The address of a backend's record, which has a type and a field for the octets of each.
inline InetAddress take_address(std::uint32_t type, const unsigned char (&ipv4)[4], const unsigned char (&ipv6)[16]) {
    InetAddress address{type, type == kIpv4 ? 4u : type == kIpv6 ? 16u : 0u, {}, 0};
    std::memcpy(address.octets, type == kIpv4 ? ipv4 : ipv6, address.length);
    return address;
}

// A MAC address as "00-1f-...", in lower or upper case.
using MacText = Text<18>;
inline MacText lower(const Mac& mac) {
    const unsigned char* o = mac.octets;
    return {"%02x-%02x-%02x-%02x-%02x-%02x", o[0], o[1], o[2], o[3], o[4], o[5]};
}
inline MacText upper(const Mac& mac) {
    const unsigned char* o = mac.octets;
    return {"%02X-%02X-%02X-%02X-%02X-%02X", o[0], o[1], o[2], o[3], o[4], o[5]};
}

// The VRF that the request is about, "" for none.
inline const char* vrf_name() {
    const char* name = SNMPD_Get_Cur_VrfName();
    return name != nullptr ? name : "";
}

// The end of a show command of the request's VRF, as two words for "%s%s": " vrf " and its name, or nothing.
struct VrfPart {
    const char* name = vrf_name();
    const char* word = *name != '\0' ? " vrf " : "";
};

// The SNMP context of the request, "" for none.
inline const char* context_name() {
    const char* name = SNMPD_Get_Cur_ContextName();
    return name != nullptr ? name : "";
}

}  // namespace switchmib
