#include "agent/message.h"

namespace agent {
namespace {

// Octets of a PDU's contents and of a message's contents, where that many octets of varbinds go in.
std::size_t pdu_octets(const Message& head, std::size_t varbind_octets) {
    return ber::integer_size(head.request_id) + ber::integer_size(head.error_status) +
           ber::integer_size(head.error_index) + ber::element_size(varbind_octets);
}

std::size_t message_octets(const Message& head, std::size_t varbind_octets) {
    return ber::integer_size(head.version) + ber::element_size(head.community.size()) +
           ber::element_size(pdu_octets(head, varbind_octets));
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
        Value value = varbind.value();
        if (message.version == kVersion1 && (value.is_exception() || value.tag == kCounter64))
            throw ber::Error("a value that SNMPv1 does not have");
        message.varbinds.push_back({std::move(name), std::move(value)});
        varbind.expect_end();
    }
    return message;
}

ber::Octets encode(const Message& message) {
    ber::Octets varbinds;
    for (const Varbind& varbind : message.varbinds) ber::append_varbind(varbinds, varbind);
    return encode(message, varbinds);
}

ber::Octets encode(const Message& head, std::span<const std::uint8_t> varbinds) {
    ber::Octets datagram;
    datagram.reserve(encoded_size(head, varbinds.size()));
    ber::append_head(datagram, ber::kSequence, message_octets(head, varbinds.size()));
    ber::append_integer(datagram, head.version);
    ber::append(datagram, kOctetString,
                {reinterpret_cast<const std::uint8_t*>(head.community.data()), head.community.size()});
    ber::append_head(datagram, head.pdu, pdu_octets(head, varbinds.size()));
    ber::append_integer(datagram, head.request_id);
    ber::append_integer(datagram, head.error_status);
    ber::append_integer(datagram, head.error_index);
    ber::append(datagram, ber::kSequence, varbinds);
    return datagram;
}

std::size_t encoded_size(const Message& head, std::size_t varbind_octets) {
    return ber::element_size(message_octets(head, varbind_octets));
}

}  // namespace agent
