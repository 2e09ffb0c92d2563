// Key records of tables: their layout, the index that they are, and the parts that a command can name.
#pragma once

#include "switch/values.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

namespace sw {

// One index field of a key record, by its kind of index conversion.
struct Field {
    int kind;
    std::size_t octets = 0;  // of a fixed-size or counted string, whose kind does not say it
};

inline constexpr Field kInteger{2};
inline constexpr Field kMac{6};
inline constexpr Field kTextPrefix{7};  // type, address as text, prefix length
inline constexpr Field kPolicy{8};      // an OBJECT IDENTIFIER by its last sub-identifier
inline constexpr Field kAddress{10};
inline constexpr Field kPrefix{11};
inline constexpr Field kAddressesOnInterface{12};  // address, interface index, address of the same type
inline constexpr Field kAddressPair{13};
// Type, 4 octets IPv4, 16 octets IPv6: an address as the records have it that some tables send in place of their key.
inline constexpr Field kSplitAddress{100};
constexpr Field fixed_string(std::size_t octets) { return {0, octets}; }
constexpr Field counted_string(std::size_t octets) { return {14, octets}; }

// What a command can say of a key, in the order of its index. An address is two parts: its type and the address.
struct Part {
    enum class Type { number, octets, address, prefix } type;
    std::size_t at;       // in the index: the number, the first octet, or the number of octets of an address
    std::size_t count;    // sub-identifiers from there on
    std::size_t type_at;  // of an address: its type
};
struct Parts {
    std::array<Part, 16> parts{};
    std::size_t count = 0;
};

// A key record: its index fields one after the other, laid out as a C struct. No field at all: a lookup without a key.
class KeyLayout {
public:
    KeyLayout() = default;
    // `size` is the record's, where it has more than the index fields; 0: just those. Throws std::invalid_argument for
    // a kind that cannot be in a key.
    KeyLayout(std::initializer_list<Field> fields, std::size_t size = 0);

    std::size_t size() const { return size_; }
    Index encode(const void* key) const;
    // Clears the record and fills in its index fields.
    void decode(const Index& index, void* key) const;
    const Index& clear() const { return clear_; }  // index of an all-zero record
    // The parts that are whole in the index.
    Parts parts(const Index& index) const;

private:
    struct Placed {
        Field field;
        std::size_t offset;
    };
    std::vector<Placed> fields_;
    std::size_t size_ = 0;
    Index clear_;
};

}  // namespace sw
