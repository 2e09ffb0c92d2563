// The index codec: a table's key from the sub-identifiers after the column, and an answered OID from a key.
//
// A key type is a plain struct of its index fields in index order, and says their kinds:
//
//     struct VlanKey {
//         std::uint32_t vid;
//         static constexpr Kind index[] = {Kind::integer};
//     };
//
// Fields after the last kind belong to the key that the backend gets, not to the OID. A clear key names no row.
#pragma once

#include "framework/host.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

namespace switchmib {

// Fields of a key besides std::uint32_t and the host's address records.
struct Mac {
    unsigned char octets[6];
};
template <std::size_t size>
struct Octets {
    unsigned char octets[size];
};

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

// A key type as the codec uses it.
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

namespace key {

// A field of a key as its struct declares it.
struct Declared {
    std::size_t offset;
    std::size_t size;
    Kind kind;  // that a single field of its type has
};

template <class Type>
consteval Kind kind_of() {
    if constexpr (std::is_same_v<Type, std::uint32_t>)
        return Kind::integer;
    else if constexpr (std::is_same_v<Type, Mac>)
        return Kind::mac;
    else if constexpr (std::is_same_v<Type, InetText>)
        return Kind::inet_text;
    else if constexpr (std::is_same_v<Type, InetAddress>)
        return Kind::address;
    else if constexpr (std::is_same_v<Type, InetPrefix>)
        return Kind::prefix;
    else if constexpr (std::is_same_v<Type, InetPairOnInterface>)
        return Kind::pair_on_interface;
    else
        return Kind::fixed_string(sizeof(Type));
}

struct Declaration {
    static constexpr std::size_t kMost = 6;
    std::size_t count = 0;
    Declared fields[kMost] = {};

    template <class Type>
    constexpr void add() {
        const std::size_t end = count == 0 ? 0 : fields[count - 1].offset + fields[count - 1].size;
        const std::size_t offset = (end + alignof(Type) - 1) / alignof(Type) * alignof(Type);
        fields[count++] = {offset, sizeof(Type), kind_of<Type>()};
    }
};

struct Anything {
    template <class Type>
    constexpr operator Type() const;
};
template <class Key, class... Any>
consteval std::size_t count_fields() {
    static_assert(sizeof...(Any) <= Declaration::kMost, "a key has at most six fields; arrays are Mac or Octets");
    if constexpr (requires { Key{Any{}..., Anything{}}; })
        return count_fields<Key, Any..., Anything>();
    else
        return sizeof...(Any);
}

template <class... Types>
constexpr Declaration declared(const Types&...) {
    Declaration declaration;
    (declaration.add<Types>(), ...);
    return declaration;
}
template <class Key>
consteval Declaration declaration() {
    constexpr std::size_t count = count_fields<Key>();
    constexpr Key key{};
    if constexpr (count == 1) {
        const auto& [a] = key;
        return declared(a);
    } else if constexpr (count == 2) {
        const auto& [a, b] = key;
        return declared(a, b);
    } else if constexpr (count == 3) {
        const auto& [a, b, c] = key;
        return declared(a, b, c);
    } else if constexpr (count == 4) {
        const auto& [a, b, c, d] = key;
        return declared(a, b, c, d);
    } else if constexpr (count == 5) {
        const auto& [a, b, c, d, e] = key;
        return declared(a, b, c, d, e);
    } else {
        const auto& [a, b, c, d, e, f] = key;
        return declared(a, b, c, d, e, f);
    }
}

// The kinds in order take the struct's fields in order: each one of its own type, a pair of addresses two or three.
template <class Key>
consteval bool kinds_fit() {
    const Declaration declaration = key::declaration<Key>();
    std::size_t at = 0;
    const auto take = [&at, &declaration](const Kind& kind) {
        if (at == declaration.count) return false;
        const Kind own = declaration.fields[at++].kind;
        if (kind.number == Kind::object_id.number) return own.number == Kind::integer.number;
        const bool string = kind.number == 0 || kind.number == Kind::counted_string(0).number;
        return own.octets == kind.octets && own.number == (string ? 0 : kind.number);
    };
    const auto take_each = [&take](const auto&... kinds) { return (take(kinds) && ...); };
    for (const Kind& kind : Key::index) {
        const bool whole = at < declaration.count && declaration.fields[at].kind.number == kind.number;
        if (kind.number == Kind::address_pair.number) {
            if (!take_each(Kind::address, Kind::address)) return false;
        } else if (kind.number == Kind::pair_on_interface.number && !whole) {
            if (!take_each(Kind::address, Kind::integer, Kind::address)) return false;
        } else if (!take(kind)) {
            return false;
        }
    }
    return true;
}

}  // namespace key

template <class Key>
consteval KeyShape lay_out() {
    static_assert(sizeof(Key) <= KeyShape::kMaxSize && std::size(Key::index) <= KeyShape::kMaxFields);
    static_assert(key::kinds_fit<Key>(), "the kinds of the key's `index` are not those of its fields in order");
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
inline constexpr KeyShape shape_of = lay_out<Key>();

// The keys of tables that have a row for each interface or port, and for each VLAN.
struct InterfaceKey {
    std::uint32_t ifindex;
    static constexpr Kind index[] = {Kind::integer};
};

struct VlanKey {
    std::uint32_t vid;
    static constexpr Kind index[] = {Kind::integer};
};

// Fills `key`, which comes clear, from what the request has after `prefix`; a field that the request does not reach stays
// clear. A GETNEXT that sorts before the prefix fills nothing and gets `*name_length` cut to the prefix. -1: an exact
// request with too many or too few index sub-identifiers, or one that ends before a counted string; a counted string of
// another length than its field's.
int parse_index(const oid* prefix, std::size_t prefix_length, const oid* name, std::size_t* name_length,
                const KeyShape& shape, void* key, int exact);

// Writes prefix and key as an OID over `name`, which has room for 128 sub-identifiers.
void build_name(const oid* prefix, std::size_t prefix_length, oid* name, std::size_t* name_length,
                const KeyShape& shape, const void* key);

}  // namespace switchmib
