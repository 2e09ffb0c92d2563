#include "agent/message.h"

namespace agent {
namespace {

ber::Octets encoded(const Varbind& varbind) {
    ber::Octets contents;
    ber::append_object_id(contents, varbind.name);
    ber::append_value(contents, varbind.value);
    ber::Octets octets;
    ber::append(octets, ber::kSequence, contents);
    return octets;
}

ber::Octets encoded_pdu_head(const Message& message) {
    ber::Octets octets;
    ber::append_integer(octets, message.request_id);
    ber::append_integer(octets, message.error_status);
    ber::append_integer(octets, message.error_index);
    return octets;
}

ber::Octets encoded_head(const Message& message) {
    ber::Octets octets;
    ber::append_integer(octets, message.version);
    ber::append(octets, kOctetString,
                {reinterpret_cast<const std::uint8_t*>(message.community.data()), message.community.size()});
    return octets;
}

void check_pdu(const Message& message) {
    switch (message.pdu) {
        case kGetRequest:
        case kGetNextRequest:
        case kResponse:
        case kSetRequest: return;
        case kGetBulkRequest:
            if (message.version == kVersion2c) return;
            [[fallthrough]];
        default: throw UnsupportedPdu("a PDU of type " + std::to_string(message.pdu & 0x1f));
    }
}

}  // namespace

Message decode(std::span<const std::uint8_t> datagram) {
    ber::Reader outside(datagram);
    ber::Reader reader = outside.enter(ber::kSequence);
    outside.expect_end();

    Message message;
    message.version = reader.integer();
    if (message.version != kVersion1 && message.version != kVersion2c)
        throw UnsupportedVersion("SNMP version number " + std::to_string(message.version));
    const auto community = reader.contents(kOctetString);
    message.community.assign(community.begin(), community.end());

    message.pdu = reader.next_tag();
    check_pdu(message);
    ber::Reader pdu = reader.enter(message.pdu);
    reader.expect_end();
    message.request_id = pdu.integer();
    message.error_status = pdu.integer();
    message.error_index = pdu.integer();
    ber::Reader varbinds = pdu.enter(ber::kSequence);
    pdu.expect_end();
    while (!varbinds.at_end()) {
        ber::Reader varbind = varbinds.enter(ber::kSequence);
        Oid name = varbind.object_id();
        message.varbinds.push_back({std::move(name), varbind.value()});
        varbind.expect_end();
    }
    return message;
}

ber::Octets encode(const Message& message) {
    ber::Octets varbinds;
    for (const Varbind& varbind : message.varbinds) {
        const ber::Octets octets = encoded(varbind);
        varbinds.insert(varbinds.end(), octets.begin(), octets.end());
    }
    ber::Octets pdu = encoded_pdu_head(message);
    ber::append(pdu, ber::kSequence, varbinds);
    ber::Octets contents = encoded_head(message);
    ber::append(contents, message.pdu, pdu);
    ber::Octets datagram;
    ber::append(datagram, ber::kSequence, contents);
    return datagram;
}

std::size_t encoded_size(const Message& head, std::size_t varbind_octets) {
    const std::size_t pdu = encoded_pdu_head(head).size() + ber::element_size(varbind_octets);
    return ber::element_size(encoded_head(head).size() + ber::element_size(pdu));
}

std::size_t encoded_size(const Varbind& varbind) { return encoded(varbind).size(); }

}  // namespace agent
