// SNMPv1 and SNMPv2c messages.
#pragma once

#include "agent/ber.h"
#include "agent/engine.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace agent {

enum Version : std::int32_t { kVersion1 = 0, kVersion2c = 1 };

enum PduType : std::uint8_t {
    kGetRequest = 0xa0,
    kGetNextRequest = 0xa1,
    kResponse = 0xa2,
    kSetRequest = 0xa3,
    kGetBulkRequest = 0xa5,
};

struct Message {
    std::int32_t version = kVersion2c;
    std::string community;
    std::uint8_t pdu = kGetRequest;  // a PduType
    std::int32_t request_id = 0;
    std::int32_t error_status = 0;  // GETBULK: non-repeaters
    std::int32_t error_index = 0;   // GETBULK: max-repetitions
    std::vector<Varbind> varbinds;
};

// A message of another SNMP version, or a PDU that its version does not have.
struct UnsupportedVersion : ber::Error {
    using Error::Error;
};
struct UnsupportedPdu : ber::Error {
    using Error::Error;
};

// Throws ber::Error, or one of the above, with what is wrong.
Message decode(std::span<const std::uint8_t> datagram);
ber::Octets encode(const Message& message);
// The same with varbinds that are encoded already, in place of the message's own.
ber::Octets encode(const Message& head, std::span<const std::uint8_t> varbinds);

// Octets of a message that has this head and that many octets of encoded varbinds.
std::size_t encoded_size(const Message& head, std::size_t varbind_octets);

}  // namespace agent
