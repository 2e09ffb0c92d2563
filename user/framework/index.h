// The index codec: a table's key from the sub-identifiers behind the column, and an answered OID from a key.
//
// A key type is a plain struct of its index fields in index order, and says their kinds:
//
//     struct VlanKey {
//         std::uint32_t vid;
//         static constexpr Kind index[] = {Kind::integer};
//     };
//
// Fields behind the last kind belong to the key that the backend gets, not to the OID. A clear key names no row.
#pragma once

#include "framework/host.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace switchmib {

// How the host converts a field, and the place that the field takes in a key.
struct Kind {
    std::uint8_t number;
    std::uint8_t octets;
    std::uint8_t alignment;

    static const Kind integer;            // u32, one sub-identifier
    static const Kind mac;                // 6 octets
    static const Kind inet_text;          // InetText
    static const Kind object_id;          // u32: the last sub-identifier of an OBJECT IDENTIFIER
    static const Kind address;            // InetAddress
    static const Kind prefix;             // InetPrefix
    static const Kind pair_on_interface;  // InetPairOnInterface
    static const Kind address_pair;       // two InetAddress
    static constexpr Kind fixed_string(std::uint8_t octets) { return {0, octets, 1}; }
    static constexpr Kind counted_string(std::uint8_t octets) { return {14, octets, 1}; }  // of exactly that length
};

inline constexpr Kind Kind::integer{2, 4, 4};
inline constexpr Kind Kind::mac{6, 6, 1};
inline constexpr Kind Kind::inet_text{7, sizeof(InetText), 4};
inline constexpr Kind Kind::object_id{8, 4, 4};
inline constexpr Kind Kind::address{10, sizeof(InetAddress), 4};
inline constexpr Kind Kind::prefix{11, sizeof(InetPrefix), 4};
inline constexpr Kind Kind::pair_on_interface{12, sizeof(InetPairOnInterface), 4};
inline constexpr Kind Kind::address_pair{13, 2 * sizeof(InetAddress), 4};

// What the codec knows of a key type.
struct KeyShape {
    struct Field {
        std::uint8_t kind;
        std::uint8_t octets;
        std::uint8_t offset;
    };
    static constexpr std::size_t kMaxFields = 4;
    static constexpr std::size_t kMaxSize = 96;

    std::uint8_t size;  // octets of the whole key
    std::uint8_t count;
    Field fields[kMaxFields];
};

template <class Key>
consteval KeyShape lay_out() {
    static_assert(sizeof(Key) <= KeyShape::kMaxSize && std::size(Key::index) <= KeyShape::kMaxFields);
    KeyShape shape{sizeof(Key), 0, {}};
    std::size_t offset = 0;
    for (const Kind& kind : Key::index) {
        offset = (offset + kind.alignment - 1) / kind.alignment * kind.alignment;
        shape.fields[shape.count++] = {kind.number, kind.octets, static_cast<std::uint8_t>(offset)};
        offset += kind.octets;
    }
    return shape;
}

template <class Key>
inline constexpr KeyShape shape_of = [] {
    constexpr KeyShape shape = lay_out<Key>();
    constexpr KeyShape::Field last = shape.fields[shape.count - 1];
    static_assert(last.offset + last.octets <= sizeof(Key), "the kinds need more room than the key has");
    return shape;
}();

// The keys of tables that have a row for each interface or port, and for each VLAN.
struct InterfaceKey {
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::integer};
};

struct VlanKey {
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer};
};

// Fills `key`, which comes clear, from the request behind `prefix`; a field that the request does not reach stays
// clear. A GETNEXT that sorts before the prefix fills nothing and gets `*name_length` cut to the prefix. -1: an exact
// request with too many or too few index sub-identifiers, or a counted string of another length than its field's.
int parse_index(const oid* prefix, std::size_t prefix_length, const oid* name, std::size_t* name_length,
                const KeyShape& shape, void* key, int exact);

// Writes prefix and key as an OID over `name`, which has room for 128 sub-identifiers.
void build_name(const oid* prefix, std::size_t prefix_length, oid* name, std::size_t* name_length,
                const KeyShape& shape, const void* key);

}  // namespace switchmib
