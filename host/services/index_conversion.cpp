// Index conversion: sizes of index fields in a request, and their conversion to key fields and back, by kind.
//
// Counts in a request are hostile: sizes saturate so that sums stay small, conversions take no more sub-identifiers
// than they are given, and nothing is looked up after a count that no address has.
#include "services/services.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr oid kMaxAddress = sizeof InetAddress::octets;
constexpr oid kMaxText = sizeof InetText::text;
constexpr int kStreamIdOctets = 8;
constexpr int kMacOctets = 6;
// Larger than any request, small enough to be summed.
constexpr int kNoRequest = 0x10000;

enum AddressType : std::uint32_t { kNone = 0, kIpv4 = 1, kIpv6 = 2 };

int counted(oid count) { return static_cast<int>(std::min(count, oid{kNoRequest})); }

// The sub-identifiers of one field from its first on. After the last given one there are only zeros.
class Reader {
public:
    Reader(const oid* first, int count) : at_(first), left_(std::max(count, 0)) {}

    bool at_end() const { return left_ == 0; }

    oid take() {
        if (left_ == 0) return 0;
        --left_;
        return *at_++;
    }

    // Takes `count` sub-identifiers, the first `room` of them into `octets`. A sub-identifier above 255 sorts after
    // every octet, so it and what follows become 255; an exact request with one means the row of such octets, if any.
    void take_octets(oid count, unsigned char* octets, oid room) {
        bool beyond = false;
        for (oid i = 0; i < count && !at_end(); ++i) {
            const oid id = take();
            beyond = beyond || id > 0xff;
            if (i < room) octets[i] = beyond ? 0xff : static_cast<unsigned char>(id);
        }
    }

    // Length, octets. The length is kept as it came, so that a wrong one equals no row's and sorts in its place.
    InetAddress take_address(std::uint32_t type) {
        InetAddress address{type, take(), {}, 0};
        take_octets(address.length, address.octets, kMaxAddress);
        return address;
    }

    InetAddress take_typed_address() {
        const std::uint32_t type = take();
        return take_address(type);
    }

private:
    const oid* at_;
    int left_;
};

// Writes a field's sub-identifiers, no more than the field was sized for.
class Writer {
public:
    Writer(oid* out, int room) : at_(out), left_(std::max(room, 0)) {}

    void put(oid id) {
        if (left_ == 0) return;
        --left_;
        *at_++ = id;
    }

    void put_octets(const unsigned char* octets, oid count) {
        for (oid i = 0; i < count; ++i) put(octets[i]);
    }

    void put_address(const InetAddress& address) {
        const oid length = std::min(address.length, kMaxAddress);
        put(length);
        put_octets(address.octets, length);
    }

    void put_typed_address(const InetAddress& address) {
        put(address.type);
        put_address(address);
    }

private:
    oid* at_;
    int left_;
};

// Records are copied in and out: a field's place in a key is not always aligned for them.
template <class Record>
Record load(const void* field) {
    Record record;
    std::memcpy(&record, field, sizeof record);
    return record;
}

template <class Record>
int store(const Record& record, void* field) {
    std::memcpy(field, &record, sizeof record);
    return 0;
}

struct InetPair {
    InetAddress first, second;
};

int address_size(const InetAddress& address) { return 1 + static_cast<int>(std::min(address.length, kMaxAddress)); }

// --- kind 2 ----------------------------------------------------------------------------------------------------------

int integer_to_field(const oid* first, int count, void* field) {
    return store<std::uint32_t>(Reader(first, count).take(), field);
}

int integer_to_oid(oid* out, const void* field, int count) {
    Writer(out, count).put(load<std::uint32_t>(field));
    return 0;
}

// --- kind 6 ----------------------------------------------------------------------------------------------------------

int mac_to_field(const oid* first, int count, void* field) {
    std::memset(field, 0, kMacOctets);
    Reader(first, count).take_octets(kMacOctets, static_cast<unsigned char*>(field), kMacOctets);
    return 0;
}

int mac_to_oid(oid* out, const void* field, int count) {
    Writer(out, count).put_octets(static_cast<const unsigned char*>(field), kMacOctets);
    return 0;
}

// --- kind 7 ----------------------------------------------------------------------------------------------------------
// The key has the address as commands spell it, the index its octets. What is not an address stays as it is.

int family_of(std::uint32_t type) { return type == kIpv4 ? AF_INET : type == kIpv6 ? AF_INET6 : AF_UNSPEC; }

oid octets_of(std::uint32_t type) { return type == kIpv4 ? 4 : type == kIpv6 ? 16 : 0; }

int inet_text_to_field(const oid* first, int count, void* field) {
    Reader reader(first, count);
    InetText text{};
    text.type = reader.take();
    const oid length = reader.take();
    unsigned char octets[kMaxText] = {};
    reader.take_octets(length, octets, kMaxText);
    text.prefix_length = reader.take();
    if (length == 0 || length != octets_of(text.type) ||
        inet_ntop(family_of(text.type), octets, text.text, sizeof text.text) == nullptr)
        std::memcpy(text.text, octets, sizeof text.text - 1);  // which leaves a NUL
    return store(text, field);
}

// The address that goes into the index: octets and their number.
oid index_octets(const InetText& text, unsigned char (&octets)[kMaxText]) {
    const oid length = static_cast<oid>(strnlen(text.text, kMaxText));
    char spelled[kMaxText + 1] = {};
    std::memcpy(spelled, text.text, length);
    if (octets_of(text.type) != 0 && inet_pton(family_of(text.type), spelled, octets) == 1) return octets_of(text.type);
    std::memcpy(octets, text.text, length);
    return length;
}

int inet_text_to_oid(oid* out, const void* field, int count) {
    const auto text = load<InetText>(field);
    unsigned char octets[kMaxText];
    const oid length = index_octets(text, octets);
    Writer writer(out, count);
    writer.put(text.type);
    writer.put(length);
    writer.put_octets(octets, length);
    writer.put(text.prefix_length);
    return 0;
}

int inet_text_size(const void* field) {
    unsigned char octets[kMaxText];
    return 3 + static_cast<int>(index_octets(load<InetText>(field), octets));
}

// --- kind 8 ----------------------------------------------------------------------------------------------------------

int object_id_to_field(const oid* first, int count, void* field) {
    Reader reader(first, count);
    const oid length = reader.take();
    std::uint32_t last = 0;
    for (oid i = 0; i < length && !reader.at_end(); ++i) last = reader.take();
    return store(last, field);
}

int object_id_to_oid(oid* out, const void* field, int count) {
    Writer writer(out, count);
    writer.put(2);
    writer.put(0);
    writer.put(load<std::uint32_t>(field));
    return 0;
}

// --- kinds 10 to 13 --------------------------------------------------------------------------------------------------

int address_to_field(const oid* first, int count, void* field) {
    return store(Reader(first, count).take_typed_address(), field);
}

int address_to_oid(oid* out, const void* field, int count) {
    Writer(out, count).put_typed_address(load<InetAddress>(field));
    return 0;
}

int prefix_to_field(const oid* first, int count, void* field) {
    Reader reader(first, count);
    InetPrefix prefix{};
    prefix.address = reader.take_typed_address();
    prefix.length = reader.take();
    return store(prefix, field);
}

int prefix_to_oid(oid* out, const void* field, int count) {
    const auto prefix = load<InetPrefix>(field);
    Writer writer(out, count);
    writer.put_typed_address(prefix.address);
    writer.put(prefix.length);
    return 0;
}

int pair_on_interface_to_field(const oid* first, int count, void* field) {
    Reader reader(first, count);
    InetPairOnInterface pair{};
    pair.first = reader.take_typed_address();
    pair.ifindex = reader.take();
    if (!reader.at_end()) pair.second = reader.take_address(pair.first.type);
    return store(pair, field);
}

int pair_on_interface_to_oid(oid* out, const void* field, int count) {
    const auto pair = load<InetPairOnInterface>(field);
    Writer writer(out, count);
    writer.put_typed_address(pair.first);
    writer.put(pair.ifindex);
    writer.put_address(pair.second);
    return 0;
}

int pair_to_field(const oid* first, int count, void* field) {
    Reader reader(first, count);
    InetPair pair{};
    pair.first = reader.take_typed_address();
    pair.second = reader.take_typed_address();
    return store(pair, field);
}

int pair_to_oid(oid* out, const void* field, int count) {
    const auto pair = load<InetPair>(field);
    Writer writer(out, count);
    writer.put_typed_address(pair.first);
    writer.put_typed_address(pair.second);
    return 0;
}

// Type, n, n octets, one sub-identifier (interface index or type), m, m octets.
int pair_size(const oid* first) {
    const oid n = first[1];
    return n > kMaxAddress ? kNoRequest : 4 + counted(n) + counted(first[3 + n]);
}

// --- kind 14 ---------------------------------------------------------------------------------------------------------

int counted_string_to_field(const oid* first, int count, void* field) {
    auto string = load<CountedString>(field);
    Reader reader(first, count);
    const oid length = reader.take();
    string.length = std::min(length, string.capacity);
    if (string.data != nullptr) {
        std::memset(string.data, 0, string.capacity);
        reader.take_octets(length, string.data, string.capacity);
    }
    return store(string, field);
}

// Octets that there really are.
oid octets_in(const CountedString& string) {
    return string.data == nullptr ? 0 : std::min({string.length, string.capacity, oid{kNoRequest}});
}

int counted_string_to_oid(oid* out, const void* field, int count) {
    const auto string = load<CountedString>(field);
    Writer writer(out, count);
    writer.put(octets_in(string));
    writer.put_octets(string.data, octets_in(string));
    return 0;
}

uib_convert slot(uib_to_field* convert) { return reinterpret_cast<uib_convert>(convert); }
uib_convert slot(uib_to_oid* convert) { return reinterpret_cast<uib_convert>(convert); }

}  // namespace

extern "C" {

uib_convert uib_oid_convert[45] = {
    nullptr,
    nullptr,
    nullptr,  // 0
    nullptr,
    nullptr,
    nullptr,  // 1
    slot(integer_to_field),
    slot(integer_to_oid),
    nullptr,  // 2
    nullptr,
    nullptr,
    nullptr,  // 3
    nullptr,
    nullptr,
    nullptr,  // 4
    nullptr,
    nullptr,
    nullptr,  // 5
    slot(mac_to_field),
    slot(mac_to_oid),
    nullptr,  // 6
    slot(inet_text_to_field),
    slot(inet_text_to_oid),
    nullptr,  // 7
    slot(object_id_to_field),
    slot(object_id_to_oid),
    nullptr,  // 8
    nullptr,
    nullptr,
    nullptr,  // 9
    slot(address_to_field),
    slot(address_to_oid),
    nullptr,  // 10
    slot(prefix_to_field),
    slot(prefix_to_oid),
    nullptr,  // 11
    slot(pair_on_interface_to_field),
    slot(pair_on_interface_to_oid),
    nullptr,  // 12
    slot(pair_to_field),
    slot(pair_to_oid),
    nullptr,  // 13
    slot(counted_string_to_field),
    slot(counted_string_to_oid),
    nullptr,  // 14
};

int uib_snmp_get_oid_size(const oid* first, int kind) {
    switch (kind) {
        case 0: return kStreamIdOctets;
        case 2: return 1;
        case 6: return kMacOctets;
        case 7: return 3 + counted(first[1]);
        case 8: return 1 + counted(first[0]);
        case 10: return 2 + counted(first[1]);
        case 11: return 3 + counted(first[1]);
        case 12:
        case 13: return pair_size(first);
        case 14: return 1 + counted(first[0]);
        default: return 0;
    }
}

int uib_snmp_set_oid_size(const oid*, int kind, const void* field) {
    switch (kind) {
        case 0: return kStreamIdOctets;
        case 2: return 1;
        case 6: return kMacOctets;
        case 7: return inet_text_size(field);
        case 8: return 3;
        case 10: return 1 + address_size(load<InetAddress>(field));
        case 11: return 2 + address_size(load<InetPrefix>(field).address);
        case 12: {
            const auto pair = load<InetPairOnInterface>(field);
            return 2 + address_size(pair.first) + address_size(pair.second);
        }
        case 13: {
            const auto pair = load<InetPair>(field);
            return 2 + address_size(pair.first) + address_size(pair.second);
        }
        case 14: return 1 + static_cast<int>(octets_in(load<CountedString>(field)));
        default: return 0;
    }
}

int UIB_SNMP_Inet_Addr_To_Str(const void* address_record, char* text, int size) {
    if (size <= 0) return -1;
    const auto address = load<InetAddress>(address_record);
    if (address.type == kNone) {
        *text = '\0';
        return 0;
    }
    const int family = family_of(address.type);
    if (family == AF_UNSPEC) return -1;
    return inet_ntop(family, address.octets, text, static_cast<socklen_t>(size)) != nullptr ? 0 : -1;
}

}  // extern "C"
