#include "agent/ber.h"

#include <algorithm>
#include <cstring>

namespace agent::ber {
namespace {

void append_length(Octets& out, std::size_t length) {
    if (length < 0x80) {
        out.push_back(static_cast<std::uint8_t>(length));
        return;
    }
    int count = 1;
    while (count < 4 && length >> (8 * count) != 0) ++count;
    out.push_back(static_cast<std::uint8_t>(0x80 | count));
    while (count-- > 0) out.push_back(static_cast<std::uint8_t>(length >> (8 * count)));
}

void append_unsigned(Octets& out, std::uint8_t tag, std::uint64_t number) {
    std::uint8_t contents[9] = {};
    for (int i = 0; i < 8; ++i) contents[8 - i] = static_cast<std::uint8_t>(number >> (8 * i));
    // As few octets as keep the sign bit clear.
    const std::uint8_t* first = contents;
    while (first < contents + 8 && first[0] == 0 && first[1] < 0x80) ++first;
    append(out, tag, {first, contents + 9});
}

void append_sub_id(Octets& out, std::uint64_t id) {
    int shift = 0;
    while (id >> (shift + 7) != 0) shift += 7;
    for (; shift > 0; shift -= 7) out.push_back(static_cast<std::uint8_t>(0x80 | (id >> shift & 0x7f)));
    out.push_back(static_cast<std::uint8_t>(id & 0x7f));
}

template <class Number>
Number machine_order(const Value& value) {
    Number number;
    std::memcpy(&number, value.octets.data(), sizeof number);
    return number;
}

Oid object_id_in(const Value& value) {
    Oid oid(value.octets.size() / sizeof(::oid));
    if (!oid.empty()) std::memcpy(oid.data(), value.octets.data(), oid.size() * sizeof(::oid));
    return oid;
}

// The first two sub-identifiers share one on the wire.
bool well_formed(const Oid& oid) {
    if (oid.size() < 2 || oid.size() > services::kMaxSubIds || oid[0] > 2) return false;
    return oid[0] == 2 ? oid[1] <= UINT32_MAX - 80 : oid[1] < 40;
}

}  // namespace

// --- Reader ----------------------------------------------------------------------------------------------------------

void Reader::expect_end() const {
    if (!at_end()) throw Error("octets behind the end of an element");
}

std::uint8_t Reader::next_tag() const {
    if (at_end()) throw Error("an element is missing");
    return left_.front();
}

std::span<const std::uint8_t> Reader::contents(std::uint8_t tag) {
    if (next_tag() != tag) throw Error("an element has another tag than is due");
    if (left_.size() < 2) throw Error("an element without a length");
    std::size_t length = left_[1];
    std::size_t head = 2;
    if (length >= 0x80) {
        const std::size_t count = length & 0x7f;
        if (count == 0 || count > 4) throw Error("a length of indefinite form or of more than 4 octets");
        if (left_.size() < head + count) throw Error("an element that is cut short");
        length = 0;
        for (; head < 2 + count; ++head) length = length << 8 | left_[head];
    }
    if (length > left_.size() - head) throw Error("an element that is cut short");
    const auto found = left_.subspan(head, length);
    left_ = left_.subspan(head + length);
    return found;
}

std::int32_t Reader::integer(std::uint8_t tag) {
    const auto octets = contents(tag);
    if (octets.empty() || octets.size() > 4) throw Error("an INTEGER of no or of more than 4 octets");
    std::uint32_t number = octets[0] & 0x80 ? UINT32_MAX : 0;
    for (const std::uint8_t octet : octets) number = number << 8 | octet;
    return static_cast<std::int32_t>(number);
}

std::uint64_t Reader::unsigned_integer(std::uint8_t tag, std::size_t size) {
    auto octets = contents(tag);
    if (octets.empty() || octets[0] & 0x80) throw Error("an unsigned number that is empty or negative");
    if (octets.size() == size + 1 && octets[0] == 0) octets = octets.subspan(1);
    if (octets.size() > size) throw Error("an unsigned number that is too large for its type");
    std::uint64_t number = 0;
    for (const std::uint8_t octet : octets) number = number << 8 | octet;
    return number;
}

Oid Reader::object_id() {
    const auto octets = contents(kObjectId);
    Oid oid;
    std::uint32_t id = 0;
    bool within = false;
    for (const std::uint8_t octet : octets) {
        if (!within && octet == 0x80) throw Error("a sub-identifier that begins with a zero");
        if (id > UINT32_MAX >> 7) throw Error("a sub-identifier of more than 32 bits");
        id = id << 7 | (octet & 0x7fu);
        within = octet & 0x80;
        if (within) continue;
        if (oid.empty()) {
            oid.push_back(std::min<std::uint32_t>(id / 40, 2));
            id -= oid[0] * 40;
        }
        if (oid.size() == services::kMaxSubIds) throw Error("an OBJECT IDENTIFIER of more than 128 sub-identifiers");
        oid.push_back(id);
        id = 0;
    }
    if (oid.empty() || within) throw Error("an OBJECT IDENTIFIER that is empty or cut short");
    return oid;
}

Value Reader::value() {
    const std::uint8_t tag = next_tag();
    switch (tag) {
        case kInteger: return Value::integer(integer());
        case kCounter32:
        case kGauge32:
        case kTimeTicks: return Value::unsigned32(tag, static_cast<std::uint32_t>(unsigned_integer(tag, 4)));
        case kCounter64: return Value::counter64(unsigned_integer(tag, 8));
        case kObjectId: return Value::object_id(object_id());
        case kOctetString:
        case kOpaque:
        case kIpAddress:
        case kNull:
        case kNoSuchObject:
        case kNoSuchInstance:
        case kEndOfMibView: {
            const auto octets = contents(tag);
            Value value{tag, {octets.begin(), octets.end()}};
            if (!well_formed(value)) throw Error("an IpAddress or NULL of a wrong length");
            return value;
        }
        default: throw Error("a value of unknown type");
    }
}

// --- writing ---------------------------------------------------------------------------------------------------------

void append(Octets& out, std::uint8_t tag, std::span<const std::uint8_t> contents) {
    out.push_back(tag);
    append_length(out, contents.size());
    out.insert(out.end(), contents.begin(), contents.end());
}

void append_integer(Octets& out, std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    std::uint8_t contents[4];
    for (int i = 0; i < 4; ++i) contents[3 - i] = static_cast<std::uint8_t>(bits >> (8 * i));
    // As few octets as keep the sign.
    const std::uint8_t* first = contents;
    while (first < contents + 3 && first[0] == (first[1] & 0x80 ? 0xff : 0)) ++first;
    append(out, kInteger, {first, contents + 4});
}

void append_object_id(Octets& out, const Oid& oid) {
    const auto at = [&](std::size_t i) { return std::uint64_t{i < oid.size() ? oid[i] : 0}; };
    Octets contents;
    append_sub_id(contents, at(0) * 40 + at(1));
    for (std::size_t i = 2; i < oid.size(); ++i) append_sub_id(contents, oid[i]);
    append(out, kObjectId, contents);
}

void append_value(Octets& out, const Value& value) {
    switch (value.tag) {
        case kInteger: return append_integer(out, machine_order<std::int32_t>(value));
        case kCounter32:
        case kGauge32:
        case kTimeTicks: return append_unsigned(out, value.tag, machine_order<std::uint32_t>(value));
        case kCounter64: return append_unsigned(out, value.tag, machine_order<std::uint64_t>(value));
        case kObjectId: return append_object_id(out, object_id_in(value));
        default: return append(out, value.tag, value.octets);
    }
}

std::size_t element_size(std::size_t contents) {
    Octets length;
    append_length(length, contents);
    return 1 + length.size() + contents;
}

bool well_formed(const Value& value) {
    switch (value.tag) {
        case kInteger:
        case kCounter32:
        case kGauge32:
        case kTimeTicks:
        case kIpAddress: return value.octets.size() == 4;
        case kCounter64: return value.octets.size() == 8;
        case kObjectId: return value.octets.size() % sizeof(oid) == 0 && well_formed(object_id_in(value));
        case kOctetString:
        case kOpaque: return true;
        case kNull:
        case kNoSuchObject:
        case kNoSuchInstance:
        case kEndOfMibView: return value.octets.empty();
        default: return false;
    }
}

}  // namespace agent::ber
