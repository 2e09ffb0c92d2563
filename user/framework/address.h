// Address texts and the request's VRF, for the commands that carry them.
#pragma once

#include "framework/host.h"

#include <cstdint>

namespace switchmib {

enum AddressType : std::uint32_t { kNoAddress = 0, kIpv4 = 1, kIpv6 = 2 };

struct AddressText {
    char text[46] = {};
};

// False when the host cannot convert the address; the text is then whatever it was.
inline bool to_text(const InetAddress& address, AddressText& text) {
    return UIB_SNMP_Inet_Addr_To_Str(&address, text.text, sizeof text.text) == 0;
}

// The VRF that the request is about, "" for none.
inline const char* vrf_name() {
    const char* name = SNMPD_Get_Cur_VrfName();
    return name != nullptr ? name : "";
}

}  // namespace switchmib
