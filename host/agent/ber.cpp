#include "agent/ber.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace agent::ber {
namespace {

// --- sizes of contents -----------------------------------------------------------------------------------------------

std::size_t length_octets(std::size_t length) {
    if (length < 0x80) return 1;
    std::size_t count = 1;
    while (count < 4 && length >> (8 * count) != 0) ++count;
    return 1 + count;
}

std::size_t sub_id_octets(std::uint64_t id) {
    std::size_t count = 1;
    while (id >>= 7) ++count;
    return count;
}

// As few octets as keep the sign.
std::size_t signed_octets(std::int32_t number) {
    const auto magnitude = static_cast<std::uint32_t>(number < 0 ? ~number : number);
    return static_cast<std::size_t>(std::bit_width(magnitude)) / 8 + 1;
}

// As few octets as keep the sign bit clear.
std::size_t unsigned_octets(std::uint64_t number) { return static_cast<std::size_t>(std::bit_width(number)) / 8 + 1; }

// The first two sub-identifiers share one on the wire.
std::uint64_t first_sub_id(std::span<const oid> ids) {
    return (ids.empty() ? 0 : std::uint64_t{ids[0]} * 40) + (ids.size() < 2 ? 0 : ids[1]);
}

std::size_t object_id_octets(std::span<const oid> ids) {
    std::size_t octets = sub_id_octets(first_sub_id(ids));
    for (std::size_t i = 2; i < ids.size(); ++i) octets += ids[i] < 0x80 ? 1 : sub_id_octets(ids[i]);
    return octets;
}

template <class Number>
Number machine_order(const ValueView& value) {
    Number number;
    std::memcpy(&number, value.octets.data(), sizeof number);
    return number;
}

// The OBJECT IDENTIFIER in a value, which need not be aligned; of a longer one than there may be its beginning.
class ObjectIdIn {
public:
    explicit ObjectIdIn(const ValueView& value) : count_(std::min(value.octets.size() / sizeof(oid), std::size(ids_))) {
        if (count_ > 0) std::memcpy(ids_, value.octets.data(), count_ * sizeof(oid));
    }
    std::span<const oid> ids() const { return {ids_, count_}; }

private:
    oid ids_[services::kMaxSubIds + 1];
    std::size_t count_;
};

bool well_formed(std::span<const oid> ids) {
    if (ids.size() < 2 || ids.size() > services::kMaxSubIds || ids[0] > 2) return false;
    return ids[0] == 2 ? ids[1] <= UINT32_MAX - 80 : ids[1] < 40;
}

// --- writing into room that is large enough; what follows is returned -------------------------------------------------

// The lowest octets of a number, the highest one first.
std::uint8_t* put_number(std::uint8_t* at, std::uint64_t number, std::size_t octets) {
    while (octets-- > 0) *at++ = static_cast<std::uint8_t>(octets < sizeof number ? number >> (8 * octets) : 0);
    return at;
}

std::uint8_t* put_head(std::uint8_t* at, std::uint8_t tag, std::size_t length) {
    *at++ = tag;
    const std::size_t more = length_octets(length) - 1;
    if (more == 0) return put_number(at, length, 1);
    *at++ = static_cast<std::uint8_t>(0x80 | more);
    return put_number(at, length, more);
}

std::uint8_t* put_sub_id(std::uint8_t* at, std::uint64_t id) {
    for (std::size_t more = sub_id_octets(id) - 1; more > 0; --more)
        *at++ = static_cast<std::uint8_t>(0x80 | (id >> (7 * more) & 0x7f));
    *at++ = static_cast<std::uint8_t>(id & 0x7f);
    return at;
}

std::uint8_t* put_object_id(std::uint8_t* at, std::span<const oid> ids) {
    at = put_sub_id(at, first_sub_id(ids));
    for (std::size_t i = 2; i < ids.size(); ++i) {
        if (ids[i] < 0x80)
            *at++ = static_cast<std::uint8_t>(ids[i]);
        else
            at = put_sub_id(at, ids[i]);
    }
    return at;
}

std::size_t contents_octets(const ValueView& value) {
    switch (value.tag) {
        case kInteger: return signed_octets(machine_order<std::int32_t>(value));
        case kCounter32:
        case kGauge32:
        case kTimeTicks: return unsigned_octets(machine_order<std::uint32_t>(value));
        case kCounter64: return unsigned_octets(machine_order<std::uint64_t>(value));
        case kObjectId: return object_id_octets(ObjectIdIn(value).ids());
        default: return value.octets.size();
    }
}

std::uint8_t* put_value(std::uint8_t* at, const ValueView& value, std::size_t octets) {
    at = put_head(at, value.tag, octets);
    switch (value.tag) {
        case kInteger:
        case kCounter32:
        case kGauge32:
        case kTimeTicks: return put_number(at, machine_order<std::uint32_t>(value), octets);
        case kCounter64: return put_number(at, machine_order<std::uint64_t>(value), octets);
        case kObjectId: return put_object_id(at, ObjectIdIn(value).ids());
        default: return std::ranges::copy(value.octets, at).out;
    }
}

std::uint8_t* grow(Octets& out, std::size_t octets) {
    const std::size_t before = out.size();
    out.resize(before + octets);
    return out.data() + before;
}

}  // namespace

// --- Reader ----------------------------------------------------------------------------------------------------------

void Reader::expect_end() const {
    if (!at_end()) throw Error("octets after the end of an element");
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
        if (count == 0) throw Error("a length of indefinite form");
        if (left_.size() < head + count) throw Error("an element that is cut short");
        length = 0;
        for (; head < 2 + count; ++head) {
            if (length > left_.size()) throw Error("an element that is cut short");
            length = length << 8 | left_[head];
        }
    }
    if (length > left_.size() - head) throw Error("an element that is cut short");
    const auto found = left_.subspan(head, length);
    left_ = left_.subspan(head + length);
    return found;
}

std::int32_t Reader::integer(std::uint8_t tag) {
    auto octets = contents(tag);
    while (octets.size() > 4 && octets[0] == (octets[1] & 0x80 ? 0xff : 0)) octets = octets.subspan(1);
    if (octets.empty() || octets.size() > 4) throw Error("an INTEGER that is empty or beyond 32 bits");
    std::uint32_t number = octets[0] & 0x80 ? UINT32_MAX : 0;
    for (const std::uint8_t octet : octets) number = number << 8 | octet;
    return static_cast<std::int32_t>(number);
}

std::uint64_t Reader::unsigned_integer(std::uint8_t tag, std::size_t size) {
    auto octets = contents(tag);
    if (octets.empty() || octets[0] & 0x80) throw Error("an unsigned number that is empty or negative");
    while (octets.size() > size && octets[0] == 0) octets = octets.subspan(1);
    if (octets.size() > size) throw Error("an unsigned number that is too large for its type");
    std::uint64_t number = 0;
    for (const std::uint8_t octet : octets) number = number << 8 | octet;
    return number;
}

Oid Reader::object_id() {
    const auto octets = contents(kObjectId);
    Oid oid;
    oid.reserve(std::min(octets.size() + 1, services::kMaxSubIds));
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

void append_head(Octets& out, std::uint8_t tag, std::size_t contents) {
    put_head(grow(out, element_size(contents) - contents), tag, contents);
}

void append(Octets& out, std::uint8_t tag, std::span<const std::uint8_t> contents) {
    append_head(out, tag, contents.size());
    out.insert(out.end(), contents.begin(), contents.end());
}

void append_integer(Octets& out, std::int32_t number) {
    const std::size_t octets = signed_octets(number);
    std::uint8_t* const at = put_head(grow(out, element_size(octets)), kInteger, octets);
    put_number(at, static_cast<std::uint32_t>(number), octets);
}

void append_value(Octets& out, const ValueView& value) {
    const std::size_t octets = contents_octets(value);
    put_value(grow(out, element_size(octets)), value, octets);
}

void append_varbind(Octets& out, const VarbindView& varbind) {
    const std::size_t name_octets = object_id_octets(varbind.name);
    const std::size_t value_octets = contents_octets(varbind.value);
    const std::size_t octets = element_size(name_octets) + element_size(value_octets);
    std::uint8_t* at = grow(out, element_size(octets));
    at = put_head(at, kSequence, octets);
    at = put_head(at, kObjectId, name_octets);
    at = put_object_id(at, varbind.name);
    put_value(at, varbind.value, value_octets);
}

std::size_t element_size(std::size_t contents) { return 1 + length_octets(contents) + contents; }

std::size_t integer_size(std::int32_t number) { return element_size(signed_octets(number)); }

bool well_formed(const ValueView& value) {
    switch (value.tag) {
        case kInteger:
        case kCounter32:
        case kGauge32:
        case kTimeTicks:
        case kIpAddress: return value.octets.size() == 4;
        case kCounter64: return value.octets.size() == 8;
        case kObjectId: return value.octets.size() % sizeof(oid) == 0 && well_formed(ObjectIdIn(value).ids());
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
